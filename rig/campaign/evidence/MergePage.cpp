#include "rig/campaign/evidence/MergePage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>

#include "rig/base/Counted.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlTable.h"

namespace rig::campaign {
namespace {

using html::AddLink;
using html::AddRowHead;
using html::AddTable;

/// @return the version of that name; empty if it is not known
std::string VersionOf(const PartRecord& part, const std::string& name) {
    for (const auto& [one, version] : part.versions) {
        if (one == name) {
            return version;
        }
    }
    return "";
}

void AddPart(pugi::xml_node body, const PartRecord& part, std::size_t number) {
    pugi::xml_node row = Add(body, "tr");
    AddLink(AddRowHead(row, ""), fmt::format("parts/{}.json", number), std::to_string(number));
    for (const std::string& cell :
         {part.folder, part.state,
          part.shard ? fmt::format("{}/{}", part.shard->index, part.shard->total) : "", part.note,
          std::to_string(part.seed), VersionOf(part, "host"), result::Date(part.begin),
          part.end ? result::Date(*part.end) : "not known"}) {
        Add(row, "td", cell);
    }
}

void AddOthers(pugi::xml_node main, const MergeRecord& merged) {
    if (merged.others.empty()) {
        return;
    }
    pugi::xml_node body =
        AddTable(main, "Cases that further parts ran: of each, the worst outcome stands below",
                 {"Case", "Part", "Outcome there", "Evidence"});
    for (const OtherRun& other : merged.others) {
        pugi::xml_node row = Add(body, "tr");
        AddLink(AddRowHead(row, ""), "#" + other.id, other.id);
        Add(row, "td", std::to_string(other.part));
        html::AddOutcome(Add(row, "td"), NameOf(other.outcome));
        AddLink(Add(row, "td"), other.folder + "/", other.folder);
    }
}

}  // namespace

void AddDifferences(pugi::xml_node main, const MergeRecord& merged) {
    for (const std::string& difference : merged.differences) {
        Add(main, "p", "The parts differ: " + difference, "notice");
    }
    if (!merged.missing.empty()) {
        Add(main, "p",
            fmt::format("No part ran {}: {}", Counted(merged.missing.size(), "case"),
                        fmt::join(merged.missing, ", ")),
            "notice");
    }
    if (!merged.doubles.empty()) {
        Add(main, "p",
            fmt::format("Several parts ran {}: {}", Counted(merged.doubles.size(), "case"),
                        fmt::join(merged.doubles, ", ")),
            "notice");
    }
}

void AddParts(pugi::xml_node main, const MergeRecord& merged) {
    Set(Add(main, "h2", "Parts"), "id", "parts");
    pugi::xml_node body =
        AddTable(main, "The campaigns that were merged",
                 {"Part", "Folder", "State", "Shard", "Note", "Seed", "Host", "Begin", "End"});
    for (std::size_t number = 1; number <= merged.parts.size(); ++number) {
        AddPart(body, merged.parts[number - 1], number);
    }
    AddOthers(main, merged);
}

}  // namespace rig::campaign
