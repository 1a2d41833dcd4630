#include <gtest/gtest.h>

#include "rig/judge/JudgeCommand.h"
#include "rig/judge/KnownFailures.h"
#include "rig/result/TextReport.h"
#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::judge {
namespace {

using result::Verdict;

constexpr const char* kWithFile =
    "<string>&lt;recording-event reid=\"E1\"&gt;&lt;video&gt;&lt;metadata "
    "name=\"m\"/&gt;&lt;/video&gt;&lt;/recording-event&gt;</string>";
constexpr const char* kWithoutVideo = "<string>&lt;recording-event reid=\"E2\"/&gt;</string>";
constexpr const char* kFound =
    "a description without files, which 1.0 allows: nothing of that event is exported";

constexpr const char* kShown = " (<recording-event reid=\"E2\"/>)";

/// An export in 1.0 of what is described.
std::string ExportOf(const std::string& descriptions) {
    MadeUpLog log(1);
    log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_XML").Ask("<msg req=\"GET_XML\" />");
    log.Dvr("<msg req=\"XML\"><xmlFile>" + descriptions + "</xmlFile></msg>");
    if (descriptions.find(kWithFile) != std::string::npos) {
        log.Ask("<msg req=\"GET_FILE\" path=\"E1\" file=\"m\" />");
        log.Dvr("<msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"m\"/>");
        log.Say("Got FILE_COMPLETE for: reid=E1  file=m").Say("Sending EVENT_XFER_COMPLETE");
        log.Say("HandleMessage: event = 'E1'").Say("HandleMessage: event = 'E2'");
        log.Ask(
            "<msg req=\"EVENT_XFER_COMPLETE\"><events><string>E1</string><string>E2</string></events></msg>");
        log.Say("Sending DONE").Ask("<msg req=\"DONE\" />").After(1).Say("Closing client socket...");
    }
    return log.After(1).Say("shutting down").Text();
}

const std::string kWarned = ExportOf(std::string(kWithFile) + kWithoutVideo);

TEST(Warning, IsGivenForWhatIsLegalAndDecidesNothing) {
    const auto result = Judged(kWarned);
    EXPECT_EQ(With(Verdict::Warning, result.runs.at(0)), "event.files");
    EXPECT_EQ(result::WorstOf(result), Verdict::Warning);
    EXPECT_EQ(result::ExitStatusOf(Verdict::Warning), 0);
}

TEST(Warning, FailsWhereTheUserIsStrict) {
    const auto result = Judged(kWarned, {3, {}, true});
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "event.files");
    for (const auto& check : result.runs.at(0).checks) {
        if (check.id == "event.files") {
            EXPECT_EQ(check.found, std::string(kFound) + kShown);
            EXPECT_EQ(check.expected,
                      "at least one file for each event (else a warning, which --strict makes a failure)");
        }
    }
}

TEST(Warning, DoesNotFollowFromALogWithoutItsStart) {
    const auto result = Judged(kWarned.substr(kWarned.find("GET_XML")), {3, {}, true});
    EXPECT_EQ(With(Verdict::Warning, result.runs.at(0)), "");
}

TEST(EventFiles, FailWhereNothingCanBeExported) {
    EXPECT_EQ(With(Verdict::Fail, Judged(ExportOf(kWithoutVideo)).runs.at(0)), "event.files");
}

TEST(Warning, StandsInTheTextWithItsSentence) {
    const std::string text = result::TextReport(Judged(kWarned + RealLog("clean-1.0")), false);
    EXPECT_NE(text.find("WARNING event.files\n"), std::string::npos);
    EXPECT_NE(text.find(std::string("found:    ") + kFound + kShown + "\n"), std::string::npos) << text;
    EXPECT_NE(text.find("event.files                    W   .\n"), std::string::npos);
    EXPECT_NE(text.find("\nWARNING: 2 runs, "), std::string::npos);
    EXPECT_NE(text.find(" 0 known, 1 warning\n"), std::string::npos);
}

/// @return what KnownTally calls unseen in a run with a warning
std::string Unseen(const KnownFailures& known, bool isStrict, Verdict& verdict) {
    KnownTally tally;
    for (result::RunResult& run : Judged(kWarned + RealLog("clean-1.0"), {3, {}, isStrict}).runs) {
        Apply(known, run);
        tally.Add(run);
        verdict = std::max(verdict, result::WorstOf(run));
    }
    return With(Verdict::Fail, tally.Unseen(known));
}

TEST(Warning, ThatIsKnownStaysOneButForWhoIsStrict) {
    const KnownFailures known = {{"event.files", {kFound}}};
    for (const auto& [isStrict, expected] :
         {std::pair(false, Verdict::Warning), {true, Verdict::KnownFailure}}) {
        Verdict verdict = Verdict::Pass;
        EXPECT_EQ(Unseen(known, isStrict, verdict), "") << "the list need not be fixed";
        EXPECT_EQ(verdict, expected);
    }
}

TEST(Warning, DecidesTheExitStatusOnlyWhereTheUserIsStrict) {
    const TemporaryFolder folder;
    JudgeOptions options;
    options.logs = {folder.Write("log", kWarned)};
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunJudge(options), 0);
    options.strict = true;
    EXPECT_EQ(RunJudge(options), 1);
    testing::internal::GetCapturedStdout();
}

}  // namespace
}  // namespace rig::judge
