#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "rig/history/Reports.h"

namespace rig::history {
namespace {

struct Letter {
    const char* outcome;
    char letter;
    const char* meaning;
};

constexpr std::array<Letter, 11> kLetters = {{{"PASS", 'P', "pass"},
                                              {"WARNING", 'W', "warning"},
                                              {"KNOWN FAILURE", 'K', "known failure"},
                                              {"FAIL", 'F', "fail"},
                                              {"TIMEOUT", 'T', "time-out"},
                                              {"INCONCLUSIVE", 'I', "inconclusive"},
                                              {"NOT REACHED", 'N', "not reached"},
                                              {"ENVIRONMENT", 'E', "environment"},
                                              {"INTERRUPTED", 'X', "interrupted"},
                                              {"RUNNING", 'R', "running"},
                                              {"NOT RUN", '-', "not run"}}};

}  // namespace

char LetterOf(const std::string& outcome) {
    const auto* const place = std::find_if(kLetters.begin(), kLetters.end(),
                                           [&outcome](const Letter& one) { return outcome == one.outcome; });
    return place == kLetters.end() ? '?' : place->letter;
}

std::string LetterLegend(const History& history) {
    std::set<std::string> outcomes;
    for (const CaseCourse& one : history.cases) {
        for (const Cell& cell : one.cells) {
            outcomes.insert(*cell.digest.worst);
        }
    }
    std::string legend;
    for (const Letter& one : kLetters) {
        legend += outcomes.count(one.outcome) > 0 ? fmt::format("{} {}, ", one.letter, one.meaning) : "";
    }
    return legend + "blank: not in this campaign";
}

std::string Words(const History& history, std::size_t build) {
    return fmt::format("{}, {}", build + 1, history.builds[build].Name());
}

std::string Words(const UnsteadyCase& unsteady) {
    return fmt::format("changed {} of {} times ({:.0f} %)", unsteady.changes, unsteady.chances,
                       unsteady.Rate() * 100);
}

std::string Words(const UnsteadyCase::Firmware& firmware) {
    std::string words;
    for (const auto& [outcome, count] : firmware.outcomes) {
        words += fmt::format("{}{} {}", words.empty() ? "" : ", ", count, outcome);
    }
    return (firmware.note.empty() ? "one campaign" : firmware.note) + ": " + words;
}

std::string Words(const History& history, const ReactionCourse& course, const ReactionCourse::Mark& mark) {
    const ReactionCourse::Point& point = course.points[mark.point];
    return fmt::format("{} in {}: {} after {}", mark.isSlower ? "slower" : "faster",
                       Words(history, point.build), point.digest.span.Words(), mark.before.Words());
}

std::string Words(const std::vector<Text>& names) {
    std::string words;
    for (const Text name : names) {
        words += (words.empty() ? "" : ", ") + *name;
    }
    return words;
}

}  // namespace rig::history
