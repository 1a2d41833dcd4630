#include "tests/rig/protocol/Facts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>

namespace rig::protocol {
namespace {

Facts Without(const Facts& facts, const Facts& others) {
    Facts left;
    std::set_difference(facts.begin(), facts.end(), others.begin(), others.end(),
                        std::inserter(left, left.end()));
    return left;
}

}  // namespace

std::string Read(const std::string& path) {
    std::ifstream file(VELLORAN_SOURCES "/" + path);
    std::string text(std::istreambuf_iterator<char>(file), {});
    EXPECT_FALSE(text.empty()) << path;
    return text;
}

std::string Between(const std::string& text, const std::string& start, const std::string& end) {
    const std::size_t first = text.find(start);
    if (first == std::string::npos) {
        ADD_FAILURE() << "nothing begins with " << start;
        return "";
    }
    const std::size_t from = first + start.size();
    return text.substr(from, text.find(end, from) - from);
}

std::vector<std::string> All(const std::string& text, const std::string& pattern, std::size_t group) {
    const std::regex regex(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
        found.push_back(match->str(group));
    }
    return found;
}

Facts SetOf(const std::vector<std::string>& list) {
    return {list.begin(), list.end()};
}

void ExpectSame(const Facts& catalogue, const Facts& others) {
    EXPECT_EQ(Without(catalogue, others), Facts()) << "is in the catalogue alone";
    EXPECT_EQ(Without(others, catalogue), Facts()) << "is not in the catalogue";
}

Facts NamesOf(Sender sender) {
    Facts names;
    for (const MessageKind& kind : Catalogue()) {
        if (kind.sender == sender) {
            names.insert(kind.name);
        }
    }
    return names;
}

std::vector<std::string> ElementsOf(const MessageKind& kind) {
    return All(kind.children, "[^/]+", 0);
}

Facts AttributesOf(const MessageKind& kind) {
    Facts names(kind.required.begin(), kind.required.end());
    names.insert(kind.optional.begin(), kind.optional.end());
    return names;
}

}  // namespace rig::protocol
