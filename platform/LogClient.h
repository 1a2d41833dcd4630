#pragma once

#include <cstddef>
#include <string>

/// The process's link to the platform log: the name and the level mask that log statements ask for, and the
/// two places that a finished line goes to, standard output and the local syslog.
///
/// Lives from the first Instance() to the end of the process and is never destroyed, so that a signal handler
/// can log at any moment. Not for use from several threads.
class LogClient {
 public:
    /// The one client. The first call opens what logging needs (see the constructor), so a process calls it
    /// before it opens any descriptor of its own.
    static LogClient* Instance();

    /// Sets and gets the name that stands in every line. Empty until set.
    void ProcessName(const std::string& name);
    const std::string& ProcessName() const;

    /// Sets and gets the mask of enabled levels: the sum of single bits, 1 to 64. 0, all off, until set. The
    /// mask is the log statement's to heed: what reaches Write is written.
    void Level(unsigned int mask);
    unsigned int Level() const;

    /// Writes one finished line.
    /// @param line    `size` bytes, the newline included; they go to standard output with a single write.
    /// @param text    where the text starts in `line`; from there to the newline it goes to syslog.
    /// @param level   the line's level bit, which becomes the severity.
    ///
    /// Allocates nothing and leaves errno alone. A line that standard output does not take is lost there,
    /// also when the reader of a pipe is gone; syslog gets it all the same. A syslog daemon that is missing
    /// or does not keep up loses the line and delays nothing.
    void Write(const char* line, std::size_t size, std::size_t text, unsigned int level,
               const std::string& processName) const;

 private:
    LogClient();
    void WriteToSyslog(const char* text, std::size_t size, unsigned int level,
                       const std::string& processName) const;

    std::string name_;
    unsigned int mask_ = 0;
    bool outputIsPipe_ = false;
    int syslogFd_ = -1;
    int pid_;
};
