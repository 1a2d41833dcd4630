#include "rig/html/LogPlaces.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace rig::html {

LogPlaces::LogPlaces(const result::RunResult& run, std::string prefix, std::size_t limit)
    : run_(run), prefix_(std::move(prefix)) {
    for (std::size_t entry = 0; entry < run.log.size(); ++entry) {
        if (entry == 0 || run.log[entry].line <= run.log[entry - 1].line) {
            files_.push_back(entry);
        }
    }
    for (const result::CheckResult& check : run.checks) {
        for (const result::Evidence& evidence : check.evidence) {
            if (const auto entry = Find(evidence)) {
                proofs_[*entry].push_back(&check);
            }
        }
    }
    kept_ = KeptOf(run.log.size(), limit, [this](std::size_t entry) { return proofs_.count(entry) > 0; });
}

std::string LogPlaces::AnchorOf(std::size_t entry) const {
    const auto next = std::upper_bound(files_.begin(), files_.end(), entry);
    const auto file = std::distance(files_.begin(), next);
    const std::string fileNumber = file > 1 ? fmt::format("{}.", file) : "";
    return fmt::format("{}L{}{}", prefix_, fileNumber, run_.log[entry].line);
}

template <typename Matches>
std::optional<std::size_t> LogPlaces::Find(std::uint64_t line, const Matches& matches) const {
    for (std::size_t file = 0; file < files_.size(); ++file) {
        const std::size_t last = file + 1 < files_.size() ? files_[file + 1] : run_.log.size();
        const auto end = run_.log.begin() + static_cast<std::ptrdiff_t>(last);
        const auto found = std::lower_bound(
            run_.log.begin() + static_cast<std::ptrdiff_t>(files_[file]), end, line,
            [](const result::LogEntry& entry, std::uint64_t wanted) { return entry.line < wanted; });
        if (found != end && found->line == line && matches(*found)) {
            return static_cast<std::size_t>(found - run_.log.begin());
        }
    }
    return std::nullopt;
}

/// Evidence holds only the beginning of a long line.
std::optional<std::size_t> LogPlaces::Find(const result::Evidence& evidence) const {
    return Find(evidence.line, [&evidence](const result::LogEntry& entry) {
        return entry.text.compare(0, evidence.text.size(), evidence.text) == 0;
    });
}

std::optional<std::string> LogPlaces::TargetOf(const result::Evidence& evidence) const {
    const auto entry = Find(evidence);
    return entry ? std::optional<std::string>("#" + AnchorOf(*entry)) : std::nullopt;
}

std::optional<std::string> LogPlaces::TargetOf(const result::Step& step) const {
    const auto entry =
        Find(step.line, [&step](const result::LogEntry& one) { return one.time == step.time; });
    const bool isKept = entry && std::binary_search(kept_.begin(), kept_.end(), *entry);
    return isKept ? std::optional<std::string>("#" + AnchorOf(*entry)) : std::nullopt;
}

const std::vector<const result::CheckResult*>& LogPlaces::ProvedBy(std::size_t entry) const {
    static const std::vector<const result::CheckResult*> kNone;
    const auto proof = proofs_.find(entry);
    return proof == proofs_.end() ? kNone : proof->second;
}

}  // namespace rig::html
