#include "rig/html/HtmlOutcome.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>

#include "rig/base/Elements.h"

namespace rig::html {
namespace {

constexpr const char* kOther = "INCONCLUSIVE";

/// @return what the tally has, in the order of the looks
std::vector<std::pair<const Look*, std::size_t>> CountedIn(const Tally& tally) {
    std::vector<std::pair<const Look*, std::size_t>> counts;
    for (const Look& look : Looks()) {
        const auto count = tally.find(std::string(look.name));
        if (count != tally.end()) {
            counts.emplace_back(&look, count->second);
        }
    }
    return counts;
}

}  // namespace

const std::vector<Look>& Looks() {
    static const std::vector<Look> kLooks = {{"PASS", "pass", "passed", "P"},
                                             {"WARNING", "warning", "with a warning", "W"},
                                             {"KNOWN FAILURE", "known-failure", "failed as known", "K"},
                                             {"FAIL", "fail", "failed", "F"},
                                             {"TIMEOUT", "fail", "timed out", "T"},
                                             {"ENVIRONMENT", "environment", "failed in the rig", "E"},
                                             {"INTERRUPTED", "environment", "interrupted", "X"},
                                             {kOther, "inconclusive", "inconclusive", "I"},
                                             {"NOT REACHED", "not-reached", "not reached", "N"},
                                             {"RUNNING", "running", "running", "R"},
                                             {"NOT RUN", "not-reached", "not run", "-"},
                                             {"worse", "fail", "worse"},
                                             {"better", "pass", "better"},
                                             {"changed", "inconclusive", "changed"},
                                             {"same", "not-reached", "the same"},
                                             {"reached", "pass", "reached"},
                                             {"missed", "inconclusive", "missed"}};
    return kLooks;
}

const Look& LookOf(std::string_view name) {
    const auto find = [](std::string_view wanted) {
        return std::find_if(Looks().begin(), Looks().end(),
                            [wanted](const Look& look) { return look.name == wanted; });
    };
    const auto look = find(name);
    return look == Looks().end() ? *find(kOther) : *look;
}

pugi::xml_node AddOutcome(pugi::xml_node parent, std::string_view name) {
    return Add(parent, "span", name, std::string("verdict ") + LookOf(name).cssClass);
}

pugi::xml_node AddVerdict(pugi::xml_node parent, result::Verdict verdict) {
    return AddOutcome(parent, result::NameOf(verdict));
}

void AddLetter(pugi::xml_node parent, std::string_view name, std::string_view target) {
    const Look& look = LookOf(name);
    pugi::xml_node link = Add(parent, "a", look.letter, std::string("letter verdict ") + look.cssClass);
    Set(link, "href", target);
    Set(link, "title", name);
    Set(link, "aria-label", name);
}

std::string LetterLegend(const Tally& tally) {
    std::vector<std::string> meanings;
    for (const auto& [look, count] : CountedIn(tally)) {
        std::string name(look->name);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
        meanings.push_back(fmt::format("{} {}", look->letter, name));
    }
    return fmt::format("{}", fmt::join(meanings, ", "));
}

void AddTally(pugi::xml_node parent, const Tally& tally) {
    pugi::xml_node list = Add(parent, "ul", {}, "tally");
    pugi::xml_node bar = Add(parent, "div", {}, "bar");
    std::vector<std::string> words;
    for (const auto& [look, count] : CountedIn(tally)) {
        pugi::xml_node item = Add(list, "li", {}, count == 0 ? "none" : look->cssClass);
        Add(item, "b", std::to_string(count));
        AddText(item, std::string(" ") + look->counted);
        words.push_back(fmt::format("{} {}", count, look->counted));
        if (count > 0) {
            Set(Add(bar, "span", {}, look->cssClass), "style", fmt::format("flex-grow:{}", count));
        }
    }
    Set(bar, "role", "img");
    Set(bar, "aria-label", fmt::format("{}", fmt::join(words, ", ")));
}

}  // namespace rig::html
