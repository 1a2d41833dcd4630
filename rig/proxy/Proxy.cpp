#include "rig/proxy/Proxy.h"

#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace rig::proxy {
namespace {

constexpr std::size_t kListener = 1;  // in what is waited for
constexpr std::size_t kFirstLink = 2;

[[noreturn]] void FailToListen(const Address& at) {
    const int error = errno;
    throw std::runtime_error(
        fmt::format("--listen: expected to listen at {}, found: {}", at.Words(), std::strerror(error)));
}

Descriptor Listen(const Address& at) {
    Descriptor listener(socket(at.bytes.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    if (!listener.IsOpen() || setsockopt(listener.Number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        bind(listener.Number(), at.Get(), at.size) != 0 || listen(listener.Number(), SOMAXCONN) != 0) {
        FailToListen(at);
    }
    return listener;
}

}  // namespace

Proxy::Proxy(const Address& at, const Address& harness, fault::Plan plan, ProxyLog& log)
    : harness_(harness), plan_(std::move(plan)), log_(log), listener_(Listen(at)) {
    const Address own = OwnAddress(listener_);
    if (LeadsTo(harness_, own)) {
        throw std::runtime_error("--harness: expected another place than the proxy's own, found " +
                                 harness_.Words());
    }
    log_.Listening(own.Words(), harness_.Words());
}

void Proxy::Run(Interrupts& interrupts, bool endsByFault) {
    bool hasEnded = false;
    while (!interrupts.Came() && !(hasEnded && !refusedUntil_)) {
        WaitForSomething(interrupts);
        React();
        RefuseAsTold();
        AcceptAgain();
        hasEnded =
            hasEnded || (endsByFault && std::any_of(links_.begin(), links_.end(),
                                                    [](const Link& link) { return link.HasEndedByFault(); }));
        const std::size_t before = links_.size();
        links_.remove_if(
            [=](const Link& link) { return link.HasEnded() && !(endsByFault && link.HasEndedByFault()); });
        isFull_ = isFull_ && links_.size() == before;
    }
    listener_.Close();
    for (Link& link : links_) {
        link.EndByProxy();
    }
}

void Proxy::WaitForSomething(const Interrupts& interrupts) {
    const bool takesMore = links_.size() < kMostLinks && !isFull_ && !refusedUntil_;
    waited_ = {{interrupts.Number(), POLLIN, 0}, {takesMore ? listener_.Number() : -1, POLLIN, 0}};
    for (const Link& link : links_) {
        const Link::Waits waits = link.WaitsFor();
        waited_.push_back(waits.dvr);
        waited_.push_back(waits.harness);
    }
    if (poll(waited_.data(), waited_.size(), TimeToWait()) == -1 && errno != EINTR) {
        throw std::runtime_error(std::string("expected to wait for connections, found: ") +
                                 std::strerror(errno));
    }
}

void Proxy::React() {
    std::size_t at = kFirstLink;
    for (Link& link : links_) {
        link.React({waited_[at], waited_[at + 1]});
        at += 2;
        link.Continue();
    }
    if (waited_[kListener].revents != 0) {
        Accept();
    }
}

/// @return milliseconds, as poll takes them
int Proxy::TimeToWait() const {
    std::optional<Clock::time_point> first = refusedUntil_;
    for (const Link& link : links_) {
        if (const auto due = link.Due()) {
            first = std::min(first.value_or(*due), *due);
        }
    }
    if (!first) {
        return -1;
    }
    const auto left = std::chrono::ceil<Milliseconds>(*first - Clock::now());
    return static_cast<int>(std::max(left, Milliseconds(0)).count());
}

/// A socket that listens no more keeps its port, and can listen again.
void Proxy::RefuseAsTold() {
    for (Link& link : links_) {
        const Milliseconds time = link.TakeRefusal();
        if (time.count() > 0) {
            shutdown(listener_.Number(), SHUT_RD);
            refusedUntil_ = Clock::now() + time;
        }
    }
}

void Proxy::AcceptAgain() {
    if (refusedUntil_ && Clock::now() >= *refusedUntil_) {
        refusedUntil_.reset();
        listen(listener_.Number(), SOMAXCONN);
    }
}

void Proxy::Accept() {
    Descriptor dvr(accept4(listener_.Number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (dvr.IsOpen()) {
        links_.emplace_back(++connections_, std::move(dvr), harness_, plan_, log_);
    } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        if (links_.empty()) {
            throw std::runtime_error(std::string("expected to accept a connection, found: ") +
                                     std::strerror(errno));
        }
        isFull_ = true;
    }
}

}  // namespace rig::proxy
