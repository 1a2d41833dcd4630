#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <regex>

#include "rig/diff/DiffCommand.h"
#include "rig/diff/Reports.h"
#include "tests/support/ReadFile.h"
#include "tests/support/TemporaryFolder.h"

using namespace rig::diff;

namespace {

std::string Help() {
    CLI::App app;
    int status = 0;
    AddDiffCommand(app, status);
    return app.get_subcommand("diff")->help();
}

/// @return the JSON with a case a line
std::string JsonInLines(const std::string& text) {
    const auto json = nlohmann::ordered_json::parse(text);
    std::string lines;
    for (const auto& [key, value] : json.items()) {
        lines += key + ": " + (value.is_object() ? value.dump() : "") + "\n";
        for (const auto& one : value.is_array() ? value : nlohmann::ordered_json::array()) {
            lines += "  " + one.dump() + "\n";
        }
    }
    return lines;
}

/// @return what the page shows, a row or a fact a line
std::string PageInLines(const std::string& page) {
    const std::size_t start = page.find("<main");
    const std::string shown = page.substr(start, page.find("</main>") - start);
    return std::regex_replace(shown, std::regex("<(tr|dt)\\b"), "\n$&") + "\n";
}

/// Two made-up campaigns with every kind of difference, in campaigns/.
class Reports : public testing::Test {
 protected:
    static void SetUpTestSuite() { std::filesystem::current_path(VELLORAN_CAMPAIGNS); }

    /// Runs the command. @return its status, then what it printed
    static std::string Run(const std::string& arguments) {
        CLI::App app;
        int status = -1;
        AddDiffCommand(app, status);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        app.parse("diff " + arguments);
        return std::to_string(status) + "\n" + testing::internal::GetCapturedStdout() +
               testing::internal::GetCapturedStderr();
    }

    const Campaign before_ = ReadCampaign("old");
    const Campaign after_ = ReadCampaign("new");
    const Comparison comparison_ = Compare(before_, after_);
};

/// With APPROVE=1 in the environment, what they are now becomes what is approved.
TEST_F(Reports, AreAsApproved) {
    const std::string text = DiffText(comparison_, true, true);
    const std::string all = "== help\n" + Help() + "\n== text\n" +
                            std::regex_replace(text, std::regex("\x1b"), "ESC") + "\n== JSON\n" +
                            JsonInLines(DiffJson(comparison_)) + "\n== page\n" +
                            PageInLines(DiffPage(comparison_, std::filesystem::current_path()));
    if (std::getenv("APPROVE")) {
        std::ofstream("approved.txt") << all;
    }
    EXPECT_EQ(ReadFile("approved.txt"), all);
    const std::regex colourOrSame("\x1b\\[[0-9]*m|same  .*\n");
    EXPECT_EQ(DiffText(comparison_, false, false), std::regex_replace(text, colourOrSame, ""));
}

TEST_F(Reports, AreWrittenWhereAsked) {
    const TemporaryFolder folder;
    const std::string json = folder.Path() / "diff.json";
    const std::string html = folder.Path() / "diff.html";
    EXPECT_EQ(Run("old new --json " + json + " --html " + html), "1\n" + DiffText(comparison_, false, false));
    EXPECT_EQ(ReadFile(json), DiffJson(comparison_));
    EXPECT_EQ(ReadFile(html), DiffPage(comparison_, folder.Path()));
    EXPECT_EQ(Run("--all new new"), "0\n" + DiffText(Compare(after_, after_), true, false));
}

TEST_F(Reports, ThatCannotBeWrittenAreRefused) {
    EXPECT_EQ(Run("new new --json /nowhere/diff.json"),
              "64\n" + DiffText(Compare(after_, after_), false, false) +
                  "velloran-rig diff: /nowhere/diff.json: expected to write a file, found: No such file or "
                  "directory\n");
    std::cout.setstate(std::ios::badbit);
    const std::string lost = Run("new new");
    std::cout.clear();
    EXPECT_EQ(lost,
              "64\nvelloran-rig diff: expected standard output to take the report, found that it did not\n");
}

TEST_F(Reports, OfWhatIsNotACampaignAreRefused) {
    EXPECT_EQ(Run("/nowhere new"),
              "66\nvelloran-rig diff: /nowhere/campaign.json: expected the record of a campaign (format 1), "
              "found No such file or directory\n");
}

}  // namespace
