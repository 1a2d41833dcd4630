#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rig/fault/Fault.h"
#include "rig/judge/wire/WireEvent.h"
#include "rig/judge/wire/WireFacts.h"

namespace rig::judge {

/// A fault while the proxy plays it, and what the DVR answers to what the fault makes up.
class PlayedFault {
 public:
    /// @param facts  must outlive this
    PlayedFault(const WireEvent& begin, const Place& place, int dialect, WireFacts& facts);

    /// @return the harness's message at which the fault acts
    const std::string& At() const { return begin_.message; }

    /// @return whether the DVR may end the connection because of it
    bool IsWrong() const;

    /// @return whether it does not matter what the DVR does, as long as it lives
    bool NeedsOnlySurvival() const;

    void TakeSent(const WireEvent& sent);

    /// Takes a message of the DVR that does not go on to the harness.
    void TakeAnswer(const WireEvent& answer, const Place& place);

    void TakeKeptOpen(const Place& place);

    /// Takes the end of the connection by the DVR.
    void TakeHangUp(const WireEvent& end, const Place& place);

    /// Adds to the facts what has become of the fault.
    /// @param isOver  whether it has been played to its end
    void End(bool isOver);

 private:
    bool HasReport() const;
    bool IsReport(const std::string& message) const;
    bool IsGoodAnswer(const std::string& message) const;
    Tally* Outcome(bool isOver) const;

    WireEvent begin_;
    const fault::Fault* fault_;
    int dialect_;
    WireFacts& facts_;
    KeptLine line_;  // that proves what has become of it
    bool hasSent_ = false;
    std::vector<std::string> requests_;  // that it has made up
    std::uint64_t reports_ = 0;
    std::uint64_t others_ = 0;
    std::string other_;  // the last of the others
    bool hasHungUp_ = false;
};

}  // namespace rig::judge
