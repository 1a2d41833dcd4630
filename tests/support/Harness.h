#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tests/support/Here.h"
#include "tests/support/LogLine.h"
#include "tests/support/Process.h"

/// The harness as a process, and its log.
///
/// The log is read in order: each step takes the line after the one that the step before it took, and waits
/// for it if need be. Every line must be taken by some step; the steps that see the process end check that
/// nothing is left. All steps skip the framing trace (the bytes of each prefix sent, the sizes and slices of
/// each message received) unless they say otherwise.
class Harness {
 public:
    explicit Harness(const std::vector<std::string>& switches = {}, const Launch& launch = {});
    ~Harness();
    Harness(const Harness&) = delete;
    Harness& operator=(const Harness&) = delete;

    /// Waits until it listens on port 5001.
    void Listens(Here here = Here::current());

    /// The next line has this level and text.
    void Logs(unsigned int level, const std::string& text, Here here = Here::current());

    /// The next lines, including the framing trace, are these.
    void LogsInFull(const std::vector<LogLine>& lines, Here here = Here::current());

    /// Takes all lines up to and including this one, including the framing trace.
    void LogsUpTo(unsigned int level, const std::string& text, Here here = Here::current());

    /// Takes the next line, including the framing trace, as the harness wrote it.
    std::string TakesRawLine(Here here = Here::current());

    /// Sends it a signal.
    void GetsSignal(int signal);

    /// It ends by itself, with this status.
    void EndsWithStatus(int status, Here here = Here::current());

    /// It is ended by this signal.
    void EndsBySignal(int signal, Here here = Here::current());

    /// It aborts at a failed assertion, with only the C library's message on standard error.
    void FailsAssertion(const std::string& function, const std::string& expression,
                        Here here = Here::current());

    /// It gets SIGINT, logs "shutting down" next, and ends with status 44.
    void StopsOnInterrupt(Here here = Here::current());

    /// Reads what it logs within this time, so that it need not wait for its reader. Takes no line.
    /// @return whether there was something, and it does not repeat itself forever
    bool LogsMore(std::chrono::milliseconds patience);

    /// Reads on until it ends or logs nothing for so long; then, unless it has ended, it gets SIGINT and
    /// ends.
    void RunsOut(std::chrono::milliseconds quiet, Here here = Here::current());

    /// What it wrote to standard error. Complete only after it has ended.
    const std::string& StandardError() const { return process_.error; }

    const Process& GetProcess() const { return process_; }

 private:
    bool NextLine(bool withFraming, LogLine& line);
    void NextLineIs(bool withFraming, const LogLine& expected, Here here);
    void Ends(Here here);

    Process process_;
};
