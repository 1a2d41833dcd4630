#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "rig/dvr/replay/EarlierRun.h"

namespace rig::dvr {

/// Assembles what the log of a run says about the requests that the harness sent. The requests become part of
/// the run's last message; each call gets the run.
class RequestBuilder {
 public:
    /// DONE carries this duration, in minutes.
    void SetDuration(const std::string& duration) { duration_ = "duration=" + duration; }

    /// A message of the DVR is complete; what follows answers it.
    /// @param name  of the message, empty if it has none
    void BeginAnswer(const EarlierRun& run, const std::string& name);

    /// Takes a line about a byte of a prefix.
    /// @return what should have been there instead, empty if nothing should
    std::string TakePrefixByte(EarlierRun& run, std::size_t number, const std::string& text);

    /// Takes a line with the text of the request that was sent last.
    static void TakeSentText(EarlierRun& run, const std::string& text);

    /// Takes any other line.
    /// @return what should have been there instead, empty if nothing should
    std::string TakeEvidence(EarlierRun& run, const std::string& text);

    /// @return the line that is missing before the next message; empty if none is
    std::string Missing() const;

 private:
    using RequestId = std::pair<std::size_t, std::size_t>;  // message and request of it

    void BeginRequest(EarlierRun& run, std::size_t number);
    void Confirm(EarlierRun& run, const std::string& subject, bool files);

    std::optional<std::string> duration_;  // of DONE, as its subject
    std::string name_;                     // of the message being answered
    std::string evidence_;                 // of what is sent next
    std::optional<std::string> subject_;   // of what is sent next
    std::string promised_;                 // says that something is sent next; empty once it is
    std::size_t prefixBytes_ = 0;          // of the request being sent; 0: none
    std::vector<RequestId> unconfirmed_;   // whose subject a later line may reveal
};

}  // namespace rig::dvr
