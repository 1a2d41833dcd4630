#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "rig/campaign/Cases.h"
#include "rig/fault/Cases.h"

namespace rig::campaign {

/// Faults that act in one export.
using Sequence = std::vector<fault::FaultCase>;

/// Random sequences, all of which follow from the seed.
class Sequences {
 public:
    /// @param dialect  1, 2, or 0 for both
    Sequences(std::uint32_t seed, int dialect) : random_(seed), dialect_(dialect) {}

    /// @return the next: mostly one or two faults, at most four, all of one dialect
    Sequence Next();

 private:
    fault::FaultCase Draw(int dialect);
    void Shuffle(int dialect);
    std::size_t Below(std::size_t end);

    std::mt19937 random_;
    int dialect_;
    std::map<int, Sequence> decks_;  // by dialect: every fault with each of its values, until all are drawn
};

/// Leaves faults out, and makes numbers smaller, as long as that fails.
/// @param fails  plays a sequence. @return whether the DVR fails
Sequence Shrink(Sequence sequence, const std::function<bool(const Sequence&)>& fails);

/// @return the ids of the faults, with "+" between them, as --faults takes them
std::string IdOf(const Sequence& sequence);

/// @return the case that plays the sequence, which has its id
Case CaseOf(const Sequence& sequence);

/// @return the sequence of that id. Throws std::runtime_error if one of its faults does not exist.
Sequence SequenceOf(const std::string& id);

/// How long a search goes on.
struct SearchLimit {
    std::size_t tries = 0;  // 0: until the time is over
    double seconds = 0;     // 0: until so many tries have been made
};

/// Reads "300", or a duration: "90s", "20m", "2h". @return nothing if it is something else
std::optional<SearchLimit> ParseSearchLimit(const std::string& text);

/// What a search has found: one way in which the DVR fails.
struct SearchFinding {
    Sequence sequence;   // as small as it still fails
    std::string reason;  // why the smallest fails
    std::size_t atTry = 0;
    std::size_t seen = 1;      // tries that failed with these faults
    std::size_t repeated = 0;  // of three repetitions, how many failed
};

/// @return whether the sequence has all faults of the finding, and may fail for it
bool IsOneOf(const SearchFinding& finding, const Sequence& sequence);

/// @return the findings for people: what fails, how often, and the command that repeats it
std::string FindingsText(const std::vector<SearchFinding>& findings, std::size_t tries, std::uint32_t seed);

/// @return the same as JSON
std::string FindingsJson(const std::vector<SearchFinding>& findings, std::size_t tries, std::uint32_t seed);

}  // namespace rig::campaign
