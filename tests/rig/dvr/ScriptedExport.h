#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "rig/dvr/wire/Message.h"
#include "tests/rig/dvr/Backend.h"
#include "tests/support/Program.h"

// A scripted backend and the built program.

/// Runs the DVR against a script. @return what it left
inline ProgramResult PlayDvr(const std::vector<std::string>& options, Backend::Script script,
                             const ProgramSurroundings& surroundings = {}) {
    Backend backend(std::move(script));
    std::vector<std::string> arguments{"dvr", "--port", std::to_string(backend.Port())};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunRig(arguments, surroundings);
}

/// The same in protocol 2.0.
inline ProgramResult PlayDvr20(std::vector<std::string> options, Backend::Script script,
                               const ProgramSurroundings& surroundings = {}) {
    options.insert(options.begin(), {"--protocol", "2"});
    return PlayDvr(options, std::move(script), surroundings);
}

inline std::string RequestOf(BackendConnection& backend, const std::string& request) {
    backend.Send(request);
    return backend.Read();
}

inline std::string RequestOf(BackendConnection& backend, const rig::dvr::Message& request) {
    return RequestOf(backend, request.Text());
}

/// The text of a request for a file in protocol 2.0. @param more  further attributes, with a blank in front
inline std::string GetFile(const std::string& event, const std::string& file, const std::string& more = "") {
    return R"(<msg req="GET_FILE" reid=")" + event + R"(" path=")" + event + R"(" file=")" + file +
           R"(" protocolVersion="2.0")" + more + "/>";
}

/// A request about an event. @param file  empty: about none
inline rig::dvr::Message Request(const char* name, const std::string& event, const std::string& file = "") {
    rig::dvr::Message request(name);
    request.Set("reid", event).Set("protocolVersion", "2.0");
    if (!file.empty()) {
        request.Set("path", event).Set("file", file);
    }
    return request;
}

/// Takes OK and asks for an event, up to the request for its files.
inline void StartEvent(BackendConnection& backend, const std::string& event) {
    backend.Read();
    backend.Send(R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)");
    backend.Read();
    EXPECT_EQ(rig::dvr::Message::Parse(RequestOf(backend, Request("NEXT_EVENT", event))).Name(), "EVENT");
}
