#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/support/Here.h"

/// A recorder of the harness's own rig, `velloran-rig dvr`, as a process. It is killed if the test leaves it
/// running.
class Dvr {
 public:
    /// @param arguments  after "dvr"
    explicit Dvr(const std::vector<std::string>& arguments);
    ~Dvr();
    Dvr(const Dvr&) = delete;
    Dvr& operator=(const Dvr&) = delete;

    bool IsRunning() const;

    /// Sends it a signal.
    void GetsSignal(int signal) const;

    /// It ends by itself. @return its status
    int Ends(Here here = Here::current());

    /// It ends with this status. If that is not 0, it says why in one line on standard error, which starts
    /// with "velloran-rig dvr: " and this text; if it is 0, it says nothing there.
    void EndsWithStatus(int status, const std::string& why = "", Here here = Here::current());

    /// What it wrote to standard error. Complete only after it has ended.
    std::string StandardError() const;

    /// @return what it printed, line by line, without the times. Complete only after it has ended.
    std::vector<std::string> Transcript() const;

    /// @return the names of the messages that it sent with the mark of this defect, in order
    std::vector<std::string> MarkedWith(const std::string& defect) const;

 private:
    pid_t pid_;
};
