#pragma once

#include <poll.h>

#include <list>
#include <optional>
#include <vector>

#include "rig/base/Descriptor.h"
#include "rig/base/Interrupts.h"
#include "rig/proxy/Address.h"
#include "rig/proxy/Link.h"
#include "rig/proxy/ProxyLog.h"

namespace rig::proxy {

/// More of the DVR's connections at once wait until one has ended.
constexpr std::size_t kMostLinks = 64;

/// Stands between DVR and harness: listens in place of the harness, and makes a link of each connection.
class Proxy {
 public:
    /// Listens at once. Throws std::runtime_error if that fails, or if the harness's address leads here.
    /// @param plan  the faults that the DVR is to see
    /// @param log   must outlive this object
    Proxy(const Address& at, const Address& harness, fault::Plan plan, ProxyLog& log);

    /// Passes on what comes, until a signal or the end of a connection that a fault has brought about; then
    /// closes all connections. Throws std::runtime_error if the log cannot be written.
    /// @param endsByFault  whether such an end of a connection ends the whole: the harness is to be stopped
    /// before the object goes, and with it the harness's connection
    void Run(Interrupts& interrupts, bool endsByFault = false);

 private:
    void WaitForSomething(const Interrupts& interrupts);
    void React();
    void Accept();

    int TimeToWait() const;
    void RefuseAsTold();
    void AcceptAgain();

    Address harness_;
    fault::Plan plan_;
    ProxyLog& log_;
    Descriptor listener_;
    std::list<Link> links_;
    std::vector<pollfd> waited_;    // the signals, the listener, two for each link
    unsigned int connections_ = 0;  // so far
    std::optional<Clock::time_point> refusedUntil_;
    bool isFull_ = false;  // no descriptor is left for another
};

}  // namespace rig::proxy
