#pragma once

#include <sys/types.h>

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/Until.h"

/// How to start the program, if not in the usual way.
struct Launch {
    std::vector<int> closedDescriptors = {};  // of 0, 1 and 2
    unsigned int descriptorLimit = 0;         // RLIMIT_NOFILE; 0: as it is
    bool interruptIgnored = false;            // as a shell starts a background job
    std::string commandFolder = {};           // searched for commands before the others
    int output = -1;  // standard output, in place of what this object reads; the caller closes it
};

/// The real program as a child process, with its output. It reads /dev/null, has only the standard
/// descriptors, dumps no core, and does not outlive this object or this process.
class Process {
 public:
    Process(const std::vector<std::string>& switches, const Launch& launch);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Reads what the program writes until the fact is true.
    /// @return false if it is not in time, or can no longer be because the program has ended
    bool Await(const std::function<bool()>& fact, std::chrono::milliseconds patience = kPatience);

    /// Whether it has ended and all its output has been read. Becomes true only in Await.
    bool HasEnded() const;

    /// How it ended: these are -1 unless it ended by itself, or by a signal.
    int ExitStatus() const;
    int EndingSignal() const;

    /// The same in words, for reports.
    std::string Ending() const;

    /// Whether it is running now.
    bool IsRunning() const;

    pid_t Id() const { return pid_; }

    /// A copy of one of its descriptors, which the caller closes.
    int Copy(int descriptor) const;

    /// Processor time that it has used.
    std::chrono::milliseconds ProcessorTime() const;

    /// Numbers of its open descriptors, lowest first.
    std::vector<int> Descriptors() const;

    std::deque<std::string>
        lines;           // of standard output, without newlines; the reader takes them from the front
    std::string output;  // whole lines so far, for reports
    std::string error;   // standard error so far

 private:
    struct Stream {
        int fd = -1;
        bool ended = false;
    };

    void Read(Stream& stream, std::string& text);
    void TakeWholeLines();

    pid_t pid_ = -1;
    int pidFd_ = -1;
    int status_ = 0;  // from waitpid, once the process has ended
    bool ended_ = false;
    Stream output_;
    Stream error_;
    std::string rest_;  // of standard output, after the last newline
};
