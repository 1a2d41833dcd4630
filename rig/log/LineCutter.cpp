#include "rig/log/LineCutter.h"

#include <algorithm>

namespace rig::log {

void LineCutter::Add(std::string_view piece) {
    for (std::size_t newline = 0; (newline = piece.find('\n')) != std::string_view::npos;) {
        const std::string_view end = piece.substr(0, newline);
        piece.remove_prefix(newline + 1);
        if (rest_.empty()) {  // most lines arrive whole: no need to copy them
            take_(++number_, end.substr(0, kLongestLine));
        } else {
            PassOn(end);
        }
    }
    Keep(piece);
}

void LineCutter::End() {
    if (!rest_.empty()) {
        PassOn({});
    }
}

void LineCutter::Keep(std::string_view part) {
    rest_.append(part.substr(0, std::min(part.size(), kLongestLine - rest_.size())));
}

/// @param end  the rest of the line begun in rest_
void LineCutter::PassOn(std::string_view end) {
    Keep(end);
    take_(++number_, rest_);
    rest_.clear();
}

}  // namespace rig::log
