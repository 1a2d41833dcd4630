#pragma once

#include <poll.h>

#include <list>
#include <optional>
#include <vector>

#include "rig/base/Descriptor.h"
#include "rig/base/Interrupts.h"
#include "rig/proxy/Address.h"
#include "rig/proxy/HarnessProcess.h"
#include "rig/proxy/Link.h"
#include "rig/proxy/ProxyLog.h"

namespace rig::proxy {

/// More of the DVR's connections at once wait until one has ended.
constexpr std::size_t kMostLinks = 64;

/// Stands between DVR and harness: listens in place of the harness, and makes a link of each connection.
class Proxy {
 public:
    /// Takes the place to listen at. Throws std::runtime_error if that fails.
    /// @param plan  the faults that the DVR is to see
    /// @param log   must outlive this object
    Proxy(const Address& at, const Address& harness, fault::Plan plan, ProxyLog& log);

    /// Listens, and passes on what comes until a signal; then closes all connections. Throws
    /// std::runtime_error if the harness's address leads here, or if the log cannot be written.
    void Run(Interrupts& interrupts);

    /// Listens once the harness does, and passes on what comes until it has ended, and then what it has left.
    /// When a fault has ended a connection, it is interrupted.
    /// @param once  whether it is also interrupted when it has ended a connection after DONE; until then
    /// other
    ///              calls wait
    void RunWith(HarnessProcess& process, Interrupts& interrupts, bool once);

 private:
    void Listen();
    void Turn(int interrupts, int harness);
    void WaitForSomething(int interrupts, int harness);
    void React();
    void Accept();
    void RemoveEnded(bool keepsFaulted);
    bool HasEndedByFault() const;
    bool Any(bool (Link::*fact)() const) const;
    void PassRest();
    void End();

    int TimeToWait() const;
    void RefuseAsTold();
    void AcceptAgain();

    Address harness_;
    fault::Plan plan_;
    ProxyLog& log_;
    Descriptor listener_;
    std::list<Link> links_;
    std::vector<pollfd> waited_;    // the signals, the harness, the listener, two for each link
    unsigned int connections_ = 0;  // so far
    std::optional<Clock::time_point> refusedUntil_;
    std::optional<Clock::time_point> lookAgain_;  // whether the harness listens
    bool isListening_ = false;
    bool once_ = false;    // one export is enough
    bool isFull_ = false;  // no descriptor is left for another
};

}  // namespace rig::proxy
