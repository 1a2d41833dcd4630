#include "tests/support/Harness.h"

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>

#include "tests/support/Sockets.h"
#include "tests/support/Until.h"

namespace {
constexpr std::uint16_t kPort = 5001;
}  // namespace

Harness::Harness(const std::vector<std::string>& switches, const Launch& launch)
    : process_(switches, launch) {}

/// A failed test's report ends with what the harness did.
Harness::~Harness() {
    if (testing::Test::HasFailure()) {
        constexpr std::size_t kEnough = 20000;  // of a log that repeats one line forever
        std::cerr << "-- the harness's log:\n"
                  << process_.output.substr(0, kEnough) << (process_.output.size() > kEnough ? "...\n" : "")
                  << "-- its standard error:\n"
                  << process_.error << "-- its end: " << process_.Ending() << "\n";
    }
}

void Harness::Listens(Here here) {
    Until([this] { return sockets::IsListening(kPort) or not process_.IsRunning(); });
    if (not process_.IsRunning()) {
        process_.Await([] { return false; });
        FailAt(here, "the harness has ended: " + process_.Ending());
    } else if (not sockets::IsListening(kPort)) {
        FailAt(here, "the harness does not listen on port 5001");
    }
}

/// Takes the next line, with or without the framing trace.
/// @return false if none comes
bool Harness::NextLine(bool withFraming, LogLine& line) {
    while (process_.Await([this] { return not process_.lines.empty(); })) {
        line = ParseLogLine(process_.lines.front());
        process_.lines.pop_front();
        if (withFraming or not IsFramingTrace(line)) {
            return true;
        }
    }
    return false;
}

void Harness::NextLineIs(bool withFraming, const LogLine& expected, Here here) {
    LogLine actual;
    if (not NextLine(withFraming, actual)) {
        FailAt(here, "expected the line " + Printed(expected) + ", but none came");
    } else if (not(actual == expected)) {
        FailAt(here, "expected the line " + Printed(expected) + "\nbut the next is    " + Printed(actual));
    }
}

void Harness::Logs(unsigned int level, const std::string& text, Here here) {
    NextLineIs(false, {level, text}, here);
}

void Harness::LogsInFull(const std::vector<LogLine>& lines, Here here) {
    for (const LogLine& expected : lines) {
        NextLineIs(true, expected, here);
    }
}

void Harness::LogsUpTo(unsigned int level, const std::string& text, Here here) {
    const LogLine expected = {level, text};
    LogLine actual;
    while (NextLine(true, actual)) {
        if (actual == expected) {
            return;
        }
    }
    FailAt(here, "the line " + Printed(expected) + " did not come");
}

std::string Harness::TakesRawLine(Here here) {
    if (not process_.Await([this] { return not process_.lines.empty(); })) {
        FailAt(here, "expected a line, but none came");
    }
    std::string line = process_.lines.front();
    process_.lines.pop_front();
    return line;
}

void Harness::GetsSignal(int signal) {
    kill(process_.Id(), signal);
}

void Harness::Ends(Here here) {
    LogLine line;
    if (not process_.Await([this] { return process_.HasEnded(); })) {
        FailAt(here, "the harness does not end");
    } else if (NextLine(false, line)) {
        FailAt(here, "a line more than expected: " + Printed(line));
    }
}

void Harness::EndsWithStatus(int status, Here here) {
    Ends(here);
    if (process_.ExitStatus() not_eq status) {
        FailAt(here,
               "expected exit status " + std::to_string(status) + ", but the end was " + process_.Ending());
    }
}

void Harness::EndsBySignal(int signal, Here here) {
    Ends(here);
    if (process_.EndingSignal() not_eq signal) {
        FailAt(here, "expected signal " + std::to_string(signal) + ", but the end was " + process_.Ending());
    }
}

void Harness::FailsAssertion(const std::string& function, const std::string& expression, Here here) {
    EndsBySignal(SIGABRT, here);
    // "velloran: FILE:LINE: FUNCTION: Assertion `EXPRESSION' failed."
    const std::string rest = ": " + function + ": Assertion `" + expression + "' failed.\n";
    const std::string place = StandardError().substr(0, StandardError().find(rest));
    const std::size_t line = place.rfind(':');
    if (not StartsWith(place, "velloran: ") or line == std::string::npos or
        not IsNumber(place.substr(line + 1)) or StandardError() not_eq place + rest) {
        FailAt(here, "expected the failed assertion \"" + rest + "\"\nbut standard error is    \"" +
                         StandardError() + "\"");
    }
}

void Harness::StopsOnInterrupt(Here here) {
    GetsSignal(SIGINT);
    Logs(1, "shutting down", here);
    EndsWithStatus(44, here);
}

bool Harness::LogsMore(std::chrono::milliseconds patience) {
    constexpr std::size_t kForever = 1 << 20;  // bytes
    const std::size_t size = process_.output.size();
    return size < kForever and process_.Await([&] { return process_.output.size() not_eq size; }, patience);
}

void Harness::RunsOut(std::chrono::milliseconds quiet, Here here) {
    while (LogsMore(quiet)) {
    }
    if (process_.IsRunning()) {
        GetsSignal(SIGINT);
    }
    process_.Await([this] { return process_.HasEnded(); });
    if (not process_.HasEnded()) {
        FailAt(here, "the harness does not end");
    }
}
