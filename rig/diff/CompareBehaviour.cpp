#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "rig/diff/Compare.h"
#include "rig/diff/Reactions.h"

namespace rig::diff {
namespace {

using Messages = std::vector<std::string>;

std::size_t CommonStart(const Messages& one, const Messages& other) {
    return static_cast<std::size_t>(std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first -
                                    one.begin());
}

std::string At(const Messages& messages, std::size_t index) {
    return index < messages.size() ? fmt::format("{} as message {}", messages[index], index + 1)
                                   : fmt::format("the end after {}", messages.size());
}

/// @return the run whose dialogue matches the given one longest
const Messages& NearestTo(const Messages& messages, const Case& all) {
    return std::max_element(all.runs.begin(), all.runs.end(),
                            [&messages](const CaseRun& one, const CaseRun& other) {
                                return CommonStart(messages, one.messages) <
                                       CommonStart(messages, other.messages);
                            })
        ->messages;
}

void CompareOrder(const Case& before, const Case& after, std::vector<Difference>& differences) {
    for (const CaseRun& run : after.runs) {
        const bool isKnown = std::any_of(before.runs.begin(), before.runs.end(),
                                         [&run](const CaseRun& one) { return one.messages == run.messages; });
        if (!isKnown) {
            const Messages& was = NearestTo(run.messages, before);
            const std::size_t index = CommonStart(was, run.messages);
            differences.push_back(
                {Change::Changed, "order of messages", At(was, index), At(run.messages, index)});
            return;
        }
    }
}

/// How often a message came in the runs of a case: least and most.
using Count = std::pair<std::ptrdiff_t, std::ptrdiff_t>;

Count CountOf(const std::string& message, const Case& all) {
    Count count;
    for (const CaseRun& run : all.runs) {
        const std::ptrdiff_t times = std::count(run.messages.begin(), run.messages.end(), message);
        const bool isFirst = &run == &all.runs.front();
        count.first = isFirst ? times : std::min(count.first, times);
        count.second = std::max(count.second, times);
    }
    return count;
}

std::string Words(const std::string& message, const Count& count) {
    return count.first == count.second ? fmt::format("{} {}", message, count.first)
                                       : fmt::format("{} {} to {}", message, count.first, count.second);
}

std::set<std::string> MessagesOf(const Case& before, const Case& after) {
    std::set<std::string> messages;
    for (const Case* const one : {&before, &after}) {
        for (const CaseRun& run : one->runs) {
            messages.insert(run.messages.begin(), run.messages.end());
        }
    }
    return messages;
}

void CompareCounts(const Case& before, const Case& after, std::vector<Difference>& differences) {
    std::vector<std::string> counted;
    std::vector<std::string> now;
    for (const std::string& message : MessagesOf(before, after)) {
        const Count was = CountOf(message, before);
        const Count is = CountOf(message, after);
        if (is.first > was.second || is.second < was.first) {
            counted.push_back(Words(message, was));
            now.push_back(Words(message, is));
        }
    }
    if (!counted.empty()) {
        differences.push_back({Change::Changed, "number of messages",
                               fmt::format("{}", fmt::join(counted, ", ")),
                               fmt::format("{}", fmt::join(now, ", "))});
    }
}

}  // namespace

void CompareMessages(const Case& before, const Case& after, std::vector<Difference>& differences) {
    CompareOrder(before, after, differences);
    CompareCounts(before, after, differences);
}

void CompareReactions(const Case& before, const Case& after, std::vector<Difference>& differences) {
    const std::map<std::string, Span> spans = SpansOf(after);
    for (const auto& [request, was] : SpansOf(before)) {
        const auto place = spans.find(request);
        if (place == spans.end()) {
            continue;
        }
        const Span& is = place->second;
        const bool isSlower = IsSlower(is, was);
        if (isSlower || IsSlower(was, is)) {
            differences.push_back({isSlower ? Change::Worse : Change::Better, "reaction to " + request,
                                   was.Words(), is.Words()});
        }
    }
}

}  // namespace rig::diff
