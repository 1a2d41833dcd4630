#pragma once

#include <poll.h>

#include <optional>

#include "rig/base/Descriptor.h"
#include "rig/proxy/Address.h"
#include "rig/proxy/ProxyLog.h"
#include "rig/proxy/Side.h"

namespace rig::proxy {

/// One connection of the DVR and the one with the harness that belongs to it. What one side sends, and how it
/// ends, it passes to the other as it came, and logs it. Never blocks.
class Link {
 public:
    /// Starts to connect to the harness.
    /// @param dvr      accepted, does not block
    /// @param harness,log  must outlive the link
    Link(unsigned int number, Descriptor dvr, const Address& harness, ProxyLog& log);
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

    /// Ends the connection of a harness that has ended as its system would, once all that it sent is passed
    /// on.
    void EndWithHarness();

    /// Closes both sides, if they are open.
    void EndByProxy();

    bool HasEnded() const { return hasEnded_; }

 private:
    bool MayRead(const Side& side, const Side& other) const;
    pollfd WaitFor(const Side& side, const Side& other) const;
    void FinishConnecting(int error);
    void ReactTo(Side& side, Side& other, short events);
    void Take(Side& side, Side& other);
    void Pass(Side& side, Side& other);
    void NoteEnd(Side& side);
    void NotePartial(const Side& side);
    void EndInOrder();
    void EndByReset(Side& failed, Side& other);
    void Finish();

    unsigned int number_;
    ProxyLog& log_;
    Side dvr_;
    Side harness_;
    bool isConnecting_ = true;
    bool hasEnded_ = false;
    std::optional<Party> first_;  // who ended its direction first
};

}  // namespace rig::proxy
