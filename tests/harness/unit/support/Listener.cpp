#include "tests/harness/unit/support/Listener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <set>

#include "tests/harness/unit/support/Socket.h"

namespace {

struct Result {
    int value;
    int error;
};

struct Acceptance {
    Result result;
    std::string address;
    std::uint16_t port;
};

struct Script {
    std::map<std::string, std::deque<Result>> results;  // by the function's name
    std::deque<Wait> waits;
    std::deque<Acceptance> acceptances;
    std::set<int> descriptors;  // that scripted calls have returned
    bool signalFails = false;
    SignalHandler interruptHandler = nullptr;
};

Script& TheScript() {
    static Script script;
    return script;
}

/// Some of these calls must not throw, so the process ends.
template <typename T>
T Next(std::deque<T>& results, const std::string& call) {
    if (results.empty()) {
        fprintf(stderr, "%s: nothing is scripted\n", call.c_str());
        std::abort();
    }
    const T result = results.front();
    results.pop_front();
    return result;
}

int Return(const Result& result) {
    if (result.value == -1) {
        errno = result.error;
    }
    return result.value;
}

int NextResult(const std::string& function) {
    return Return(Next(TheScript().results[function], function));
}

std::string Listed(const std::vector<int>& descriptors) {
    std::string list = "{";
    for (const int descriptor : descriptors) {
        list += " " + std::to_string(descriptor);
    }
    return list + " }";
}

std::vector<int> Members(const fd_set* set) {
    std::vector<int> members;
    for (int descriptor = 0; set and descriptor < FD_SETSIZE; ++descriptor) {
        if (FD_ISSET(descriptor, set)) {
            members.push_back(descriptor);
        }
    }
    return members;
}

void Fill(fd_set* set, const std::vector<int>& descriptors) {
    FD_ZERO(set);
    for (const int descriptor : descriptors) {
        FD_SET(descriptor, set);
    }
}

std::string Bound(int descriptor, const std::string& address, std::uint16_t port) {
    return "bind " + std::to_string(descriptor) + " " + address + ":" + std::to_string(port);
}

}  // namespace

void NextSocketReturns(int descriptor, int error) {
    TheScript().results["socket"].push_back({descriptor, error});
    TheScript().descriptors.insert(descriptor);
}

void NextBindReturns(int result, int error) {
    TheScript().results["bind"].push_back({result, error});
}

void NextListenReturns(int result, int error) {
    TheScript().results["listen"].push_back({result, error});
}

void NextSelect(const Wait& wait) {
    TheScript().waits.push_back(wait);
}

void NextAcceptReturns(int descriptor, const std::string& address, std::uint16_t port, int error) {
    TheScript().acceptances.push_back({{descriptor, error}, address, port});
    TheScript().descriptors.insert(descriptor);
}

void NextSignalFails() {
    TheScript().signalFails = true;
}

SignalHandler InterruptHandler() {
    return TheScript().interruptHandler;
}

void ResetListener() {
    TheScript() = Script();
}

std::string UnusedListenerScript() {
    const Script& script = TheScript();
    std::string unused;
    for (const auto& [function, results] : script.results) {
        if (not results.empty()) {
            unused += function + " ";
        }
    }
    unused += script.waits.empty() ? "" : "select ";
    unused += script.acceptances.empty() ? "" : "accept ";
    return unused;
}

Entry SocketCalled(int domain, int type, int protocol) {
    return {"socket " + std::to_string(domain) + " " + std::to_string(type) + " " + std::to_string(protocol)};
}

Entry BindCalled(int descriptor, const std::string& address, std::uint16_t port) {
    return {Bound(descriptor, address, port)};
}

Entry ListenCalled(int descriptor, int backlog) {
    return {"listen " + std::to_string(descriptor) + " " + std::to_string(backlog)};
}

