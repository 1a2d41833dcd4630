#include "rig/dvr/recordings/EventKinds.h"

#include <fmt/format.h>

#include <array>
#include <bitset>

#include "rig/dvr/Choice.h"

namespace rig::dvr {
namespace {

constexpr std::size_t kLongName = 240;  // bytes; the name of a folder or file has at most 255
constexpr int kMany = 1000;

struct EventKind {
    const char* name;
    const char* words;
    std::vector<Event> (*makeUp)();
    bool endsExport = false;  // in protocol 2.0
};

std::vector<Event> Long() {
    const std::string name(kLongName - 1, 'x');
    return {{name + "1", name + "m", {{name + "1", name + "2"}}}, {name + "2", name + "m", {{name + "1"}}}};
}

std::vector<Event> Short() {
    return {{"7", "m", {{"v"}}}, {"42", "m", {{"v1"}}}};
}

/// What -e and -f leave of the first names starts within a character.
std::vector<Event> Odd() {
    return {{"Gr\xc3\xb6\xc3\x9f"
             "e/2026-11-22/1",
             "\xe2\x82\xac.xml",
             {{"Ru\xcc\x88"
               "ck/\xf0\x9f\x9a\x8c.ts"}}},
            {" front  door ", " m ", {{"a  b "}}},
            {"Tom's \"A&B\" <1>", "'m'", {{"\"front\".ts"}}},
            {"100%s \\n $(x)", "%n", {{"`a & b;c=d,e`"}}}};
}

std::vector<Event> Clashing() {
    return {{"00012345", "front.xml", {{"00-front.xml"}}}, {"12345", "front.xml", {{"00-front.xml"}}}};
}

std::vector<Event> SingleFile() {
    return {{"SINGLE-1", "SINGLE-1.xml", {}}, {"SINGLE-2", "SINGLE-2.xml", {}}};
}

std::vector<Event> Many() {
    std::vector<Event> events;
    for (int number = 1; number <= kMany; ++number) {
        const std::string id = fmt::format("MANY-{:04}", number);
        events.push_back({id, id + ".xml", {}});
    }
    return events;
}

std::vector<Event> FileLess() {
    return {{"FILE-LESS-1", "FILE-LESS-1.xml", {{"front.ts"}}}, {"FILE-LESS-2", "", {}}};
}

constexpr std::array kKinds = {
    EventKind{"long", "names of 240 bytes, some of which differ in the last one only", Long},
    EventKind{"short", "names of one or two characters", Short},
    EventKind{"odd",
              "blanks, also at the ends and in a row, quotes, ampersands, other punctuation, UTF-8, slashes",
              Odd},
    EventKind{"clashing",
              "an event that the harness's -e turns into another, with a file that its -f turns into another",
              Clashing},
    EventKind{"single-file", "no files but the metadata, so that the faults of files do not occur",
              SingleFile},
    EventKind{"many",
              "1,000 events of one file each, some 5 minutes of an export in protocol 1.0 and 15 in 2.0",
              Many},
    EventKind{"file-less",
              "an event of two files, then one without any, after which a 2.0 harness waits forever; `all` "
              "leaves this kind out there",
              FileLess, true},
};

}  // namespace

std::vector<Event> MakeUpEvents(const std::vector<std::string>& kinds, int dialect) {
    std::bitset<kKinds.size()> chosen;
    for (const std::string& name : kinds) {
        const auto named = Choose("--events", ListEvents(), name);
        for (std::size_t row = 0; row < kKinds.size(); ++row) {
            const bool isOfAll = !named && (dialect == 1 || !kKinds[row].endsExport);
            chosen[row] = chosen[row] || isOfAll || named == row;
        }
    }
    std::vector<Event> events;
    for (std::size_t row = 0; row < kKinds.size(); ++row) {
        if (chosen[row]) {
            const std::vector<Event> made = kKinds[row].makeUp();
            events.insert(events.end(), made.begin(), made.end());
        }
    }
    return events;
}

Listing ListEvents() {
    Listing listing{{"kind", "which events the DVR has"}, {}};
    for (const EventKind& kind : kKinds) {
        listing.rows.push_back({kind.name, kind.words});
    }
    return listing;
}

}  // namespace rig::dvr
