#pragma once

#include <exception>
#include <stdexcept>
#include <string>

#include "rig/base/Complaint.h"

namespace rig::dvr {

/// How `velloran-rig dvr` ends.
enum class ExitStatus {
    Complete = 0,             // the dialogue ran to its end
    ProtocolBroken = 1,       // the harness broke the protocol or left too early
    NothingCame = 3,          // no connection within --wait, or no message within --timeout
    Unusable = kUsageStatus,  // the command line, or what it names, cannot be used
};

/// The end of a run that went wrong: its exit status, and one line that says what was expected and what was
/// found. Only the command catches it.
class Failure : public std::runtime_error {
 public:
    Failure(ExitStatus status, const std::string& text) : std::runtime_error(text), status_(status) {}
    ExitStatus Status() const { return status_; }

 private:
    ExitStatus status_;
};

/// A signal asks the run to end. Only what waits throws it, and only the command catches it.
class Interrupted : public std::exception {};

/// The harness broke the protocol. The text names what was found, as a phrase ("a length prefix of more than
/// five bytes"); the session, which knows what was expected, turns it into the line.
class Breach : public Failure {
 public:
    explicit Breach(const std::string& text) : Failure(ExitStatus::ProtocolBroken, text) {}
};

}  // namespace rig::dvr
