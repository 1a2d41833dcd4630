#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <atomic>
#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/Until.h"

/// Has a recorder call a backend with a script for each of its calls, and ends it with SIGTERM after the
/// last.
/// @return what it left
inline ProgramResult PlayRecorder(std::vector<std::string> options, std::vector<Backend::Script> scripts) {
    std::atomic<pid_t> recorder{0};
    Backend::Script last = std::move(scripts.back());
    scripts.back() = [&recorder, last = std::move(last)](BackendConnection& backend) {
        last(backend);
        Until([&recorder] { return recorder != 0; });
        kill(recorder, SIGTERM);
    };
    Backend backend(std::move(scripts));
    options.insert(options.begin(), {"dvr", "--recorder", "--port", std::to_string(backend.Port())});
    ProgramSurroundings surroundings;
    surroundings.started = [&recorder](pid_t process) { recorder = process; };
    return RunRig(options, surroundings);
}

inline const std::string kListRequest = R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)";

/// The name of the next message.
inline std::string NextName(BackendConnection& backend) {
    return rig::dvr::Message::Parse(backend.Read()).Name();
}

/// An export of one synthetic event of one file, up to DONE.
inline void ExportOneEvent(BackendConnection& backend) {
    StartEvent(backend, "EVT-0003");
    backend.Send(GetFile("EVT-0003", "EVT-0003.xml"));
    EXPECT_EQ(NextName(backend), "FILE_COMPLETE");
    backend.Send(Request("EVENT_XFER_COMPLETE", "EVT-0003").Text());
    EXPECT_EQ(NextName(backend), "EVENT_XFER_ACK");
    backend.Send(R"(<msg req="DONE" protocolVersion="2.0"/>)");
    EXPECT_TRUE(backend.IsClosedByPeer());
}
