#include "rig/dvr/wire/Transcript.h"

#include <fmt/ranges.h>

#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/base/ProgressBar.h"
#include "rig/base/Terminal.h"

namespace rig::dvr {
namespace {

constexpr std::size_t kValueBytes = 100;
constexpr std::size_t kMessageBytes = 4000;
constexpr const char* kEraseLine = "\r\033[K";

bool GoesWithoutSaying(const Message& message, const pugi::xml_attribute& attribute) {
    const std::string name = attribute.name();
    return name == "req" || name == "protocolVersion" ||
           (name == "path" && message.Find("reid") == std::string(attribute.value()));
}

/// @return what a child of `msg` holds: the number of its entries, or of bytes in its text
std::string SummarizeChild(const pugi::xml_node& child) {
    std::size_t entries = 0;
    for (const pugi::xml_node entry : child.children()) {
        entries += entry.type() == pugi::node_element ? 1U : 0U;
    }
    return Printable(child.name()) + ": " +
           (entries > 0 ? std::to_string(entries)
                        : Counted(std::string_view(child.text().get()).size(), "byte"));
}

}  // namespace

Transcript::Transcript(std::ostream& out, bool terminal)
    : out_(out), terminal_(terminal), start_(std::chrono::steady_clock::now()) {}

Transcript::~Transcript() {
    EraseProgress();
    out_.flush();
}

void Transcript::Sent(const Message& message, const std::vector<std::string>& defects) {
    const std::string marks = defects.empty() ? "" : fmt::format("  [{}]", fmt::join(defects, ", "));
    Print(defects.empty() ? Colour::Cyan : Colour::Red, "-> " + Summarize(message) + marks);
}

void Transcript::Received(const Message& message) {
    Print(Colour::Yellow, "<- " + Summarize(message));
}

void Transcript::Note(const std::string& text) {
    Print(Colour::Bold, Excerpt(text, kMessageBytes));
}

void Transcript::Progress(const std::string& file, std::uint64_t done, std::uint64_t length) {
    if (terminal_) {
        // Stops before the last column, as some terminals break the line after it.
        out_ << kEraseLine << ProgressBar(file, done, length, TerminalColumns() - 1) << std::flush;
        hasProgress_ = true;
    }
}

void Transcript::EraseProgress() {
    if (hasProgress_) {
        out_ << kEraseLine;
        hasProgress_ = false;
    }
}

void Transcript::Print(Colour colour, const std::string& text) {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    EraseProgress();
    out_ << fmt::format("{:9.3f} {}\n", elapsed.count(), Coloured(text, terminal_ ? colour : Colour::Plain))
         << std::flush;
}

std::string Summarize(const Message& message) {
    std::string text = message.Name().empty() ? "(no name)" : Printable(message.Name());
    for (const pugi::xml_attribute attribute : message.Root().attributes()) {
        if (!GoesWithoutSaying(message, attribute)) {
            text += fmt::format(" {}=\"{}\"", Printable(attribute.name()),
                                Excerpt(attribute.value(), kValueBytes));
        }
    }
    for (const pugi::xml_node child : message.Root().children()) {
        text += " (" + SummarizeChild(child) + ")";
    }
    return text.size() <= kMessageBytes ? text : std::string(Beginning(text, kMessageBytes)) + "...";
}

}  // namespace rig::dvr
