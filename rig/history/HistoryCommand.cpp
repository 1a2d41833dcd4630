#include "rig/history/HistoryCommand.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <utility>

#include "rig/base/Complaint.h"
#include "rig/base/OptionChecks.h"
#include "rig/base/Printable.h"
#include "rig/base/Terminal.h"
#include "rig/base/WriteWhole.h"
#include "rig/history/Reports.h"
#include "rig/log/LogReader.h"

namespace rig::history {
namespace {

constexpr int kNotACampaign = 66;

constexpr const char* kHistoryStatuses =
    "Exit status: 0 done; 64 usage, or a report that cannot be written; 66 a folder that is not a "
    "campaign's:\n"
    "the others are shown.";

struct CampaignsRead {
    std::vector<CampaignDigest> campaigns;
    std::vector<LeftOut> unreadable;
};

/// @return the path without slashes at its end, which would double in what is printed
std::string WithoutSlashes(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    return folder;
}

CampaignsRead ReadCampaigns(const std::vector<std::string>& folders, Texts& texts) {
    CampaignsRead read;
    for (const std::string& given : folders) {
        const std::string folder = WithoutSlashes(given);
        try {
            read.campaigns.push_back(DigestOf(diff::ReadCampaign(folder, diff::Depth::Record), texts));
        } catch (const log::Unreadable& refusal) {
            Complain("history", kNotACampaign, refusal.what());
            read.unreadable.push_back({folder, "its record cannot be read"});
        }
    }
    return read;
}

/// @return a report that would replace what a campaign left; empty if none would
std::string ReportOverEvidence(const HistoryOptions& options) {
    for (const std::string& report : {options.json, options.html}) {
        for (const std::string& folder : options.folders) {
            for (const char* const name : {"/campaign.json", "/index.html"}) {
                std::error_code unknown;
                if (!report.empty() && std::filesystem::equivalent(report, folder + name, unknown)) {
                    return report;
                }
            }
        }
    }
    return "";
}

void WriteFiles(const HistoryOptions& options, const History& history) {
    if (!options.json.empty()) {
        WriteWhole(options.json, HistoryJson(history));
    }
    if (!options.html.empty()) {
        const std::string place = std::filesystem::absolute(options.html).parent_path().string();
        WriteWhole(options.html, HistoryPage(history, place));
    }
}

void Report(const HistoryOptions& options, CampaignsRead read) {
    const std::size_t unreadable = read.unreadable.size();
    const History history =
        HistoryOf(std::move(read.campaigns), options.order == "note" ? Order::Note : Order::Time,
                  std::move(read.unreadable));
    for (std::size_t index = unreadable; index < history.leftOut.size(); ++index) {
        Complain("history", 0,
                 Printable(history.leftOut[index].folder) + ": " + Printable(history.leftOut[index].reason));
    }
    std::cout << HistoryText(history, TerminalColumns(), WantsColour()) << std::flush;
    WriteFiles(options, history);
}

}  // namespace

void AddHistoryCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<HistoryOptions>();
    CLI::App* const history =
        app.add_subcommand("history", "Shows the course of many campaigns, for instance over firmwares");
    history->footer(kHistoryStatuses);
    history->add_option("DIR", options->folders, "Folders of campaigns, in any order")
        ->required()
        ->type_name("DIR");
    history->add_option("--order", options->order, "What comes first: the older one, or the lower --note")
        ->check(OneOf("time", "note"))
        ->type_name("time|note")
        ->capture_default_str();
    TakesPath(*history->add_option("--json", options->json, "Write the result as JSON"), "FILE");
    TakesPath(*history->add_option("--html", options->html, "Write one page with links into the evidence"),
              "FILE");
    history->callback([options, &status] { status = RunHistory(*options); });
}

int RunHistory(const HistoryOptions& options) {
    try {
        if (const std::string report = ReportOverEvidence(options); !report.empty()) {
            return Complain("history", kUsageStatus,
                            Printable(report) + ": expected a file for a report, found a campaign's own");
        }
        Texts texts;
        CampaignsRead read = ReadCampaigns(options.folders, texts);
        const bool isAnyUnreadable = !read.unreadable.empty();
        if (!read.campaigns.empty()) {
            Report(options, std::move(read));
        }
        if (IsOutputLost()) {
            return Complain("history", kUsageStatus, LossOf("report"));
        }
        return isAnyUnreadable ? kNotACampaign : 0;
    } catch (const std::exception& error) {
        return Complain("history", kUsageStatus, error.what());
    }
}

}  // namespace rig::history
