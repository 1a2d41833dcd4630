#include "rig/merge/MergeCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "rig/base/Complaint.h"
#include "rig/base/Counted.h"
#include "rig/base/OptionChecks.h"
#include "rig/base/Printable.h"
#include "rig/campaign/Display.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/log/LogReader.h"
#include "rig/merge/Choice.h"
#include "rig/merge/Folder.h"
#include "rig/merge/Merge.h"

namespace rig::merge {
namespace {

constexpr int kNoPart = 66;
constexpr int kBroken = 128 + SIGINT;

constexpr const char* kMergeStatuses =
    "Exit status: 0 every case passed; 1 a case failed or timed out; 2 a case was inconclusive or did not "
    "run, "
    "or is missing;\n"
    "3 the harness, a hook or the rig failed; 64 usage, or a folder that cannot be written; 66 a folder that "
    "cannot be merged;\n"
    "130 a part was interrupted or killed, and no other has its cases; or the merge was interrupted.";

void CheckOut(const MergeOptions& options) {
    campaign::CheckCampaignFolder(options.out);
    for (const std::string& part : options.parts) {
        if (campaign::IsInside(options.out, part)) {
            throw std::runtime_error(fmt::format("--out: expected a folder outside the parts, found {} in {}",
                                                 Quoted(options.out), Quoted(part)));
        }
    }
}

std::string WordsOf(const std::vector<std::string>& ids) {
    return fmt::format("{}: {}", Counted(ids.size(), "case"),
                       Printable(fmt::format("{}", fmt::join(ids, ", "))));
}

/// Where parts do not agree on a case, the worst of them counts.
void PrintOthers(const Merged& merged) {
    const campaign::CampaignRecord& record = merged.record;
    for (const campaign::OtherRun& other : record.merged->others) {
        const auto one = std::find_if(record.cases.begin(), record.cases.end(),
                                      [&other](const auto& any) { return any.id == other.id; });
        const std::size_t part = *merged.parts[static_cast<std::size_t>(one - record.cases.begin())];
        if (one->outcome != other.outcome) {
            std::cout << fmt::format("{}: {} in {}, which counts, but {} in {}\n", Printable(one->id),
                                     NameOf(one->outcome), Printable(record.merged->parts[part].folder),
                                     NameOf(other.outcome),
                                     Printable(record.merged->parts[other.part - 1].folder));
        }
    }
}

void PrintMerge(const Merged& merged) {
    const campaign::MergeRecord& merge = *merged.record.merged;
    for (const std::string& difference : merge.differences) {
        std::cout << "the parts differ: " << difference << "\n";
    }
    if (!merge.missing.empty()) {
        std::cout << "no part ran " << WordsOf(merge.missing) << "\n";
    }
    if (!merge.doubles.empty()) {
        std::cout << "several parts ran " << WordsOf(merge.doubles) << "\n";
    }
    PrintOthers(merged);
    for (const campaign::PartRecord& part : merge.parts) {
        std::cout << fmt::format("{}: {}{}\n", Printable(part.folder), part.state,
                                 part.shard ? ", " + part.shard->Words() : "");
    }
}

int MergeFolders(const MergeOptions& options) {
    CheckOut(options);
    std::vector<Part> parts;
    std::transform(options.parts.begin(), options.parts.end(), std::back_inserter(parts), ReadPart);
    RefuseTwice(parts);
    const Merged merged = Merge(parts);
    WriteFolder(options.out, merged, parts);
    PrintMerge(merged);
    campaign::Display().End(merged.record, options.out);
    return IsOutputLost() ? Complain("merge", kUsageStatus, LossOf("report"))
                          : ExitStatusOf(merged.record.Whole());
}

}  // namespace

void AddMergeCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<MergeOptions>();
    CLI::App* const merge = app.add_subcommand(
        "merge", "Makes one campaign of several that ran apart, such as those of run --shard");
    merge->footer(kMergeStatuses);
    TakesPath(*merge->add_option("DIR", options->parts, "Folders of the campaigns")->required(), "");
    TakesPath(*merge->add_option("--out", options->out, "Folder for all of it, new or empty")->required(),
              "DIR");
    merge->callback([options, &status] { status = RunMerge(*options); });
}

int RunMerge(const MergeOptions& options) {
    try {
        return MergeFolders(options);
    } catch (const log::Unreadable& part) {
        return Complain("merge", kNoPart, part.what());
    } catch (const Interrupted& signal) {
        return Complain("merge", kBroken, signal.what());
    } catch (const std::exception& error) {
        return Complain("merge", kUsageStatus, error.what());
    }
}

}  // namespace rig::merge
