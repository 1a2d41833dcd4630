#include <fmt/format.h>

#include <utility>

#include "rig/history/Reports.h"
#include "rig/html/HtmlOutcome.h"

namespace rig::history {

char LetterOf(const std::string& outcome) {
    const html::Look& look = html::LookOf(outcome);
    return look.name == outcome ? look.letter.front() : '?';
}

std::string LetterLegend(const History& history) {
    html::Tally outcomes;
    for (const CaseCourse& one : history.cases) {
        for (const Cell& cell : one.cells) {
            ++outcomes[*cell.digest.worst];
        }
    }
    return html::LetterLegend(outcomes) + ", blank: not in this campaign";
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
