#pragma once

#include <poll.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "rig/base/Descriptor.h"
#include "rig/fault/Plan.h"
#include "rig/proxy/Address.h"
#include "rig/proxy/FaultyBackend.h"
#include "rig/proxy/ProxyLog.h"
#include "rig/proxy/Side.h"

namespace rig::proxy {

using fault::Milliseconds;

/// One connection of the DVR and the one with the harness that belongs to it. What one side sends, and how it
/// ends, it passes to the other as it came, and logs it; a plan's faults take the place of what the harness
/// sends. Never blocks.
class Link {
 public:
    /// Starts to connect to the harness, unless a fault acts on the call.
    /// @param dvr      accepted, does not block
    /// @param harness,plan,log  must outlive the link
    Link(unsigned int number, Descriptor dvr, const Address& harness, fault::Plan& plan, ProxyLog& log);
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    /// What the link waits for. A side that it does not wait for has the descriptor -1.
    struct Waits {
        pollfd dvr;
        pollfd harness;
    };
    Waits WaitsFor() const;

    /// Does what can be done now.
    /// @param ready  what WaitsFor has returned, after a poll
    void React(const Waits& ready);

    /// Does what is due by now.
    void Continue();

    /// @return when Continue is to be called; nothing if only what comes decides
    std::optional<Clock::time_point> Due() const;

    /// @return for how long connections are to be refused from now on, once
    Milliseconds TakeRefusal() { return std::exchange(refusal_, Milliseconds(0)); }

    /// @return whether the DVR's connection has ended by a fault, or as a fault allows it. The harness does
    /// not know of it.
    bool HasEndedByFault() const { return hasEndedByFault_; }

    /// Ends the connection of a harness that has ended as its system would, once all that it sent is passed
    /// on.
    void EndWithHarness();

    /// @return whether the harness has said that the export is done
    bool IsDone() const { return isDone_; }

    /// @return whether it has ended its connection after that
    bool HasExported() const { return isDone_ && (hasEnded_ || harness_.hasEnded); }

    /// Closes both sides, if they are open.
    void EndByProxy();

    bool HasEnded() const { return hasEnded_; }

 private:
    void Connect(const Address& harness);
    bool MayRead(const Side& side, const Side& other) const;
    pollfd WaitFor(const Side& side, const Side& other) const;
    void FinishConnecting(int error);
    void ReactTo(Side& side, Side& other, short events);
    void Take(Side& side, Side& other);
    void Pass(Side& side, Side& other);
    bool MayDvrEnd(const Side& side) const;
    void NoteFrame(const Side& side, const FollowedFrame& frame);
    void TakeFromHarness();
    void TakeFromDvr();
    void Do(const fault::Act& act);
    void NoteEnd(Side& side);
    void NotePartial(const Side& side);
    void EndInOrder();
    void EndByReset(Side& failed, Side& other);
    void EndByFault();
    void Finish();

    unsigned int number_;
    ProxyLog& log_;
    Side dvr_;
    Side harness_;
    std::optional<FaultyBackend> backend_;  // nothing: there are no faults
    std::string kept_;                      // of the DVR, until it is known whether it is taken off
    bool mayTake_ = false;                  // the DVR's current message
    bool isLone_ = false;                   // the harness is not to know of the DVR's call
    bool isCut_ = false;                    // the DVR has been closed or reset
    bool hasEndedByFault_ = false;
    bool isDone_ = false;  // the harness has sent DONE
    Milliseconds refusal_{0};
    bool isConnecting_ = true;
    bool hasEnded_ = false;
    std::optional<Party> first_;  // who ended its direction first
};

}  // namespace rig::proxy
