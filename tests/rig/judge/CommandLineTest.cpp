#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "rig/judge/JudgeCommand.h"
#include "tests/support/ReadFile.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// What a command line came to.
struct Outcome {
    int status = -1;
    std::string output;
    std::string error;
};

std::string LogNamed(const std::string& name) {
    return std::string(VELLORAN_LOGS) + "/" + name + ".log";
}

class JudgeLine : public testing::Test {
 protected:
    /// The words come after "judge".
    static Outcome Judge(std::vector<std::string> words) {
        words.insert(words.begin(), "judge");
        CLI::App app;
        Outcome outcome;
        rig::judge::AddJudgeCommand(app, outcome.status);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        try {
            app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
        } catch (const CLI::ParseError& error) {
            std::cerr << error.what();
        }
        outcome.output = testing::internal::GetCapturedStdout();
        outcome.error = testing::internal::GetCapturedStderr();
        return outcome;
    }

    std::string In(const std::string& name) const { return (folder_.Path() / name).string(); }

    TemporaryFolder folder_;
};

TEST_F(JudgeLine, IsExplainedByItsHelp) {
    CLI::App app;
    int status = 0;
    rig::judge::AddJudgeCommand(app, status);
    const CLI::App* const judge = app.get_subcommand("judge");
    std::string words =
        judge->get_description() + "\n\n";  // the layout is the library's, and changes with it
    for (const CLI::Option* const option : judge->get_options()) {
        const std::string standard = option->get_default_str();
        words += option->get_name(false, true) + (standard.empty() ? "" : "=" + standard) + ": " +
                 option->get_description() + "\n";
    }
    EXPECT_EQ(words + "\n" + judge->get_footer() + "\n", ReadFile(VELLORAN_JUDGE_HELP));
}

TEST_F(JudgeLine, NamesTheReports) {
    EXPECT_EQ(Judge({LogNamed("clean-1.0"), "--json", In("j"), "--junit", In("u"), "--tap", In("t"), "--html",
                     In("h")})
                  .status,
              0);
    EXPECT_EQ(ReadFile(In("j")).substr(0, 2), "{\n");
    EXPECT_EQ(ReadFile(In("u")).substr(0, 5), "<?xml");
    EXPECT_EQ(ReadFile(In("t")).substr(0, 11), "TAP version");
    EXPECT_EQ(ReadFile(In("h")).substr(0, 9), "<!DOCTYPE");
    EXPECT_NE(ReadFile(In("j")).find("\"text\": \"GET_XML\""), std::string::npos) << "the dialogue is in it";
}

TEST_F(JudgeLine, WritesEachReportWithoutTheOthers) {
    for (const char* const report : {"--json", "--junit", "--tap", "--html"}) {
        EXPECT_EQ(Judge({LogNamed("clean-1.0"), report, In(report)}).status, 0);
        EXPECT_NE(ReadFile(In(report)).find("connection.opened"), std::string::npos) << report;
    }
}

TEST_F(JudgeLine, EndsWithTheNumberOfRuns) {
    const std::string output = Judge({LogNamed("clean-1.0"), LogNamed("d2-missing-source")}).output;
    EXPECT_NE(output.find("\nFAIL: 2 runs, "), std::string::npos) << output;
}

TEST_F(JudgeLine, PrintsTheLastMessageToo) {
    folder_.Write("log", "velloran:1 hdr[0]= 35\n");
    EXPECT_EQ(Judge({In("log"), "--messages"}).output,
              "{\"line\":1,\"sender\":\"harness\",\"announced\":53}\n");
}

TEST_F(JudgeLine, SwitchesWhatIsPrinted) {
    const std::string log = LogNamed("clean-1.0");
    EXPECT_EQ(Judge({log}).output.find("harness GET_XML"), std::string::npos);
    EXPECT_NE(Judge({log, "--timeline"}).output.find("harness GET_XML"), std::string::npos);
    EXPECT_EQ(Judge({log, "--messages"}).output.find("{\"line\":"), 0U);
    EXPECT_EQ(Judge({"--list-checks"}).output.find("log.start\n"), 0U);
    EXPECT_EQ(Judge({"--list-checks", "--format", "markdown"}).output.find("| check |"), 0U);
}

TEST_F(JudgeLine, SetsLimits) {
    EXPECT_EQ(Judge({LogNamed("clean-1.0"), "--max-reaction", "0.001"}).status, 1);
    EXPECT_EQ(Judge({LogNamed("clean-1.0"), "--max-reaction", "86400000"}).status, 0);
    EXPECT_EQ(Judge({LogNamed("d2-no-answer-on-EVENT_XFER_ACK"), "--patience", "0"}).status, 1);
    EXPECT_EQ(Judge({LogNamed("d2-no-answer-on-EVENT_XFER_ACK"), "--patience", "86400"}).status, 2);
    EXPECT_EQ(Judge({LogNamed("d2-missing-source"), "--known", In("known")}).status, 64);
    folder_.Write("known", "event-list.source EVENT_LIST without source\n");
    EXPECT_EQ(Judge({LogNamed("d2-missing-source"), "--known", In("known")}).status, 0);
    EXPECT_EQ(Judge({LogNamed("clean-1.0"), "--delivered", In("")}).status, 1);
}

TEST_F(JudgeLine, SaysWhatIsWrongWithIt) {
    const auto expect = [](const Outcome& outcome, int status, const std::string& error) {
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.error, "velloran-rig judge: " + error + "\n");
    };
    const std::string log = LogNamed("clean-1.0");
    const std::string other = In("other");
    folder_.Write("other", "something else\n");
    expect(Judge({}), 64, "expected a log, found none");
    expect(Judge({"--follow"}), 64, "expected one log to follow");
    expect(Judge({"--follow", log, log}), 64, "expected one log to follow");
    expect(Judge({log, other, "--tap", other}), 64,
           other + ": expected a file for a report, found a log to be judged");
    expect(Judge({log, other}), 66, other + ": expected a log of the harness, found none of its lines");
    expect(Judge({"--messages", log, other}), 66,
           other + ": expected a log of the harness, found none of its lines");
    EXPECT_EQ(Judge({log, "--patience", "-1"}).status, -1);
    EXPECT_EQ(Judge({log, "--follow", "--messages"}).status, -1);
    EXPECT_EQ(Judge({log, "--patience", "86401"}).status, -1);
    EXPECT_EQ(Judge({log, "--max-reaction", "86400001"}).status, -1);
}

TEST_F(JudgeLine, SaysThatWhatItPrintsWasLost) {
    for (const char* what : {"report", "list", "messages"}) {
        rig::judge::JudgeOptions options;
        options.logs = {LogNamed("clean-1.0")};
        options.listChecks = std::string(what) == "list";
        options.messages = std::string(what) == "messages";
        testing::internal::CaptureStderr();
        std::streambuf* const buffer = std::cout.rdbuf(nullptr);
        const int status = RunJudge(options);
        std::cout.rdbuf(buffer);
        EXPECT_EQ(status, 64);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  std::string("velloran-rig judge: expected standard output to take the ") + what +
                      ", found that it did not\n");
    }
}

}  // namespace
