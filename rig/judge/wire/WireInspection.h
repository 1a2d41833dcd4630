#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "rig/judge/wire/WireConnection.h"

namespace rig::judge {

/// Holds what velloran-rig proxy has logged against the runs.
class WireInspection {
 public:
    /// @param file      the proxy's log
    /// @param patience  see WireConnection
    /// @param wantsSteps  whether the runs' dialogues are to have its faults
    WireInspection(std::string file, double patience, bool wantsSteps)
        : file_(std::move(file)), patience_(patience), wantsSteps_(wantsSteps) {}

    /// Gives each run its facts. Throws log::Unreadable if the log cannot be read, or is not the proxy's.
    /// @param runs  all that the harness's logs tell of, in their order
    void LookFor(std::vector<Run>& runs);

 private:
    struct Planned {
        WireEvent event;
        KeptLine line;
        bool hasActed = false;
    };

    struct Open {
        std::size_t run;
        WireConnection connection;
    };

    /// A call that came while an earlier connection seemed open: that the DVR has ended it may be seen a
    /// moment later.
    struct Overlap {
        std::uint64_t earlier;  // connection
        std::size_t run;
        std::int64_t time;
        KeptLine line;
    };

    void Take(const WireEvent& event, Place place, const std::vector<Run>& runs);
    bool Follow(const WireEvent& event, const Place& place, Open& open);
    void TakeCall(const WireEvent& event, const Place& place, const std::vector<Run>& runs);
    void TakeActed(const WireEvent& event, std::size_t run);
    void EndOverlaps(std::uint64_t connection, std::int64_t time, bool isByDvr);
    void Finish(bool isCut);

    std::string file_;
    double patience_;
    bool wantsSteps_;
    std::vector<std::shared_ptr<WireFacts>> facts_;  // by run
    std::map<std::uint64_t, Open> open_;             // by connection
    std::vector<Overlap> overlaps_;
    std::vector<Planned> planned_;
    std::int64_t last_ = 0;  // event
};

/// Puts the faults into the dialogue where they acted.
void AddFaults(const WireFacts& facts, std::vector<result::Step>& steps);

}  // namespace rig::judge
