#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

#include "rig/history/HistoryCommand.h"
#include "rig/history/Reports.h"
#include "tests/rig/history/MadeUpFolders.h"
#include "tests/support/ReadFile.h"

using namespace rig::history;

namespace {

/// What a run of the command left.
struct Ended {
    int status = -1;
    std::string output;
    std::string errors;
};

Ended RunHistoryWith(const std::string& arguments) {
    CLI::App app;
    Ended ended;
    AddHistoryCommand(app, ended.status);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    app.parse("history " + arguments);
    ended.output = testing::internal::GetCapturedStdout();
    ended.errors = testing::internal::GetCapturedStderr();
    return ended;
}

class HistoryCommand : public testing::Test {
 protected:
    HistoryCommand() {
        folders_.Write("new", 2, "1.10", {MadeUpCase("clean-2.0", "FAIL", "late")});
        folders_.Write("old", 1, "1.9", {MadeUpCase("clean-2.0", "PASS")});
    }

    static History Expected(Texts& texts) {
        std::vector<CampaignDigest> digests;
        for (const char* const folder : {"old", "new"}) {
            digests.push_back(DigestOf(rig::diff::ReadCampaign(folder, rig::diff::Depth::Record), texts));
        }
        return HistoryOf(std::move(digests), Order::Time);
    }

    MadeUpFolders folders_;
};

TEST_F(HistoryCommand, PrintsAndWritesWhereAsked) {
    Texts texts;
    const History history = Expected(texts);
    std::filesystem::create_directory("pages");
    const Ended ended = RunHistoryWith("new old --json all.json --html pages/all.html");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, HistoryText(history, 80, false));
    EXPECT_EQ(ended.errors, "");
    EXPECT_EQ(ReadFile("all.json"), HistoryJson(history));
    EXPECT_EQ(ReadFile("pages/all.html"), HistoryPage(history, folders_.Path() + "/pages"));
    EXPECT_NE(ReadFile("pages/all.html").find("href=\"../new/cases/clean-2.0/report.html\""),
              std::string::npos);
}

TEST_F(HistoryCommand, SaysOfWhatIsNotACampaignThatItIsNotAndShowsTheOthers) {
    folders_.WriteFile("cut/campaign.json", "{\"format\": 1, ");
    std::filesystem::create_directory("empty");
    const Ended ended = RunHistoryWith("old empty cut new --html all.html");
    EXPECT_EQ(ended.status, 66);
    EXPECT_EQ(
        ended.errors.substr(0, ended.errors.find("velloran-rig history: cut/")),
        "velloran-rig history: empty/campaign.json: expected the record of a campaign (format 1), found No "
        "such file or directory\n");
    EXPECT_EQ(std::count(ended.errors.begin(), ended.errors.end(), '\n'), 2);
    EXPECT_NE(ended.output.find("2 campaigns: "), std::string::npos);
    EXPECT_NE(ended.output.find("left out: empty: its record cannot be read\n"), std::string::npos);
    EXPECT_NE(ReadFile("all.html").find("<dd>cut: its record cannot be read</dd>"), std::string::npos);
}

TEST_F(HistoryCommand, WritesNothingIfNoFolderIsACampaigns) {
    const Ended ended = RunHistoryWith("/nowhere . --html all.html");
    EXPECT_EQ(ended.status, 66);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(std::count(ended.errors.begin(), ended.errors.end(), '\n'), 2) << ended.errors;
    EXPECT_FALSE(std::filesystem::exists("all.html"));
}

TEST_F(HistoryCommand, SaysInOneLineWhatIsWrongWithAnyName) {
    EXPECT_EQ(
        RunHistoryWith("\"no\nsuch\"").errors,
        "velloran-rig history: no\\nsuch/campaign.json: expected the record of a campaign (format 1), found "
        "No such file or directory\n");
}

TEST_F(HistoryCommand, CountsAFolderThatIsGivenTwiceOnce) {
    std::filesystem::create_symlink("old", "link");
    const Ended ended = RunHistoryWith("old new/ ./new link");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors,
              "velloran-rig history: ./new: given twice, counted once\n"
              "velloran-rig history: link: given twice, counted once\n");
    EXPECT_NE(ended.output.find("2 campaigns: "), std::string::npos);
}

TEST_F(HistoryCommand, RefusesAReportThatCannotBeWritten) {
    const Ended ended = RunHistoryWith("old --html /nowhere/all.html");
    EXPECT_EQ(ended.status, 64);
    EXPECT_EQ(ended.errors,
              "velloran-rig history: /nowhere/all.html: expected to write a file, found: No such file or "
              "directory\n");
}

TEST_F(HistoryCommand, RefusesAReportInPlaceOfACampaignsOwnFile) {
    const std::string before = ReadFile("old/campaign.json");
    const Ended ended = RunHistoryWith("new old --json ./old/campaign.json");
    EXPECT_EQ(ended.status, 64);
    EXPECT_EQ(
        ended.errors,
        "velloran-rig history: ./old/campaign.json: expected a file for a report, found a campaign's own\n");
    EXPECT_EQ(ReadFile("old/campaign.json"), before);
}

TEST_F(HistoryCommand, SaysThatItsOutputWasLost) {
    std::cout.setstate(std::ios::badbit);
    const Ended ended = RunHistoryWith("old");
    std::cout.clear();
    EXPECT_EQ(ended.status, 64);
    EXPECT_EQ(ended.errors,
              "velloran-rig history: expected standard output to take the report, found that it did not\n");
}

TEST_F(HistoryCommand, NamesACampaignThatStillRuns) {
    folders_.Write("now", 3, "1.11", {MadeUpCase("clean-2.0", "RUNNING"), MadeUpCase("event-2.0", "NOT RUN")},
                   {{"state", "running"}, {"shard", nullptr}});
    const Ended ended = RunHistoryWith("old new now");
    EXPECT_EQ(ended.status, 0);
    EXPECT_NE(ended.output.find("\n3, 1.11: still running, or killed\n"), std::string::npos) << ended.output;
    EXPECT_NE(ended.output.find("\nclean-2.0  PFR\nevent-2.0    -\n"), std::string::npos) << ended.output;
    EXPECT_NE(ended.output.find("    last seen in 2, 1.10\n"), std::string::npos) << ended.output;
}

TEST_F(HistoryCommand, ReadsMergedCampaignsAndParts) {
    const std::vector<nlohmann::ordered_json> cases = {MadeUpCase("clean-2.0", "PASS")};
    folders_.Write("part", 3, "1.11", cases, {{"shard", {{"index", 1}, {"total", 2}}}, {"merged", nullptr}});
    folders_.Write("other", 4, "1.11", cases, {{"shard", {{"index", 2}, {"total", 2}}}, {"merged", nullptr}});
    const auto begin = nlohmann::ordered_json::parse(ReadFile("part/campaign.json"))["begin"];
    folders_.Write("merged", 3, "1.11", cases,
                   {{"shard", nullptr},
                    {"seed", nullptr},
                    {"merged", {{"parts", {{{"begin", begin}, {"seed", 3}, {"note", "1.11"}}}}}}});
    const Ended ended = RunHistoryWith("part merged other");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "velloran-rig history: part: a part of merged, counted there\n");
    EXPECT_NE(ended.output.find("\n1, 1.11: merged of 1 part\n2, 1.11: part 2 of 2\n"), std::string::npos)
        << ended.output;
}

}  // namespace
