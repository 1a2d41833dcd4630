#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "rig/base/Counted.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlSections.h"
#include "rig/result/Result.h"

namespace rig::html {
namespace {

constexpr std::size_t kLinesInBlock = 200;  // the browser lays out only the visible blocks
constexpr double kLineHeight = 1.5;         // em, as in the style

std::string LevelOf(const result::LogEntry& entry) {
    return entry.level ? std::to_string(*entry.level) : "none";
}

const char* MeaningOf(const std::string& level) {
    static const std::map<std::string, const char*> kMeanings = {
        {"1", "errors, main trace"}, {"2", "warnings"},    {"4", "nothing to do"},
        {"8", "trace of -z"},        {"16", "milestones"}, {"32", "switches, messages, faults"},
        {"64", "fine trace"}};
    const auto meaning = kMeanings.find(level);
    return meaning == kMeanings.end() ? "" : meaning->second;
}

void AddLevels(pugi::xml_node form, const result::RunResult& run) {
    const auto byNumber = [](const std::string& left, const std::string& right) {
        return left.size() != right.size() ? left.size() < right.size() : left < right;
    };
    std::set<std::string, decltype(byNumber)> levels(byNumber);
    for (const result::LogEntry& entry : run.log) {
        levels.insert(LevelOf(entry));
    }
    pugi::xml_node fields = Add(form, "fieldset");
    Add(fields, "legend", "Levels");
    for (const std::string& level : levels) {
        pugi::xml_node label = Add(fields, "label");
        pugi::xml_node input = AddInput(label, "checkbox", "level");
        Set(input, "value", level);
        Set(input, "checked", "checked");
        AddText(label, level + " " + MeaningOf(level));
    }
}

/// Hidden until the script shows it, as it does nothing without the script.
void AddSearch(pugi::xml_node log, const result::RunResult& run) {
    pugi::xml_node form = Add(log, "form", {}, "search");
    Set(form, "role", "search");
    Set(form, "hidden", "hidden");
    pugi::xml_node field = Add(form, "label", "Search the log");
    AddInput(field, "search", "search");
    pugi::xml_node proofs = Add(form, "label");
    AddInput(proofs, "checkbox", "evidence");
    AddText(proofs, "only lines that prove a finding");
    AddLevels(form, run);
    Set(Add(form, "p", {}, "shown"), "role", "status");
}

void AddLine(pugi::xml_node list, const result::RunResult& run, const LogPlaces& places, std::size_t index,
             const std::string& prefix) {
    const result::LogEntry& entry = run.log[index];
    const std::string anchor = places.AnchorOf(index);
    const auto& proved = places.ProvedBy(index);
    pugi::xml_node line = Add(list, "li", {}, proved.empty() ? "" : "evidence");
    Set(line, "id", anchor);
    Set(line, "data-level", LevelOf(entry));
    AddLink(line, "#" + anchor, std::to_string(entry.line));
    Add(line, "span", result::SecondsSince(run.begin, entry.time));
    Add(line, "span", entry.level ? LevelOf(entry) : "");
    pugi::xml_node text = Add(line, "div");
    Add(text, "code", entry.text);
    for (const result::CheckResult* check : proved) {
        AddText(text, " ");
        const std::string words = fmt::format("evidence: {} {}", result::NameOf(check->verdict), check->id);
        Set(AddLink(text, fmt::format("#{}{}", prefix, check->id), words), "class",
            std::string("proof verdict ") + LookOf(result::NameOf(check->verdict)).cssClass);
    }
}

pugi::xml_node AddBlock(pugi::xml_node log, std::size_t lines) {
    pugi::xml_node list = Add(log, "ol", {}, "lines");
    Set(list, "style",
        fmt::format("contain-intrinsic-size:auto {}em", static_cast<double>(lines) * kLineHeight));
    return list;
}

void AddLines(pugi::xml_node log, const result::RunResult& run, const LogPlaces& places,
              const std::string& prefix) {
    const auto& kept = places.Kept();
    pugi::xml_node block;
    for (std::size_t number = 0; number < kept.size(); ++number) {
        const std::size_t missing = number == 0 ? 0 : kept[number] - kept[number - 1] - 1;
        if (missing > 0) {
            Add(log, "p", fmt::format("{} left out here", Counted(missing, "line")), "cut");
        }
        if (number % kLinesInBlock == 0 || missing > 0) {
            block = AddBlock(log, std::min(kLinesInBlock - number % kLinesInBlock, kept.size() - number));
        }
        AddLine(block, run, places, kept[number], prefix);
    }
}

}  // namespace

void AddLog(pugi::xml_node section, const result::RunResult& run, const LogPlaces& places,
            const std::string& prefix) {
    pugi::xml_node log = Add(section, "div", {}, "log");
    const std::size_t cut = run.log.size() - places.Kept().size();
    if (cut > 0) {
        Add(log, "p",
            fmt::format("This page holds {} of the {} lines of this run: the first, the last, and those in "
                        "between that "
                        "prove a finding. The other {} are in the log itself.",
                        places.Kept().size(), run.log.size(), cut),
            "cut");
    }
    AddSearch(log, run);
    AddLines(log, run, places, prefix);
}

}  // namespace rig::html
