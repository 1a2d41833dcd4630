#pragma once

#include <sys/types.h>

#include <iosfwd>
#include <string>
#include <vector>

#include "tests/support/Here.h"

/// A syslog daemon as Debian installs it, at the world's /dev/log. It writes everything it gets to one file,
/// each line with its facility and severity. In the world, this object makes /run and /var/log empty disks.
class SyslogDaemon {
 public:
    struct Kind {
        std::string name;                  // for reports
        std::vector<std::string> command;  // runs in the foreground and writes to /var/log/messages
        std::string package;               // that has it
    };

    static Kind Busybox();
    static Kind Rsyslog();

    /// Only prepares; Starts runs it.
    explicit SyslogDaemon(const Kind& kind);
    ~SyslogDaemon();
    SyslogDaemon(const SyslogDaemon&) = delete;
    SyslogDaemon& operator=(const SyslogDaemon&) = delete;

    /// Runs it, and waits until it takes what comes to /dev/log.
    void Starts(Here here = Here::current());

    /// It has written everything that had come to /dev/log before.
    void HasCaughtUp(Here here = Here::current());

    /// What it has written of facility daemon, oldest first: "SEVERITY velloran[PID]: TEXT", severities as in
    /// RFC 5424: err, warning, notice, info, debug.
    std::vector<std::string> Lines() const;

 private:
    Kind kind_;
    pid_t pid_ = -1;
    int marks_ = 0;  // sent by HasCaughtUp so far
};

std::ostream& operator<<(std::ostream& out, const SyslogDaemon::Kind& kind);
