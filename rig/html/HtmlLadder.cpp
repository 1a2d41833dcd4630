#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Counted.h"
#include "rig/base/ValidText.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlSections.h"
#include "rig/result/Result.h"

namespace rig::html {
namespace {

constexpr std::size_t kStepsInPiece = 25;
constexpr std::size_t kLetters = 36;  // in a line between the lifelines, on a phone
constexpr int kLetterHeight = 15;     // pixels, like all that follow
constexpr int kGap = 14;              // below a step's text, with its arrow
constexpr int kArrow = 6;             // below the text
constexpr int kTop = 24;              // of a piece: the names of the lifelines

// Relative to the picture, so that it fits any width.
constexpr const char* kDvr = "20%";
constexpr const char* kMiddle = "57%";
constexpr const char* kHarness = "94%";

/// @return the text in lines short enough for a phone, broken at blanks where possible
std::vector<std::string> Wrapped(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t begin = 0;
    while (text.size() - begin > kLetters) {
        const std::size_t blank = text.rfind(' ', begin + kLetters);
        const bool isAtBlank = blank != std::string::npos && blank > begin;
        std::size_t end = isAtBlank ? blank : begin + kLetters;
        while (!isAtBlank && end > begin + 1 && (static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80) {
            --end;  // not inside a character
        }
        lines.push_back(text.substr(begin, end - begin));
        begin = isAtBlank ? end + 1 : end;
    }
    lines.push_back(text.substr(begin));
    return lines;
}

const char* StepClassOf(result::Step::Kind kind) {
    static constexpr const char* kClasses[] = {"from-dvr", "from-harness", "fault", "note"};
    return kClasses[static_cast<std::size_t>(kind)];
}

const char* WordsFor(result::Step::Kind kind) {
    static constexpr const char* kWords[] = {"DVR to harness: ", "harness to DVR: ", "Fault injected: ", ""};
    return kWords[static_cast<std::size_t>(kind)];
}

pugi::xml_node AddShape(pugi::xml_node parent, const char* element,
                        std::initializer_list<std::pair<const char*, std::string>> attributes) {
    pugi::xml_node shape = parent.append_child(element);
    for (const auto& [name, value] : attributes) {
        shape.append_attribute(name) = value.c_str();
    }
    return shape;
}

void AddLines(pugi::xml_node step, const std::vector<std::string>& lines, int top) {
    pugi::xml_node text = AddShape(step, "text", {{"x", kMiddle}, {"y", std::to_string(top)}});
    for (const std::string& line : lines) {
        pugi::xml_node span = Add(text, "tspan", line);
        Set(span, "x", kMiddle);
        Set(span, "dy", std::to_string(kLetterHeight));
    }
}

void AddArrow(pugi::xml_node step, bool isFromDvr, int y) {
    AddShape(step, "line",
             {{"x1", kDvr}, {"x2", kHarness}, {"y1", std::to_string(y)}, {"y2", std::to_string(y)}});
    pugi::xml_node head = AddShape(
        step, "svg", {{"x", isFromDvr ? kHarness : kDvr}, {"y", std::to_string(y)}, {"overflow", "visible"}});
    AddShape(head, "path", {{"d", isFromDvr ? "M0 0L-9 -5V5Z" : "M0 0L9 -5V5Z"}});
}

/// @return where the next step begins
int AddStep(pugi::xml_node picture, const result::RunResult& run, const LogPlaces& places,
            const result::Step& step, int top) {
    const bool isFault = step.kind == result::Step::Kind::Fault;
    const auto lines = Wrapped(ValidText(isFault ? WordsFor(step.kind) + step.text : step.text));
    const int textBottom = top + static_cast<int>(lines.size()) * kLetterHeight;
    const std::string time = result::SecondsSince(run.begin, step.time);
    pugi::xml_node group = Add(picture, "g", {}, std::string("step ") + StepClassOf(step.kind));
    Set(group, "role", "listitem");
    Set(group, "aria-label", time + " s, " + WordsFor(step.kind) + step.text);
    if (isFault) {
        AddShape(group, "rect",
                 {{"x", kDvr},
                  {"y", std::to_string(top)},
                  {"width", "74%"},
                  {"rx", "3"},
                  {"height", std::to_string(textBottom - top + kArrow)}});
    }
    const auto target = places.TargetOf(step);
    pugi::xml_node linked = target ? AddLink(group, *target, {}) : group;
    Add(AddShape(linked, "text", {{"class", "time"}, {"x", "0"}, {"y", std::to_string(textBottom)}}), "tspan",
        time);
    AddLines(linked, lines, top);
    if (step.kind == result::Step::Kind::FromDvr || step.kind == result::Step::Kind::FromHarness) {
        AddArrow(group, step.kind == result::Step::Kind::FromDvr, textBottom + kArrow);
    }
    return textBottom + kGap;
}

void AddLifeline(pugi::xml_node picture, const char* name, const char* x) {
    AddShape(picture, "line", {{"class", "lifeline"}, {"x1", x}, {"x2", x}, {"y1", "18"}, {"y2", "100%"}});
    pugi::xml_node text = AddShape(picture, "text", {{"class", "name"}, {"x", x}, {"y", "12"}});
    AddText(text, name);
}

template <typename Iterator>
void AddPiece(pugi::xml_node ladder, const result::RunResult& run, const LogPlaces& places, Iterator first,
              Iterator last) {
    pugi::xml_node picture = Add(ladder, "svg");
    Set(picture, "xmlns", "http://www.w3.org/2000/svg");
    Set(picture, "role", "list");
    Set(picture, "aria-label", fmt::format("Dialogue, steps {} to {}", *first + 1, *(last - 1) + 1));
    AddLifeline(picture, "DVR", kDvr);
    AddLifeline(picture, "harness", kHarness);
    int top = kTop;
    for (Iterator index = first; index != last; ++index) {
        top = AddStep(picture, run, places, run.steps[*index], top);
    }
    Set(picture, "width", "100%");
    Set(picture, "height", std::to_string(top));
}

}  // namespace

void AddLadder(pugi::xml_node section, const result::RunResult& run, const LogPlaces& places,
               std::size_t limit) {
    const auto kept = KeptOf(run.steps.size(), limit, [&run](std::size_t step) {
        return run.steps[step].kind == result::Step::Kind::Fault;
    });
    Add(section, "p", "Seconds since the run began; each step links to its line of the log.", "hint");
    if (kept.size() < run.steps.size()) {
        Add(section, "p",
            fmt::format(
                "This page shows {} of the {} steps of this run: the first, the last, and up to {} injected "
                "faults in between. The other {} are in the log itself.",
                kept.size(), run.steps.size(), limit, run.steps.size() - kept.size()),
            "cut");
    }
    pugi::xml_node ladder = Add(section, "div", {}, "ladder");
    for (auto first = kept.begin(); first != kept.end();) {
        // A gap between the steps divides the picture too.
        auto last = first + 1;
        while (last != kept.end() && *last == *(last - 1) + 1 &&
               last - first < static_cast<int>(kStepsInPiece)) {
            ++last;
        }
        AddPiece(ladder, run, places, first, last);
        if (last != kept.end() && *last != *(last - 1) + 1) {
            Add(ladder, "p", fmt::format("{} left out here", Counted(*last - *(last - 1) - 1, "step")),
                "cut");
        }
        first = last;
    }
}

}  // namespace rig::html
