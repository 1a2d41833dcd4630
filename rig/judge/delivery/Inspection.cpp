#include "rig/judge/delivery/Inspection.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "rig/base/Printable.h"

namespace rig::judge {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kTolerance = 2'000'000;  // microseconds by which clocks and file systems may differ

/// @return the transfers in the order of their last messages
std::vector<const Transfers::value_type*> InOrder(const Transfers& transfers) {
    std::vector<const Transfers::value_type*> ordered;
    for (const auto& one : transfers) {
        ordered.push_back(&one);
    }
    std::sort(ordered.begin(), ordered.end(),
              [](const auto* one, const auto* other) { return one->second.order < other->second.order; });
    return ordered;
}

bool IsFolder(const fs::path& path) {
    std::error_code unknown;
    return fs::is_directory(path, unknown);
}

bool IsLogOf(const Run& run, const fs::path& path) {
    std::error_code unknown;
    return fs::equivalent(run.file, path, unknown);
}

bool IsWithin(const Run& run, std::int64_t time) {
    return time >= *run.beginTime - kTolerance && time <= *run.endTime + kTolerance;
}

}  // namespace

Snapshot FilesIn(const std::string& folder, Files& unseen) {
    Snapshot files;
    std::error_code error;
    const fs::path root = fs::canonical(folder, error);
    std::vector<fs::path> left = {root};
    while (!left.empty()) {
        const fs::path here = left.back();
        left.pop_back();
        fs::directory_iterator entry(here, error);
        for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
            struct stat found = {};
            if (lstat(entry->path().c_str(), &found) == 0 && S_ISDIR(found.st_mode)) {
                left.push_back(entry->path());
            } else if (S_ISREG(found.st_mode) || (S_ISLNK(found.st_mode) && !IsFolder(entry->path()))) {
                files[entry->path().lexically_relative(root).string()] = StampOf(found);
            }
        }
        if (error) {
            unseen.Add(Printable(here.lexically_relative(root).string()) + ": " + error.message());
        }
    }
    return files;
}

void Inspection::LookFor(std::vector<Run>& runs) {
    std::vector<DeliveryFacts> facts(runs.size());
    std::error_code error;
    const fs::directory_iterator entries(place_.folder, error);
    if (!error) {
        Assign(runs);
    }
    for (std::size_t number = 0; number < runs.size(); ++number) {
        facts[number].unreadable = error ? error.message() : "";
        for (const auto* one : InOrder(runs[number].transfers)) {
            LookAtFile(runs[number], one->first, one->second, facts[number]);
        }
    }
    if (!error && !runs.empty()) {
        LookAtRest(runs, facts);
    }
    for (std::size_t number = 0; number < runs.size(); ++number) {
        runs[number].delivery = std::make_shared<DeliveryFacts>(std::move(facts[number]));
    }
}

/// Finds out which FILE_COMPLETE was the last about each path: a file that is delivered again replaces the
/// one before it.
void Inspection::Assign(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        for (const auto* one : InOrder(run.transfers)) {
            const auto& [name, transfer] = *one;
            const auto path = place_.PathOf(name);
            if (path) {
                asked_.insert(*path);
            }
            if (path && transfer.state == Transfer::State::Complete) {
                last_[*path] = {name, &transfer};
                announced_[InLowerCase(transfer.hash.value_or(""))] = WordsOf(name);
            }
        }
    }
}

void Inspection::LookAtFile(const Run& run, const FileName& name, const Transfer& transfer,
                            DeliveryFacts& facts) {
    const bool isComplete = transfer.state == Transfer::State::Complete;
    const auto path = place_.PathOf(name);
    if (transfer.hasFailed) {
        facts.failed.Add(WordsOf(name));
    }
    if (isComplete) {
        facts.complete.Add(WordsOf(name));
    }
    if (!path && isComplete) {
        facts.outside.Add(WordsOf(name), transfer.evidence);
    }
    if (!path || !facts.unreadable.empty()) {
        return;
    }
    const DeliveredFile file = LookAt(place_, *path);
    asked_.insert(file.path);
    const bool isLeft = transfer.state == Transfer::State::Failed && last_.count(*path) == 0 &&
                        file.form == DeliveredFile::Form::File;
    if (isComplete) {
        LookAtComplete(run, name, transfer, file, facts);
    } else if (isLeft && AgeOf(run, file.path, file.stamp) != Age::Before) {
        facts.half.Add(fmt::format("{}: {} bytes", WordsOf(name), file.stamp.size), transfer.evidence);
    }
}

