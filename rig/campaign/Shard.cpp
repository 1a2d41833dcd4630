#include "rig/campaign/Shard.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstddef>
#include <utility>

#include "rig/base/ParseNumber.h"
#include "rig/base/Printable.h"

namespace rig::campaign {
namespace {

/// Variables by which a runner tells its parts apart. Null: it has none such.
struct Runner {
    const char* index;
    const char* total;
    std::int64_t first;   // index
    const char* lowest;   // index, where it is not the first
    const char* highest;  // index
    const char* step;     // from one index to the next
};

constexpr Runner kRunners[] = {
    {"CI_NODE_INDEX", "CI_NODE_TOTAL", 1, nullptr, nullptr, nullptr},
    {"TEST_SHARD_INDEX", "TEST_TOTAL_SHARDS", 0, nullptr, nullptr, nullptr},
    {"SLURM_ARRAY_TASK_ID", "SLURM_ARRAY_TASK_COUNT", 1, "SLURM_ARRAY_TASK_MIN", "SLURM_ARRAY_TASK_MAX",
     "SLURM_ARRAY_TASK_STEP"},
};

using Variables = std::function<const char*(const char*)>;

std::optional<std::int64_t> NumberIn(const Variables& variable, const char* name) {
    const char* const text = name == nullptr ? nullptr : variable(name);
    return text == nullptr ? std::nullopt : ParseNumber<std::uint32_t>(text);
}

std::optional<Shard> ShardOf(std::int64_t index, std::int64_t total) {
    if (index < 1 || index > total) {
        return std::nullopt;
    }
    return Shard{static_cast<std::uint32_t>(index), static_cast<std::uint32_t>(total), {}};
}

std::optional<Shard> ShardIn(const Variables& variable, const Runner& runner) {
    const std::optional<std::int64_t> index = NumberIn(variable, runner.index);
    const std::optional<std::int64_t> total = NumberIn(variable, runner.total);
    const std::int64_t first = NumberIn(variable, runner.lowest).value_or(runner.first);
    const std::int64_t step = NumberIn(variable, runner.step).value_or(1);
    if (!index || !total || step < 1 || (*index - first) % step != 0) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> last = NumberIn(variable, runner.highest);
    if (last && (*last - first) / step + 1 != *total) {
        return std::nullopt;
    }
    return ShardOf((*index - first) / step + 1, *total);
}

/// @return "CI_NODE_INDEX=4, CI_NODE_TOTAL=3"
std::string ValuesOf(const Variables& variable, const Runner& runner) {
    std::vector<std::string> values;
    for (const char* const name : {runner.index, runner.total, runner.lowest, runner.highest, runner.step}) {
        if (const char* const value = name == nullptr ? nullptr : variable(name)) {
            values.push_back(fmt::format("{}={}", name, Printable(value)));
        }
    }
    return fmt::format("{}", fmt::join(values, ", "));
}

std::string Demand(const Runner& runner) {
    return runner.lowest == nullptr
               ? fmt::format("expected one of the parts, counted from {}", runner.first)
               : fmt::format("expected one of the parts, counted from {} without a gap", runner.lowest);
}

/// A runner that runs the whole may give the total alone: one.
bool HasSpoken(const Variables& variable, const Runner& runner) {
    return variable(runner.index) != nullptr ||
           (variable(runner.total) != nullptr && NumberIn(variable, runner.total) != 1);
}

}  // namespace

std::string Shard::Words() const {
    return fmt::format("part {} of {}", index, total);
}

std::optional<Shard> ParseShard(const std::string& text) {
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos) {
        return std::nullopt;
    }
    const auto index = ParseNumber<std::uint32_t>(text.substr(0, slash));
    const auto total = ParseNumber<std::uint32_t>(text.substr(slash + 1));
    return index && total ? ShardOf(*index, *total) : std::nullopt;
}

ShardChoice ShardInEnvironment(const std::function<const char*(const char*)>& variable) {
    ShardChoice choice;
    for (const Runner& runner : kRunners) {
        if (!HasSpoken(variable, runner)) {
            continue;
        }
        std::optional<Shard> shard = ShardIn(variable, runner);
        if (shard && !choice.shard) {
            choice.shard = std::move(shard);
            choice.shard->from = fmt::format("{} and {}", runner.index, runner.total);
        } else {
            choice.ignored.push_back(
                fmt::format("not taken: {}; {}", ValuesOf(variable, runner),
                            shard ? choice.shard->from + " come first" : Demand(runner)));
        }
    }
    return choice;
}

}  // namespace rig::campaign
