#include "rig/dvr/dialogue/Habits.h"

#include <fmt/format.h>

#include <array>

#include "rig/base/ParseNumber.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Choice.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

constexpr int kMostValue = 3'600'000;

struct HabitKind {
    const char* name;
    const char* value;  // what it counts; empty: nothing
    int usual;          // value
    void (*adopt)(Habits& habits, int value);
    const char* words;
};

constexpr std::array kHabits = {
    HabitKind{"progress", "MS", 100, [](Habits& habits, int ms) { habits.progress = Milliseconds(ms); },
              "says XFER_IN_PROGRESS every 100 ms, or MS, while a transfer runs; in protocol 2.0 only"},
    HabitKind{"late-complete", "MS", 300, [](Habits& habits, int ms) { habits.lateness = Milliseconds(ms); },
              "says FILE_COMPLETE 300 ms, or MS, after the file is transferred"},
    HabitKind{
        "one-segment", "", 0, [](Habits& habits, int) { habits.sharesSegments = true; },
        "sends XFER_IN_PROGRESS and SOFTWARE_UPDATE_CONFIRM in one segment with the message after them"},
    HabitKind{"call-again", "N", 1, [](Habits& habits, int times) { habits.callsAgain = times; },
              "connects and exports again after DONE, once or N times, at once or after the announced "
              "duration; for a harness that closes the connection after DONE"},
    HabitKind{"await-close", "", 0, [](Habits& habits, int) { habits.awaitsClose = true; },
              "lets the harness close the connection first, and waits for that as long as --timeout"},
};

int ValueOf(const HabitKind& kind, const std::string& option, std::size_t equals) {
    if (equals == std::string::npos) {
        return kind.usual;
    }
    const auto value = ParseNumber<int>(option.substr(equals + 1));
    if (*kind.value == '\0' || !value || *value < 1 || *value > kMostValue) {
        throw Failure(
            ExitStatus::Unusable,
            *kind.value == '\0'
                ? fmt::format("--habit: expected {} without a value, found {}", kind.name, Quoted(option))
                : fmt::format("--habit: expected {}={} with {} from 1 to {}, found {}", kind.name, kind.value,
                              kind.value, kMostValue, Quoted(option)));
    }
    return *value;
}

}  // namespace

void Habits::Add(const std::string& option) {
    const std::size_t equals = option.find('=');
    const std::string name = option.substr(0, equals);
    const auto named = Choose("--habit", ListHabits(), name == "all" ? option : name);
    for (std::size_t row = 0; row < kHabits.size(); ++row) {
        if (!named || named == row) {
            kHabits[row].adopt(*this, ValueOf(kHabits[row], option, equals));
        }
    }
}

Listing ListHabits() {
    Listing listing{{"habit", "what the DVR does"}, {}};
    for (const HabitKind& kind : kHabits) {
        const std::string value = *kind.value == '\0' ? "" : fmt::format("[={}]", kind.value);
        listing.rows.push_back({kind.name + value, kind.words});
    }
    return listing;
}

}  // namespace rig::dvr
