#include <gtest/gtest.h>

#include "Export.h"
#include "tests/support/Until.h"

// What the judge says of an export when it reads the proxy's log, too.

namespace {

struct WiredRun {
    const char* name;
    const char* dialect;
    const char* switches;
    const char* faults;
    const char* defect;
    std::vector<const char*> passed;  // of the checks that --proxy adds, beyond those that always pass
    const char* failed;               // the only one that fails or is open, others may warn; "" if all pass
};

void PrintTo(const WiredRun& run, std::ostream* out) {
    *out << run.name;
}

class OnTheWire : public testing::TestWithParam<WiredRun> {};

bool IsOfTheWire(const std::string& check) {
    return StartsWith(check, "wire.") or StartsWith(check, "fault.");
}

/// The proxy sees the harness's end of a connection a moment after the DVR has ended.
bool HasEndedAll(const RunningProxy& proxy) {
    std::size_t begun = 0;
    std::size_t ended = 0;
    for (const std::string& line : proxy.Log()) {
        const auto is = [&line](const char* event) { return line.find(event) not_eq std::string::npos; };
        begun += is(R"("event":"connect")") ? 1U : 0U;
        ended += is(R"("event":"close")") or is(R"("event":"reset")") or is(R"("event":"refused")") ? 1U : 0U;
    }
    return begun == ended;
}

TEST_P(OnTheWire, AnExportIsJudged) {
    const WiredRun& run = GetParam();
    const Export played({"", run.dialect, run.defect, run.switches, kThroughProxy, run.faults});
    EXPECT_TRUE(Until([&] { return HasEndedAll(played.GetProxy()); })) << played.GetProxy().LogText();
    const Judged judged = played.Judge(WithProxy::Yes);
    for (const char* check : {"wire.log", "wire.order", "wire.after-done"}) {
        EXPECT_EQ(1U, judged.passed.count(check)) << check;
    }
    for (const char* check : run.passed) {
        EXPECT_EQ(1U, judged.passed.count(check)) << check;
    }
    for (const auto& [check, found] : judged.found) {
        const bool isWarning = *run.failed not_eq '\0' and check.back() == '!';
        EXPECT_TRUE(not IsOfTheWire(check) or check == run.failed or isWarning) << check << ": " << found;
    }
    EXPECT_TRUE(*run.failed == '\0' or judged.found.count(run.failed) == 1) << run.failed;
}

INSTANTIATE_TEST_SUITE_P(
    Export, OnTheWire,
    testing::Values(WiredRun{"Good_1", "1", "", "", "", {"wire.calls", "wire.closed", "wire.prefix"}, ""},
                    WiredRun{"Good_2", "2", "-c 1", "", "", {"wire.calls", "wire.closed", "wire.prefix"}, ""},
                    WiredRun{"Legal",
                             "2",
                             "-c 1",
                             "--fault latency=300 --on GET_FILE --fault together-with-update",
                             "",
                             {"fault.acted", "fault.answer"},
                             ""},
                    WiredRun{"Refused",
                             "2",
                             "-c 1",
                             "--fault event-name=dot-dot --on GET_FILE",
                             "",
                             {"fault.acted", "fault.answer"},
                             ""},
                    WiredRun{
                        "NeverActed", "1", "", "--fault split --on GET_FILE:1000", "", {}, "fault.acted?"},
                    WiredRun{"TwoCalls", "2", "", "", "second-connection", {}, "wire.calls"}),
    [](const auto& run) { return std::string(run.param.name); });

}  // namespace