Entry SelectCalled(int count, const std::vector<int>& read, const std::vector<int>& exception, long seconds,
                   long microseconds) {
    return {"select " + std::to_string(count) + " read" + Listed(read) + " exception" + Listed(exception) +
            " time " + std::to_string(seconds) + "s " + std::to_string(microseconds) + "us"};
}

Entry AcceptCalled(int descriptor, unsigned int length) {
    return {"accept " + std::to_string(descriptor) + " length " + std::to_string(length)};
}

Entry CloseCalled(int descriptor) {
    return {"close " + std::to_string(descriptor)};
}

Entry ShutdownCalled(int descriptor, int how) {
    return {"shutdown " + std::to_string(descriptor) + " " + std::to_string(how)};
}

Entry SignalCalled(int number) {
    return {"signal " + std::to_string(number)};
}

extern "C" {

int WrappedSelect(int count, fd_set* read, fd_set* write, fd_set* exception,
                  timeval* time) __asm__("__wrap_" SELECT);
int __real_close(int descriptor);
SignalHandler __real_signal(int number, SignalHandler handler);

int __wrap_socket(int domain, int type, int protocol) {
    AddToJournal(SocketCalled(domain, type, protocol).text);
    return NextResult("socket");
}

int __wrap_bind(int descriptor, const sockaddr* address, socklen_t length) {
    sockaddr_in in = {};
    memcpy(&in, address, std::min<std::size_t>(length, sizeof in));
    const char none[sizeof in.sin_zero] = {};
    std::string line = Bound(descriptor, inet_ntoa(in.sin_addr), ntohs(in.sin_port));
    if (in.sin_family not_eq AF_INET or length not_eq sizeof in or
        memcmp(in.sin_zero, none, sizeof none) not_eq 0) {
        line += " (not an IPv4 address of 16 bytes with zero padding)";
    }
    AddToJournal(line);
    return NextResult("bind");
}

int __wrap_listen(int descriptor, int backlog) {
    AddToJournal(ListenCalled(descriptor, backlog).text);
    return NextResult("listen");
}

int WrappedSelect(int count, fd_set* read, fd_set* write, fd_set* exception, timeval* time) {
    std::string line =
        SelectCalled(count, Members(read), Members(exception), time->tv_sec, time->tv_usec).text;
    AddToJournal(line + (write ? " with a write set" : ""));
    const Wait wait = Next(TheScript().waits, "select");
    Fill(read, wait.readable);
    Fill(exception, wait.exceptional);
    time->tv_sec = wait.secondsLeft;
    return Return({wait.result, wait.error});
}

int __wrap_accept(int descriptor, sockaddr* address, socklen_t* length) {
    AddToJournal(AcceptCalled(descriptor, *length).text);
    const Acceptance acceptance = Next(TheScript().acceptances, "accept");
    if (acceptance.result.value not_eq -1) {
        sockaddr_in peer = {};
        peer.sin_family = AF_INET;
        peer.sin_port = htons(acceptance.port);
        inet_aton(acceptance.address.c_str(), &peer.sin_addr);
        memcpy(address, &peer, std::min<std::size_t>(*length, sizeof peer));
        *length = sizeof peer;
    }
    return Return(acceptance.result);
}

int __wrap_close(int descriptor) {
    if (descriptor not_eq kSocket and TheScript().descriptors.count(descriptor) == 0) {
        return __real_close(descriptor);
    }
    AddToJournal(CloseCalled(descriptor).text);
    return 0;
}

int __wrap_shutdown(int descriptor, int how) {
    AddToJournal(ShutdownCalled(descriptor, how).text);
    return 0;
}

SignalHandler __wrap_signal(int number, SignalHandler handler) {
    if (number not_eq SIGINT) {
        return __real_signal(number, handler);
    }
    AddToJournal(SignalCalled(number).text);
    if (TheScript().signalFails) {
        return SIG_ERR;
    }
    TheScript().interruptHandler = handler;
    return SIG_DFL;
}
}
