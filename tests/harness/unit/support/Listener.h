#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/harness/unit/support/Journal.h"

/// The network as main sees it: socket, bind, listen, select, accept, close, shutdown and signal, replaced at
/// link time. Each call takes the next scripted result of its kind; a call without one ends the process with
/// a line that says so. close is the system's own for descriptors other than kSocket that no scripted call
/// has returned.

/// What one select finds.
struct Wait {
    int result = 1;
    std::vector<int> readable = {};
    std::vector<int> exceptional = {};
    long secondsLeft = 10000;  // what it writes back into the time
    int error = 0;
};

/// @name Results to come. -1 with `error` fails.
/// @{
void NextSocketReturns(int descriptor, int error = 0);
void NextBindReturns(int result, int error = 0);
void NextListenReturns(int result, int error = 0);
void NextSelect(const Wait& wait);
/// @param address  of the peer, dotted; `length` receives 16
void NextAcceptReturns(int descriptor, const std::string& address = "10.0.0.5", std::uint16_t port = 50000,
                       int error = 0);
void NextSignalFails();
/// @}

using SignalHandler = void (*)(int);
/// @return the handler that was installed for SIGINT; null if none was
SignalHandler InterruptHandler();

/// Forgets everything that was scripted.
void ResetListener();
/// @return what was scripted but not used, in words; empty if nothing
std::string UnusedListenerScript();

/// @name What the calls leave in the journal. `shutdown` and `close` succeed.
/// @{
Entry SocketCalled(int domain, int type, int protocol);
/// A bind of an IPv4 address whose padding is zero, with length 16.
Entry BindCalled(int descriptor, const std::string& address, std::uint16_t port);
Entry ListenCalled(int descriptor, int backlog);
/// A select without a write set.
Entry SelectCalled(int count, const std::vector<int>& read, const std::vector<int>& exception, long seconds,
                   long microseconds);
Entry AcceptCalled(int descriptor, unsigned int length);
Entry CloseCalled(int descriptor);
Entry ShutdownCalled(int descriptor, int how);
Entry SignalCalled(int number);
/// @}
