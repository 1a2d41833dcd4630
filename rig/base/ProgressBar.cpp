#include "rig/base/ProgressBar.h"

#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Printable.h"

namespace rig {
namespace {

constexpr std::size_t kBarColumns = 20;

/// @return " 48 %  1.2 of 2.5 MB"
std::string Numbers(double done, double total, double share) {
    constexpr double kMegabyte = 1e6;
    return fmt::format("{:3} %  {:.1f} of {:.1f} MB", static_cast<int>(100 * share), done / kMegabyte,
                       total / kMegabyte);
}

std::string Bar(double share) {
    const auto filled = static_cast<std::size_t>(kBarColumns * share);
    std::string bar(filled, '=');
    if (filled < kBarColumns) {
        bar += ">";
        bar.append(kBarColumns - filled - 1, ' ');
    }
    return "[" + bar + "]";
}

/// Cuts the text to at most that many bytes, which are never fewer than columns, and not inside a character.
std::string Shortened(const std::string& text, std::size_t bytes) {
    std::size_t end = std::min(bytes, text.size());
    while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) {
        --end;
    }
    return text.substr(0, end);
}

}  // namespace

std::string ProgressBar(const std::string& name, std::uint64_t done, std::uint64_t total,
                        std::size_t columns) {
    const auto all = static_cast<double>(total);
    const auto counted = static_cast<double>(std::min(done, total));
    const double share = total == 0 ? 1 : counted / all;
    const std::string numbers = Numbers(counted, all, share);
    const std::string rest = " " + Bar(share) + " " + numbers;
    if (rest.size() >= columns) {
        return Shortened(numbers, columns);
    }
    return Shortened(Printable(name), columns - rest.size()) + rest;
}

}  // namespace rig
