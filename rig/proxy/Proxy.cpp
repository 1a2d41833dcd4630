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

constexpr std::size_t kListener = 2;  // in what is waited for
constexpr std::size_t kFirstLink = 3;

constexpr Milliseconds kBetweenLooks{5};   // while the harness does not yet listen
constexpr Milliseconds kTimeToPass{5000};  // what the harness has left, to a DVR that may not read

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

/// A port that the system chose is lost when the socket ceases to listen, one that is named is not.
Descriptor BindByName(const Address& at) {
    const Address own = OwnAddress(Bind(at));
    return Bind(own);
}

}  // namespace

Proxy::Proxy(const Address& at, const Address& harness, fault::Plan plan, ProxyLog& log)
    : harness_(harness), plan_(std::move(plan)), log_(log), listener_(BindByName(at)) {}

void Proxy::Run(Interrupts& interrupts) {
    if (LeadsTo(harness_, OwnAddress(listener_))) {
        throw std::runtime_error("--harness: expected another place than the proxy's own, found " +
                                 harness_.Words());
    }
    Listen();
    while (!interrupts.Came()) {
        Turn(interrupts.Number(), -1);
        RemoveEnded(false);
    }
    End();
}

void Proxy::RunWith(HarnessProcess& process, Interrupts& interrupts, bool once) {
    once_ = once;
    while (!process.HasEnded()) {
        process.Obey(interrupts);
        if (!isListening_ && process.IsListening()) {
            Listen();
        }
        lookAgain_ = isListening_ ? std::nullopt : std::optional(Clock::now() + kBetweenLooks);
        Turn(interrupts.Number(), process.EndDescriptor());
        const bool isEnough = once_ && Any(&Link::HasExported);
        RemoveEnded(true);
        if (isEnough || HasEndedByFault()) {
            listener_.Close();
            process.Interrupt();
        }
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
    for (const fault::Order& order : plan_.Orders()) {
        log_.Planned(order);
    }
}

void Proxy::Turn(int interrupts, int harness) {
    WaitForSomething(interrupts, harness);
    React();
    RefuseAsTold();
    AcceptAgain();
}

void Proxy::WaitForSomething(int interrupts, int harness) {
    const bool takesMore = isListening_ && links_.size() < kMostLinks && !isFull_ && !refusedUntil_ &&
                           !(once_ && Any(&Link::IsDone));
    waited_ = {
        {interrupts, POLLIN, 0}, {harness, POLLIN, 0}, {takesMore ? listener_.Number() : -1, POLLIN, 0}};
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

/// @param keepsFaulted  whether those stay that a fault has ended: the harness must not see that before it is
///                      interrupted
void Proxy::RemoveEnded(bool keepsFaulted) {
    const std::size_t before = links_.size();
    links_.remove_if(
        [=](const Link& link) { return link.HasEnded() && !(keepsFaulted && link.HasEndedByFault()); });
    isFull_ = isFull_ && links_.size() == before;
}

/// @return whether a fault has ended a connection, and all that it does after that is over
bool Proxy::HasEndedByFault() const {
    return !refusedUntil_ && Any(&Link::HasEndedByFault);
}

bool Proxy::Any(bool (Link::*fact)() const) const {
    return std::any_of(links_.begin(), links_.end(), [fact](const Link& link) { return (link.*fact)(); });
}

/// All that the harness has sent can be read at once; only a DVR that does not read takes time.
void Proxy::PassRest() {
    listener_.Close();
    isListening_ = false;
    const Clock::time_point last = Clock::now() + kTimeToPass;
    for (RemoveEnded(false); !links_.empty() && Clock::now() < last; RemoveEnded(false)) {
        lookAgain_ = Clock::now() + kBetweenLooks;
        Turn(-1, -1);
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

/// @return milliseconds, as poll takes them
int Proxy::TimeToWait() const {
    std::optional<Clock::time_point> first = lookAgain_ ? lookAgain_ : refusedUntil_;
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