void Inspection::LookAtComplete(const Run& run, const FileName& name, const Transfer& transfer,
                                const DeliveredFile& file, DeliveryFacts& facts) {
    using Form = DeliveredFile::Form;
    const std::string words = WordsOf(name);
    const auto& [lastName, last] = last_.at(*place_.PathOf(name));
    if (lastName != name || last->length != transfer.length || last->hash != transfer.hash) {
        facts.overwritten.Add(fmt::format("{}, by {}:{}", words, last->evidence.file, last->evidence.line),
                              transfer.evidence);
        return;
    }
    switch (file.form) {
        case Form::Missing:
            facts.missing.Add(words, transfer.evidence);
            break;
        case Form::Outside:
            facts.outside.Add(words + ", by a link", transfer.evidence);
            break;
        case Form::NotFile:
            facts.notFile.Add(words, transfer.evidence);
            break;
        case Form::Unreadable:
            facts.noAccess.Add(words + ": " + file.reason, transfer.evidence);
            break;
        case Form::File:
            Compare(place_, name, transfer, file, announced_, facts);
            if (last == &transfer) {
                LookAtTimes(run, name, transfer, file.stamp, facts);
            }
            break;
    }
}

void Inspection::LookAtTimes(const Run& run, const FileName& name, const Transfer& transfer,
                             const Stamp& stamp, DeliveryFacts& facts) const {
    const auto path = place_.PathOf(name);
    if (AgeOf(run, *path, stamp) == Age::Before) {
        facts.older.Add(WordsOf(name), transfer.evidence);
    }
    if (transfer.time) {
        facts.timed.Add(WordsOf(name));
    }
    if (transfer.time && stamp.written > *transfer.time + kTolerance) {
        const double seconds = static_cast<double>(stamp.written - *transfer.time) / 1e6;
        facts.late.Add(fmt::format("{}: after {:.1f} s", WordsOf(name), seconds), transfer.evidence);
    }
}

/// What is in the folder without having been asked for.
void Inspection::LookAtRest(const std::vector<Run>& runs, std::vector<DeliveryFacts>& facts) const {
    for (const auto& [path, stamp] : FilesIn(place_.folder, facts.back().unseen)) {
        const fs::path whole = fs::path(place_.folder) / path;
        const bool isLog =
            std::any_of(runs.begin(), runs.end(), [&whole](const Run& run) { return IsLogOf(run, whole); });
        if (!isLog && asked_.count(path) == 0) {
            TakeUnasked(runs, path, stamp, facts);
        }
    }
}

void Inspection::TakeUnasked(const std::vector<Run>& runs, const std::string& path, const Stamp& stamp,
                             std::vector<DeliveryFacts>& facts) const {
    bool isOlder = true;
    for (std::size_t number = runs.size(); number-- > 0;) {
        const Age age = AgeOf(runs[number], path, stamp);
        isOlder = isOlder && age == Age::Before;
        if (age == Age::During) {
            Files& kind = IsPartOfFailed(runs[number], path) ? facts[number].half : facts[number].unasked;
            kind.Add(Printable(path));
            return;
        }
    }
    if (isOlder) {
        ++facts.back().leftOut;
    } else {
        facts.back().undated.Add(Printable(path));
    }
}

/// @return whether the name tells that the file is part of one whose transfer failed: "a.ts.part",
/// ".a.ts.tmp"
bool Inspection::IsPartOfFailed(const Run& run, const std::string& path) const {
    const fs::path part(path);
    return std::any_of(run.transfers.begin(), run.transfers.end(), [&](const auto& one) {
        const fs::path whole(place_.PathOf(one.first).value_or(""));
        return one.second.hasFailed && part.parent_path() == whole.parent_path() &&
               part.filename().string().find(whole.filename().string()) != std::string::npos;
    });
}

/// @return when the file was written, seen from the run
Inspection::Age Inspection::AgeOf(const Run& run, const std::string& path, const Stamp& stamp) const {
    if (before_) {
        const auto old = before_->find(path);
        return old != before_->end() && old->second == stamp ? Age::Before : Age::During;
    }
    if (!run.beginTime || !run.endTime) {
        return Age::Unknown;
    }
    if (IsWithin(run, stamp.written) || IsWithin(run, stamp.changed)) {
        return Age::During;
    }
    return std::max(stamp.written, stamp.changed) < *run.beginTime ? Age::Before : Age::Unknown;
}

}  // namespace rig::judge
