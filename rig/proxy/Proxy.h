#pragma once

#include <poll.h>

#include <list>
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
    /// @param log  must outlive this object
    Proxy(const Address& at, const Address& harness, ProxyLog& log);

    /// Passes on what comes, until a signal; then closes all connections. Throws std::runtime_error if the
    /// log cannot be written.
    void Run(Interrupts& interrupts);

 private:
    void WaitForSomething(const Interrupts& interrupts);
    void React();
    void Accept();

    Address harness_;
    ProxyLog& log_;
    Descriptor listener_;
    std::list<Link> links_;
    std::vector<pollfd> waited_;    // the signals, the listener, two for each link
    unsigned int connections_ = 0;  // so far
    bool isFull_ = false;           // no descriptor is left for another
};

}  // namespace rig::proxy
