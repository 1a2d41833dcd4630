#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "rig/result/Result.h"

namespace rig::html {

/// @return which of `count` things a page with room for `limit` holds, ascending: all, or half of `limit`
///         from the start and half from the end, and up to `limit` of those in between for which
///         `matters(index)` is true
template <typename Predicate>
std::vector<std::size_t> KeptOf(std::size_t count, std::size_t limit, const Predicate& matters) {
    std::vector<std::size_t> kept;
    for (std::size_t index = 0; index < count; ++index) {
        const bool isAtEnds = count <= limit || index < limit / 2 || index + limit / 2 >= count;
        if (isAtEnds || (kept.size() < limit / 2 + limit && matters(index))) {
            kept.push_back(index);
        }
    }
    return kept;
}

/// Where the lines of a run's log are on its page. A page holds a bounded number of them: the first and the
/// last, and those in between that prove something.
class LogPlaces {
 public:
    /// @param run must outlive this. @param prefix of the anchors: "", "run2-". @param limit how many lines
    ///        the page holds, not counting those that prove something
    LogPlaces(const result::RunResult& run, std::string prefix, std::size_t limit);

    /// @return the anchor of an entry of the run's log: "L12"; in the second of several files "L2.12"
    std::string AnchorOf(std::size_t entry) const;

    /// @return a link's target, "#L12"; nothing if the page does not hold the line
    std::optional<std::string> TargetOf(const result::Evidence& evidence) const;
    std::optional<std::string> TargetOf(const result::Step& step) const;

    /// @return the entries that the page holds, in order
    const std::vector<std::size_t>& Kept() const { return kept_; }

    /// @return those of the run's checks that an entry proves
    const std::vector<const result::CheckResult*>& ProvedBy(std::size_t entry) const;

 private:
    template <typename Matches>
    std::optional<std::size_t> Find(std::uint64_t line, const Matches& matches) const;
    std::optional<std::size_t> Find(const result::Evidence& evidence) const;

    const result::RunResult& run_;
    std::string prefix_;
    std::vector<std::size_t> files_;  // the first entry of each file of the log
    std::map<std::size_t, std::vector<const result::CheckResult*>> proofs_;
    std::vector<std::size_t> kept_;
};

}  // namespace rig::html
