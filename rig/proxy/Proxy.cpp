#include "rig/proxy/Proxy.h"

#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace rig::proxy {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kListener = 2;  // in what is waited for
constexpr std::size_t kFirstLink = 3;

constexpr int kForEver = -1;
constexpr int kLookAgain = 5;                   // milliseconds, while the harness does not yet listen
constexpr std::chrono::seconds kTimeToPass{5};  // what the harness has left, to a DVR that may not read

[[noreturn]] void FailToListen(const Address& at) {
    const int error = errno;
    throw std::runtime_error(
        fmt::format("--listen: expected to listen at {}, found: {}", at.Words(), std::strerror(error)));
}

Descriptor Bind(const Address& at) {
    Descriptor listener(socket(at.bytes.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    if (!listener.IsOpen() || setsockopt(listener.Number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        bind(listener.Number(), at.Get(), at.size) != 0) {
        FailToListen(at);
    }
    return listener;
}

}  // namespace

Proxy::Proxy(const Address& at, const Address& harness, ProxyLog& log)
    : harness_(harness), log_(log), listener_(Bind(at)) {}

void Proxy::Run(Interrupts& interrupts) {
    if (LeadsTo(harness_, OwnAddress(listener_))) {
        throw std::runtime_error("--harness: expected another place than the proxy's own, found " +
                                 harness_.Words());
    }
    Listen();
    while (!interrupts.Came()) {
        Turn(interrupts.Number(), -1, kForEver);
    }
    End();
}

void Proxy::RunWith(HarnessProcess& process, Interrupts& interrupts) {
    while (!process.HasEnded()) {
        process.Obey(interrupts);
        if (!isListening_ && process.IsListening()) {
            Listen();
        }
        Turn(interrupts.Number(), process.EndDescriptor(), isListening_ ? kForEver : kLookAgain);
    }
    PassRest();
    End();
}

void Proxy::Listen() {
    const Address own = OwnAddress(listener_);
    if (listen(listener_.Number(), SOMAXCONN) != 0) {
        FailToListen(own);
    }
    isListening_ = true;
    log_.Listening(own.Words(), harness_.Words());
}

void Proxy::Turn(int interrupts, int harness, int milliseconds) {
    WaitForSomething(interrupts, harness, milliseconds);
    React();
    RemoveEnded();
}

void Proxy::WaitForSomething(int interrupts, int harness, int milliseconds) {
    const bool takesMore = isListening_ && links_.size() < kMostLinks && !isFull_;
    waited_ = {
        {interrupts, POLLIN, 0}, {harness, POLLIN, 0}, {takesMore ? listener_.Number() : -1, POLLIN, 0}};
    for (const Link& link : links_) {
        const Link::Waits waits = link.WaitsFor();
        waited_.push_back(waits.dvr);
        waited_.push_back(waits.harness);
    }
    if (poll(waited_.data(), waited_.size(), milliseconds) == -1 && errno != EINTR) {
        throw std::runtime_error(std::string("expected to wait for connections, found: ") +
                                 std::strerror(errno));
    }
}

void Proxy::React() {
    std::size_t at = kFirstLink;
    for (Link& link : links_) {
        link.React({waited_[at], waited_[at + 1]});
        at += 2;
    }
    if (waited_[kListener].revents != 0) {
        Accept();
    }
}

void Proxy::RemoveEnded() {
    const std::size_t before = links_.size();
    links_.remove_if([](const Link& link) { return link.HasEnded(); });
    isFull_ = isFull_ && links_.size() == before;
}

/// All that the harness has sent can be read at once; only a DVR that does not read takes time.
void Proxy::PassRest() {
    listener_.Close();
    isListening_ = false;
    const Clock::time_point last = Clock::now() + kTimeToPass;
    while (!links_.empty() && Clock::now() < last) {
        Turn(-1, -1, kLookAgain);
        for (Link& link : links_) {
            link.EndWithHarness();
        }
    }
}

void Proxy::End() {
    listener_.Close();
    for (Link& link : links_) {
        link.EndByProxy();
    }
}

void Proxy::Accept() {
    Descriptor dvr(accept4(listener_.Number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (dvr.IsOpen()) {
        links_.emplace_back(++connections_, std::move(dvr), harness_, log_);
    } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        if (links_.empty()) {
            throw std::runtime_error(std::string("expected to accept a connection, found: ") +
                                     std::strerror(errno));
        }
        isFull_ = true;
    }
}

}  // namespace rig::proxy
