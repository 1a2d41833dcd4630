#include <gtest/gtest.h>

#include <csignal>

#include "tests/harness/world/Still.h"
#include "tests/support/Dialogue.h"

namespace {

const char* const kReset = "read error: 104:Connection reset by peer";

/// What a reset between two messages leads to: one read error, then reads without pause.
void ReadsOnWithoutRest(Harness& harness, Here here = Here::current()) {
    harness.LogsUpTo(1, kReset, here);
    const auto before = harness.GetProcess().ProcessorTime();
    const auto isBusy = [&] {
        return harness.GetProcess().ProcessorTime() - before >= std::chrono::milliseconds(50);
    };
    if (not Until(isBusy)) {
        FailAt(here, "the harness does not read on");
    }
    harness.StopsOnInterrupt(here);
}

struct Exchange {
    std::string name;  // of the phase that it leads to
    std::string message;
    std::string answer;
};

const std::vector<Exchange> kExport10 = {
    {"AfterGetXml", Ok(), v1::kGetXml},
    {"AfterGetFile", Xml({Description("E1", {"m", "v"})}), v1::GetFile("E1", "m")},
    {"AfterTheLastGetFile", FileComplete("E1", "m"), v1::GetFile("E1", "v")}};

const std::vector<Exchange> kExport20 = {
    {"AfterGetEventList", Ok(), v2::kGetEventList},
    {"AfterNextEvent", EventList({"E1", "E2"}), v2::NextEvent("E1")},
    {"AfterGetFile", Event("E1", Description("E1", {"m", "v"})), v2::GetFile("E1", "m")},
    {"AfterTheLastGetFile", FileComplete("E1", "m"), v2::GetFile("E1", "v")},
    {"AfterEventXferComplete", FileComplete("E1", "v"), v2::EventXferComplete("E1")},
    {"AfterTheNextEvent", EventXferAck("E1"), v2::NextEvent("E2")}};

const std::vector<Exchange> kWholeExport20 = {
    {"", Ok(), v2::kGetEventList},
    {"", EventList({"E1"}), v2::NextEvent("E1")},
    {"", Event("E1", Description("E1", {"m"})), v2::GetFile("E1", "m")},
    {"", FileComplete("E1", "m"), v2::EventXferComplete("E1")},
    {"", EventXferAck("E1"), v2::kDone}};

struct Phase {
    std::string name;
    std::vector<std::string> switches;
    std::vector<Exchange> exchanges;
};

std::ostream& operator<<(std::ostream& out, const Phase& phase) {
    return out << phase.name;
}

/// Each phase of an export: the exchanges that lead to it.
std::vector<Phase> Phases() {
    std::vector<Phase> phases;
    for (const auto& [dialect, exchanges] : {std::pair("1", kExport10), std::pair("2", kExport20)}) {
        for (auto end = exchanges.begin() + 1; end not_eq exchanges.end() + 1; ++end) {
            const std::string name = std::string("Of") + dialect + "0" + (end - 1)->name;
            phases.push_back({name, {"-p", dialect}, {exchanges.begin(), end}});
        }
    }
    phases.push_back({"Of20AfterDone", {"-p", "2"}, kWholeExport20});
    phases.push_back(
        {"Of20AfterUpdateConfiguration", {"-p", "2", "-g"}, {{"", Ok(), v2::kUpdateConfiguration}}});
    phases.push_back(
        {"Of10AfterUpdateConfiguration", {"-p", "1", "-g"}, {{"", Ok(), v1::kUpdateConfiguration}}});
    return phases;
}

class ResetInPhase : public Dialogue, public testing::WithParamInterface<Phase> {};

TEST_P(ResetInPhase, IsLoggedOnceAndReadOn) {
    Connect(GetParam().switches);
    for (const Exchange& exchange : GetParam().exchanges) {
        dvr->Sends(exchange.message);
        dvr->Receives(exchange.answer);
    }
    dvr->Resets();
    ReadsOnWithoutRest(*harness);
}

INSTANTIATE_TEST_SUITE_P(Any, ResetInPhase, testing::ValuesIn(Phases()),
                         [](const auto& row) { return row.param.name; });

using Reset10 = Dialect10;

TEST_F(Reset10, BeforeTheFirstConnectionIsAcceptedIsReadOn) {
    harness.emplace();
    harness->Listens();
    StandsStill(*harness);
    dvr.emplace();
    const std::string port = std::to_string(dvr->Port());
    dvr->Resets();
    harness->GetsSignal(SIGCONT);
    harness->Logs(16, "Connected to: fam=2  127.0.0.1:" + port);
    ReadsOnWithoutRest(*harness);
}

TEST_F(Reset10, InsideAPrefixIsLoggedOnceAndReadOn) {
    Connect();
    Opens();
    dvr->SendsAndSeesRead("\x8f");
    dvr->Resets();
    ReadsOnWithoutRest(*harness);
}

TEST_F(Reset10, DuringThePauseBeforeClosingIsNotNoticed) {
    Connect();
    ExportsE1();
    ReportsDone({"E1"});
    dvr->Resets();
    harness->Logs(16, "Closing client socket...");
    Reconnect();
    Opens();
    Ends();
}

TEST_F(Reset10, BeforeALaterConnectionIsAcceptedIsReadOn) {
    Connect();
    ExportsE1();
    ReportsDone({"E1"});
    ScriptedDvr next;
    next.Resets();
    harness->Logs(16, "Closing client socket...");
    ReadsOnWithoutRest(*harness);
}

using Reset20 = Dialect20;

TEST_F(Reset20, AfterUpdateSoftwareAndTheRequestBehindItIsReadOn) {
    Connect({"-p", "2", "-u"});
    dvr->Sends(Ok());
    dvr->Receives(v2::kUpdateSoftware);
    dvr->Receives(v2::kGetEventList);
    dvr->Resets();
    ReadsOnWithoutRest(*harness);
}

TEST_F(Reset20, DuringThePauseBeforeClosingEarlyIsNotNoticed) {
    Connect({"-p", "2", "-c", "1"});
    for (const Exchange& exchange : kWholeExport20) {
        dvr->Sends(exchange.message);
        dvr->Receives(exchange.answer);
    }
    dvr->Resets();
    harness->LogsUpTo(16, "Closing client socket...");
    Reconnect();
    dvr->Sends(Ok());
    dvr->Receives(v2::kGetEventList);
    harness->LogsUpTo(1, "got an OK, sending GET_EVENT_LIST");
    harness->StopsOnInterrupt();
}

TEST_F(Reset20, DuringThePauseBetweenFilesIsReadOn) {
    Start();
    ReachesFirstFile("E1", {"m", "v", "w"});
    Completes("E1", "m", 2);
    dvr->Receives(v2::GetFile("E1", "v"));
    dvr->Resets();
    ReadsOnWithoutRest(*harness);
}

}  // namespace
