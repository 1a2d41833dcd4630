#include "rig/base/ProgressBar.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "rig/base/Printable.h"

namespace rig {
namespace {

constexpr std::size_t kBarColumns = 20;

/// @return " 48 %  1.2 of 2.5 MB"
std::string Numbers(std::uint64_t done, std::uint64_t total) {
    constexpr double kMegabyte = 1e6;
    const double share = total == 0 ? 1 : static_cast<double>(done) / static_cast<double>(total);
    std::ostringstream text;
    text << std::setw(3) << static_cast<int>(100 * share) << " %  " << std::fixed << std::setprecision(1)
         << static_cast<double>(done) / kMegabyte << " of " << static_cast<double>(total) / kMegabyte
         << " MB";
    return text.str();
}

std::string Bar(std::uint64_t done, std::uint64_t total) {
    const double share = total == 0 ? 1 : static_cast<double>(done) / static_cast<double>(total);
    const auto filled = static_cast<std::size_t>(kBarColumns * share);
    std::string bar(filled, '=');
    if (filled < kBarColumns) {
        bar += ">";
        bar.append(kBarColumns - filled - 1, ' ');
    }
    return "[" + bar + "]";
}

/// Cuts to so many bytes, which are never fewer than columns, and never inside a multi-byte character.
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
    const std::uint64_t counted = std::min(done, total);
    const std::string rest = " " + Bar(counted, total) + " " + Numbers(counted, total);
    if (rest.size() >= columns) {
        return Shortened(Numbers(counted, total), columns);
    }
    return Shortened(Printable(name), columns - rest.size()) + rest;
}

}  // namespace rig
