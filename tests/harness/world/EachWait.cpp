#include "tests/harness/world/EachWait.h"

void EachWait::Survives(const std::function<void(Wait)>& event) {
    harness.emplace();
    harness->Listens();
    event(Wait::kFirstDvr);
    dvr.emplace();
    harness->Logs(16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    event(Wait::kMessage);
    Opens();
    const std::string frame = Frame(Xml({Description("E1", {"m1"})}));
    dvr->SendsAndSeesRead(frame.substr(0, 1));
    event(Wait::kRestOfPrefix);
    dvr->SendsAndSeesRead(frame.substr(1, 9));
    event(Wait::kRestOfText);
    dvr->SendsBytes(frame.substr(10));
    harness->Logs(32, "Found event E1");
    dvr->Receives(v1::GetFile("E1", "m1"));
    event(Wait::kMessage);
    Completes("E1", "m1");
    ReportsDone({"E1"});
    event(Wait::kPauseBeforeClosing);
    Closes();
    event(Wait::kNextDvr);
    Reconnect();
    Opens();
    Ends();
}
