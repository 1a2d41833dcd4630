#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "rig/protocol/Catalogue.h"

namespace rig::protocol {

/// Facts about messages, each in words.
using Facts = std::set<std::string>;

/// @return the text of a file of this project
std::string Read(const std::string& path);

/// @return what stands between the two texts, the first time that they do
std::string Between(const std::string& text, const std::string& start, const std::string& end);

/// @return the group of each match
std::vector<std::string> All(const std::string& text, const std::string& pattern, std::size_t group = 1);

Facts SetOf(const std::vector<std::string>& list);

Facts NamesOf(Sender sender);
Facts AttributesOf(const MessageKind& kind);
std::vector<std::string> ElementsOf(const MessageKind& kind);

/// Fails for each fact that only one of the two has.
void ExpectSame(const Facts& catalogue, const Facts& others);

template <typename List>
std::string Join(const List& list) {
    std::string joined;
    for (const auto& word : list) {
        joined += (joined.empty() ? "" : " ") + std::string(word);
    }
    return joined;
}

/// @return all that the messages have, by a function of each
template <typename Of>
Facts OfAll(Of of) {
    Facts all;
    for (const MessageKind& kind : Catalogue()) {
        const auto some = of(kind);
        all.insert(some.begin(), some.end());
    }
    return all;
}

}  // namespace rig::protocol
