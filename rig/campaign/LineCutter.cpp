#include "rig/campaign/LineCutter.h"

#include <algorithm>

#include "rig/log/LogReader.h"

namespace rig::campaign {

void LineCutter::Add(std::string_view piece) {
    for (std::size_t newline = 0; (newline = piece.find('\n')) != std::string_view::npos;) {
        Keep(piece.substr(0, newline));
        Give();
        piece.remove_prefix(newline + 1);
    }
    Keep(piece);
}

void LineCutter::End() {
    if (!rest_.empty()) {
        Give();
    }
}

void LineCutter::Keep(std::string_view part) {
    rest_.append(part.substr(0, std::min(part.size(), kLongestLine - rest_.size())));
}

void LineCutter::Give() {
    take_(++number_, rest_);
    rest_.clear();
}

}  // namespace rig::campaign
