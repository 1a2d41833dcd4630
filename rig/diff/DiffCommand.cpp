#include "rig/diff/DiffCommand.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>

#include "rig/base/Complaint.h"
#include "rig/base/OptionChecks.h"
#include "rig/base/Terminal.h"
#include "rig/base/WriteWhole.h"
#include "rig/diff/Compare.h"
#include "rig/diff/Reports.h"
#include "rig/log/LogReader.h"

namespace rig::diff {
namespace {

constexpr int kGotWorse = 1;
constexpr int kNoCampaign = 66;

constexpr const char* kDiffStatuses =
    "Exit status: 0 nothing got worse; 1 something did; 64 usage, or a report that cannot be written;\n"
    "66 a folder that is not a campaign's.";

void WriteReports(const DiffOptions& options, const Comparison& comparison) {
    if (!options.json.empty()) {
        WriteWhole(options.json, DiffJson(comparison));
    }
    if (!options.html.empty()) {
        const std::string place = std::filesystem::absolute(options.html).parent_path().string();
        WriteWhole(options.html, DiffPage(comparison, place));
    }
}

}  // namespace

void AddDiffCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<DiffOptions>();
    CLI::App* const diff =
        app.add_subcommand("diff", "Says what changed between two campaigns, for instance of two firmwares");
    diff->footer(kDiffStatuses);
    diff->add_option("BEFORE", options->before, "Folder of a campaign")->required()->type_name("DIR");
    diff->add_option("NOW", options->after, "Folder of a later one")->required()->type_name("DIR");
    diff->add_flag("--all", options->all, "Also name the cases that are the same");
    TakesPath(*diff->add_option("--json", options->json, "Write the result as JSON"), "FILE");
    TakesPath(*diff->add_option("--html", options->html, "Write one page with links into the evidence"),
              "FILE");
    diff->callback([options, &status] { status = RunDiff(*options); });
}

int RunDiff(const DiffOptions& options) {
    try {
        const Campaign before = ReadCampaign(options.before);
        const Campaign after = ReadCampaign(options.after);
        const Comparison comparison = Compare(before, after);
        std::cout << DiffText(comparison, options.all, WantsColour()) << std::flush;
        WriteReports(options, comparison);
        if (IsOutputLost()) {
            return Complain("diff", kUsageStatus, LossOf("report"));
        }
        return comparison.Count(Change::Worse) > 0 ? kGotWorse : 0;
    } catch (const log::Unreadable& folder) {
        return Complain("diff", kNoCampaign, folder.what());
    } catch (const std::exception& error) {
        return Complain("diff", kUsageStatus, error.what());
    }
}

}  // namespace rig::diff
