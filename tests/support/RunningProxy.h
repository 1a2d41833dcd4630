#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/support/Here.h"
#include "tests/support/TemporaryFolder.h"

/// `velloran-rig proxy` as a process, on this machine alone. It is killed if the test leaves it running.
class RunningProxy {
 public:
    /// Waits until it listens.
    /// @param listen   its port; 0: any
    /// @param options  more of its command line: faults
    explicit RunningProxy(int harness, int listen = 0, const std::vector<std::string>& options = {},
                          Here here = Here::current());

    /// Starts the harness by this command, and does not wait. It listens at port 5001.
    explicit RunningProxy(const std::string& command);
    ~RunningProxy();
    RunningProxy(const RunningProxy&) = delete;
    RunningProxy& operator=(const RunningProxy&) = delete;

    /// Where it listens.
    int Port() const { return port_; }

    pid_t Id() const { return pid_; }

    /// Its log so far.
    std::string LogText() const;

    /// The whole lines of it.
    std::vector<std::string> Log() const;

    /// It does nothing until it goes on, and finds then what has come meanwhile.
    void Pauses() const;
    void GoesOn() const;

    /// It gets a signal.
    void Gets(int signal) const;

    /// It gets a signal, unless that is 0, and ends by itself. @return its status
    int Ends(int signal, Here here = Here::current());

    /// What it wrote to standard error.
    std::string Errors() const;

    /// What its harness wrote to standard output.
    std::string Output() const;

 private:
    void Start(const std::vector<std::string>& arguments);

    TemporaryFolder folder_;
    pid_t pid_ = -1;
    int port_ = 0;
};
