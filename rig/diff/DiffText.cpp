#include <fmt/format.h>

#include "rig/base/Append.h"
#include "rig/base/Printable.h"
#include "rig/base/Terminal.h"
#include "rig/diff/Reports.h"
#include "rig/result/Result.h"

namespace rig::diff {
namespace {

std::string Shown(Change change, int width, bool colour) {
    static constexpr Colour kColours[] = {Colour::Plain, Colour::Yellow, Colour::Green, Colour::Red};
    const std::string name = fmt::format("{:<{}}", NameOf(change), width);
    return Coloured(name, colour ? kColours[static_cast<std::size_t>(change)] : Colour::Plain);
}

void PrintDifference(std::string& text, const Difference& difference, bool colour) {
    Append(text, "    {}  {}\n", Shown(difference.change, 8, colour), Printable(difference.subject));
    Append(text, "              before: {}\n              now:    {}\n", Printable(difference.before),
           Printable(difference.after));
}

void PrintCase(std::string& text, const CaseComparison& one, const Comparison& comparison, bool colour) {
    Append(text, "{}  {}  velloran {}\n", Shown(one.change, 8, colour), Printable(one.name),
           Printable(one.switches));
    for (const Difference& difference : one.differences) {
        PrintDifference(text, difference, colour);
    }
    if (!one.differences.empty() && one.after) {
        Append(text, "    see {}/{}\n", Printable(comparison.after->folder),
               Printable(one.after->runs.front().folder));
    }
}

}  // namespace

std::string Words(const Campaign& campaign) {
    return campaign.folder + (campaign.note.empty() ? "" : ", " + campaign.note) + ", " +
           result::Date(campaign.begin) +
           (campaign.state == "finished" ? "" : ", not finished: " + campaign.state);
}

std::string DiffText(const Comparison& comparison, bool all, bool colour) {
    std::string text;
    Append(text, "before: {}\nnow:    {}\n", Printable(Words(*comparison.before)),
           Printable(Words(*comparison.after)));
    for (const Difference& difference : comparison.surroundings) {
        PrintDifference(text, difference, colour);
    }
    for (const Change change : {Change::Worse, Change::Better, Change::Changed, Change::Same}) {
        for (const CaseComparison& one : comparison.cases) {
            if (one.change == change && (all || change != Change::Same)) {
                PrintCase(text, one, comparison, colour);
            }
        }
    }
    Append(text, "{}\n", comparison.Words());
    return text;
}

}  // namespace rig::diff
