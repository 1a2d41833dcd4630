#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Backend.h"
#include "Program.h"
#include "rig/dvr/Message.h"

// A scripted backend and the built program, in protocol 2.0.

/// Runs the DVR in 2.0 against a script.
inline ProgramResult PlayDvr20(const std::vector<std::string>& options, Backend::Script script,
                               const ProgramSurroundings& surroundings = {}) {
    Backend backend(std::move(script));
    std::vector<std::string> arguments{"dvr", "--protocol", "2", "--port", std::to_string(backend.Port())};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunRig(arguments, surroundings);
}

inline std::string RequestOf(BackendConnection& backend, const rig::Message& request) {
    backend.Send(request.Text());
    return backend.Read();
}

/// A request about an event. @param file  empty: about none
inline rig::Message Request(const char* name, const std::string& event, const std::string& file = "") {
    rig::Message request(name);
    request.Set("reid", event).Set("protocolVersion", "2.0");
    if (!file.empty()) {
        request.Set("path", event).Set("file", file);
    }
    return request;
}

/// Takes OK and asks for an event, up to where its files are requested.
inline void StartEvent(BackendConnection& backend, const std::string& event) {
    backend.Read();
    backend.Send(R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)");
    backend.Read();
    EXPECT_EQ(rig::Message::Parse(RequestOf(backend, Request("NEXT_EVENT", event))).Name(), "EVENT");
}
