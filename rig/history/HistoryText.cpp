#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Append.h"
#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/base/Terminal.h"
#include "rig/diff/Severity.h"
#include "rig/history/Reports.h"

namespace rig::history {
namespace {

void PrintHead(std::string& text, const std::string& head, bool colour) {
    Append(text, "\n{}\n", Coloured(head, colour ? Colour::Bold : Colour::Plain));
}

std::string Shown(const std::string& outcome, bool colour) {
    const bool isBad = diff::IsFailure(outcome);
    const Colour wanted = isBad ? Colour::Red : diff::IsPass(outcome) ? Colour::Green : Colour::Yellow;
    return Coloured(std::string(1, LetterOf(outcome)), colour ? wanted : Colour::Plain);
}

std::size_t WidestName(const std::vector<const CaseCourse*>& cases) {
    std::size_t widest = 0;
    for (const CaseCourse* const one : cases) {
        widest = std::max(widest, Printable(*one->name).size());
    }
    return widest;
}

/// @return a letter for each campaign from this one on
std::string LettersOf(const CaseCourse& one, std::size_t first, std::size_t builds, bool colour) {
    std::string letters;
    auto cell = one.cells.begin();
    for (std::size_t build = 0; build < builds; ++build) {
        const bool isHere = cell != one.cells.end() && cell->build == build;
        if (build >= first) {
            letters += isHere ? Shown(*cell->digest.worst, colour) : " ";
        }
        cell += isHere ? 1 : 0;
    }
    return letters;
}

void PrintMatrix(std::string& text, const History& history, std::size_t columns, bool colour) {
    const std::vector<const CaseCourse*> cases = history.CasesToShow();
    const std::size_t widest = WidestName(cases);
    const std::size_t count = history.builds.size();
    const std::size_t room = columns > widest + 3 ? columns - widest - 3 : 1;
    const std::size_t first = count > room ? count - room : 0;
    PrintHead(text, fmt::format("Cases in campaigns {} to {}", first + 1, count), colour);
    for (const CaseCourse* const one : cases) {
        Append(text, "{:<{}}  {}\n", Printable(*one->name), widest, LettersOf(*one, first, count, colour));
    }
    if (cases.size() < history.cases.size()) {
        Append(text, "The other {} always passed.\n", history.cases.size() - cases.size());
    }
    Append(text, "{}\n", LetterLegend(history));
}

void PrintFailures(std::string& text, const History& history, bool colour) {
    PrintHead(text, history.failures.empty() ? "No check fails now" : "What fails now", colour);
    for (const Failure& failure : history.failures) {
        Append(text, "{} in {}\n", Printable(*failure.check), Printable(Words(failure.cases)));
        Append(text, "    {}: {}\n", *failure.verdict, Printable(*failure.found));
        Append(text, "    since {}; {}\n", Printable(Words(history, failure.since)),
               failure.passed ? "last passed in " + Printable(Words(history, *failure.passed))
                              : "never passed before");
        if (failure.last + 1 < history.builds.size()) {
            Append(text, "    last seen in {}\n", Printable(Words(history, failure.last)));
        }
        Append(text, "    see {}/{}\n", Printable(history.builds[failure.last].facts.folder),
               Printable(failure.folder));
    }
}

void PrintUnsteady(std::string& text, const History& history, bool colour) {
    if (!history.unsteady.empty()) {
        PrintHead(text, "Unsteady: another outcome than in the run before with the same note", colour);
    }
    for (const UnsteadyCase& unsteady : history.unsteady) {
        const std::size_t earlier = unsteady.firmwares.size() - 1;
        Append(text, "{}  {}\n    {}{}\n", Printable(*unsteady.name), Words(unsteady),
               Printable(Words(unsteady.firmwares.back())),
               earlier > 0 ? fmt::format("; and with {}", Counted(earlier, "earlier note")) : "");
    }
}

void PrintReactions(std::string& text, const History& history, bool colour) {
    bool isFirst = true;
    for (const ReactionCourse& course : history.reactions) {
        for (const ReactionCourse::Mark& mark : course.marks) {
            if (isFirst) {
                PrintHead(text, "Reaction times that left the spread of the ten campaigns before", colour);
                isFirst = false;
            }
            Append(text, "{} in {}: {}\n", Printable(*course.request), Printable(*course.name),
                   Printable(Words(history, course, mark)));
        }
    }
}

void PrintRemarks(std::string& text, const History& history) {
    for (std::size_t build = 0; build < history.builds.size(); ++build) {
        const std::string remarks = history.builds[build].Remarks();
        if (!remarks.empty()) {
            Append(text, "{}: {}\n", Printable(Words(history, build)), Printable(remarks));
        }
    }
    for (const LeftOut& one : history.leftOut) {
        Append(text, "left out: {}: {}\n", Printable(one.folder), Printable(one.reason));
    }
}

}  // namespace

std::string HistoryText(const History& history, std::size_t columns, bool colour) {
    std::string text;
    Append(text, "{}\nfrom {} to {}\n", history.Words(), Printable(Words(history, 0)),
           Printable(Words(history, history.builds.size() - 1)));
    PrintRemarks(text, history);
    PrintMatrix(text, history, columns, colour);
    PrintFailures(text, history, colour);
    PrintUnsteady(text, history, colour);
    PrintReactions(text, history, colour);
    return text;
}

}  // namespace rig::history
