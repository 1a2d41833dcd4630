#include <fmt/format.h>

#include "rig/base/Counted.h"
#include "rig/judge/Findings.h"
#include "rig/judge/checks/Checks.h"
#include "rig/judge/delivery/DeliveryFacts.h"

namespace rig::judge {
namespace {

using result::Verdict;

bool IsSeen(const Run& run) {
    return run.delivery->unreadable.empty();
}
using FilesOfFacts = Files DeliveryFacts::*;
template <FilesOfFacts files>
bool Has(const Run& run) {
    return IsSeen(run) && (run.delivery.get()->*files).Any();
}

/// Something that may be true of files, and what that means.
struct Case {
    const Files& files;
    Verdict verdict;
    const char* found;
};

/// @return the finding of the first case that is true of any file; otherwise a pass
Finding FirstOf(std::initializer_list<Case> cases, const std::string& expected, const std::string& good) {
    for (const Case& one : cases) {
        if (one.files.Any()) {
            return {one.verdict, expected, fmt::format("{} ({})", one.found, one.files.Words()),
                    one.files.Lines()};
        }
    }
    return {Verdict::Pass, expected, good, {}};
}

Finding DeliveryFile(const Run& run, const Limits& /*limits*/) {
    const std::string expected = "each file that FILE_COMPLETE reports, in the folder";
    const DeliveryFacts& facts = *run.delivery;
    if (!facts.unreadable.empty()) {
        return {
            Verdict::Environment, expected, "a folder that cannot be read (" + facts.unreadable + ")", {}};
    }
    if (!facts.complete.Any()) {
        return NotReached(expected, "no FILE_COMPLETE to a request");
    }
    return FirstOf(
        {{facts.outside, Verdict::Fail, "a name that leads out of the folder, where nobody looked"},
         {facts.missing, Verdict::Fail, "a file that is not there"},
         {facts.notFile, Verdict::Fail, "something that is not a file"},
         {facts.noAccess, Verdict::Environment, "a file that cannot be read"},
         {facts.overwritten, Verdict::Inconclusive,
          "a file that a later FILE_COMPLETE, which announces something else, has replaced"},
         {facts.older, Verdict::Inconclusive,
          "a file that was there before the run and has not been written since: whether it was delivered "
          "again cannot be told"},
         {facts.empty, Verdict::Inconclusive,
          "an empty file, of which neither length nor hash was announced"}},
        expected,
        fmt::format("{}, {} with a length, {} with a hash", Counted(facts.complete.Count(), "file"),
                    facts.lengths.Count(), facts.hashes.Count() + facts.newHashes.Count()));
}

Finding DeliveryLength(const Run& run, const Limits& /*limits*/) {
    const DeliveryFacts& facts = *run.delivery;
    return FirstOf({{facts.otherLength, Verdict::Fail, "a file of another length"},
                    {facts.notLength, Verdict::Inconclusive, "a length that is not a number of bytes"}},
                   "the announced length", "no other");
}

Finding DeliveryHash(const Run& run, const Limits& /*limits*/) {
    const DeliveryFacts& facts = *run.delivery;
    return FirstOf({{facts.otherHash, Verdict::Fail, "a file with another hash"},
                    {facts.notHash, Verdict::Fail, "a hash that is not of the kind that --hash says"},
                    {facts.unknownHash, Verdict::Inconclusive,
                     "a hash of no kind that its digits tell; --hash may name it"}},
                   "the announced hash", "no other");
}

Finding DeliveryNewHash(const Run& run, const Limits& /*limits*/) {
    return FirstOf({{run.delivery->otherNewHash, Verdict::Fail, "a file with another hash"}},
                   "the new hash that was asked for", "no other");
}

Finding DeliveryHalf(const Run& run, const Limits& /*limits*/) {
    return FirstOf({{run.delivery->half, Verdict::Fail, "what is left of a transfer that failed"}},
                   "nothing of a transfer that failed", "nothing");
}

Finding DeliveryUnasked(const Run& run, const Limits& /*limits*/) {
    const DeliveryFacts& facts = *run.delivery;
    const bool isWhole = run.hasStart && !run.damaged.Any() && !run.misread.Any();
    return FirstOf({{facts.unasked, isWhole ? Verdict::Fail : Verdict::Inconclusive,
                     isWhole ? "a file that nobody asked for"
                             : "a file that nobody asked for, as far as the log is whole and understood"},
                    {facts.undated, Verdict::Inconclusive,
                     "a file that nobody asked for, written at another time than the run's"},
                    {facts.unseen, Verdict::Inconclusive, "a folder that cannot be read"}},
                   "only files that were asked for",
                   facts.leftOut == 0 ? "no other"
                                      : fmt::format("no other but what is older than the run ({})",
                                                    Counted(facts.leftOut, "file")));
}

Finding DeliveryInTime(const Run& run, const Limits& /*limits*/) {
    return FirstOf({{run.delivery->late, Verdict::Inconclusive,
                     "a file written after its FILE_COMPLETE, if the clocks agree and nobody has copied it"}},
                   "each file written before its FILE_COMPLETE", "no other");
}

}  // namespace

const std::vector<Check>& DeliveryChecks() {
    static const std::vector<Check> kChecks = {
        {"delivery.file", "Every file that is reported complete has been delivered.",
         "the file in the folder for each FILE_COMPLETE; only with --delivered", IsExport, DeliveryFile,
         Needs::Delivered},
        {"delivery.length", "A delivered file has the length that was announced.",
         "the file's length against FILE_COMPLETE; only with --delivered", Has<&DeliveryFacts::lengths>,
         DeliveryLength, Needs::Delivered},
        {"delivery.hash", "A delivered file has the hash that was announced.",
         "the file's hash against FILE_COMPLETE; only with --delivered", Has<&DeliveryFacts::hashes>,
         DeliveryHash, Needs::Delivered},
        {"delivery.new-hash", "A recomputed hash is that of the delivered file.",
         "the file's hash against the FILE_COMPLETE that answers the request for a new hash; only with "
         "--delivered",
         Has<&DeliveryFacts::newHashes>, DeliveryNewHash, Needs::Delivered},
        {"delivery.half", "A transfer that failed leaves nothing.",
         "files in the folder whose transfer ended with TRANSPORT_EXCEPTION, or whose names contain theirs; "
         "only with --delivered",
         Has<&DeliveryFacts::failed>, DeliveryHalf, Needs::Delivered},
        {"delivery.unasked", "Only files that were asked for are delivered.",
         "files in the folder that no GET_FILE names, by their times; only with --delivered", IsSeen,
         DeliveryUnasked, Needs::Delivered},
        {"delivery.in-time", "A file is whole when it is reported complete.",
         "the file's time against that of FILE_COMPLETE; only with --delivered", Has<&DeliveryFacts::timed>,
         DeliveryInTime, Needs::Delivered},
    };
    return kChecks;
}

}  // namespace rig::judge
