#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "rig/base/Child.h"
#include "rig/base/Interrupts.h"
#include "rig/proxy/Address.h"
#include "rig/proxy/Guard.h"
#include "rig/proxy/ProxyLog.h"

namespace rig::proxy {

/// The harness as a child of the proxy, with its standard output and error. It has ended when this object's
/// life has, and even when the proxy is killed.
class HarnessProcess {
 public:
    /// Starts it in the namespaces of this process. Throws std::runtime_error if that fails, or if the log
    /// cannot be written.
    /// @param log  must outlive this object
    HarnessProcess(const std::string& command, ProxyLog& log);
    ~HarnessProcess();
    HarnessProcess(const HarnessProcess&) = delete;
    HarnessProcess& operator=(const HarnessProcess&) = delete;

    /// @return where it listens, as the DVR expects it
    static Address Place();

    /// @return a descriptor that becomes readable when it has ended
    int EndDescriptor() const { return command_.EndDescriptor(); }

    /// @return whether a connection would be taken now
    bool IsListening() const;

    /// Interrupts it, as a signal to the proxy does; once.
    void Interrupt();

    /// Interrupts it when a signal has come, and kills it when another has come a second later or after that:
    /// some who end a process send it more than one.
    void Obey(Interrupts& interrupts);

    /// @return whether it has ended, which the log then says
    bool HasEnded();

    /// @return its status as a shell tells it, once it has ended
    int Status() const;

 private:
    ProxyLog& log_;
    Child command_;
    Guard guard_;
    std::optional<Ending> end_;
    unsigned int obeyed_ = 0;  // signals
    std::optional<std::chrono::steady_clock::time_point> obeyedFirst_;
    bool isInterrupted_ = false;
};

}  // namespace rig::proxy
