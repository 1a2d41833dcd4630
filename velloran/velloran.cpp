#include <getopt.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>

#include "protocol/Log.h"
#include "protocol/v1_0/VelProtocol_1_0.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

int g_serverFd = -1;  // listens for the whole run
int g_clientFd = -1;  // the connected DVR
int serverFd = -1;
int clientFd = -1;

namespace {

constexpr in_port_t kPort = 5001;
constexpr time_t kWaitBudget = 10000;  // seconds, for all waits of a run together

/// Prints the usage text and ends the process with status 0, also for a rejected command line: rigs start the
/// harness from scripts that stop at any other.
// clang-format off
[[noreturn]] void usage() {
    std::cerr << "\n"
        "Usage: velloran\n"
        "       [-c OR --close num]    Close early after handling num events (to test DONE duration)(num>0)\n"
        "       [-d OR --duration num] Set DONE message duration to num minutes (num>0)\n"
        "       [-p OR --protocol 1|2] Set messaging protocol (default=1) \n"
        "       [-r OR --rehash]       Set rehash=true in all GET_FILE messages (default=false) \n"
        "       [-e OR --event]        Verify INVALID_EVENT message in response to bad event (default=false) \n"
        "       [-f OR --file]         Verify INVALID_EVENT message in response to bad file (default=false) \n"
        "       [-t OR --transport]    Verify TRANSPORT_EXCEPTION message from DVR (default=false) \n"
        "       [-u OR --upgrade]      Upgrade to /mnt/hd/connectionmgr/upgrade.zip\n"
        "       [-x OR --xfer]         Verify XFER_IN_PROGRESS message from DVR (default=false) \n"
        "       [-s OR --sleep]        Sleep (in seconds) incurred on each GET_FILE exchange (to slow down export) \n"
        "       [-z OR --size]         Force header size error of size-10 (help test message parser on DVR) \n"
        "       [-g OR --config]       Send config update only (bogus config, but it tests the protocol) \n"
        << std::endl;
    std::exit(0);
}
// clang-format on

/// Converts an argument as strtol does in base 0, within 32 bits on every target. No text counts as 0.
int ToNumber(const char* text) {
    const long number = text ? strtol(text, nullptr, 0) : 0;
    return static_cast<int>(
        std::clamp<long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

int ToPositiveNumber(const char* text) {
    const int number = ToNumber(text);
    if (number <= 0) {
        usage();
    }
    return number;
}

/// Reads the switches and logs each as it is accepted. Ends the process at the first that it rejects.
TestOptions ParseCommandLine(int argc, char** argv) {
    // "done" is --duration in the usage text, and "sleep" takes no argument although -s does: rigs' scripts
    // know both.
    static const option longOptions[] = {
        {"close", required_argument, nullptr, 'c'},    {"done", required_argument, nullptr, 'd'},
        {"protocol", required_argument, nullptr, 'p'}, {"event", no_argument, nullptr, 'e'},
        {"file", no_argument, nullptr, 'f'},           {"rehash", no_argument, nullptr, 'r'},
        {"transport", no_argument, nullptr, 't'},      {"upgrade", no_argument, nullptr, 'u'},
        {"xfer", no_argument, nullptr, 'x'},           {"sleep", no_argument, nullptr, 's'},
        {"size", no_argument, nullptr, 'z'},           {"config", no_argument, nullptr, 'g'},
        {"help", no_argument, nullptr, 'h'},           {nullptr, 0, nullptr, 0}};
    TestOptions options;
    int longIndex = 0;
    int letter = 0;
    while ((letter = getopt_long(argc, argv, "c:d:s:p:efrtuxzgh?", longOptions, &longIndex)) not_eq -1) {
        switch (letter) {
            case 'c':
                options.closeEarly = ToPositiveNumber(optarg);
                VEL_LOG(32) << "closeEarly set to " << options.closeEarly;
                break;
            case 'd':
                options.doneDuration = ToPositiveNumber(optarg);
                VEL_LOG(32) << "doneDuration set to " << options.doneDuration;
                break;
            case 's':
                options.sleepForGetFile = ToPositiveNumber(optarg);
                VEL_LOG(32) << "sleepForGetFile set to " << options.sleepForGetFile;
                break;
            case 'p':
                options.protocol = ToNumber(optarg);
                if (options.protocol not_eq 1 and options.protocol not_eq 2) {
                    usage();
                }
                VEL_LOG(32) << "'protocol' option set to " << options.protocol;
                break;
            case 'e':
                options.invalidEvent = true;
                VEL_LOG(32) << "'invalidEvent' flag set";
                break;
            case 'f':
                options.invalidFile = true;
                VEL_LOG(32) << "'invalidFile' flag set";
                break;
            case 'r':
                options.rehash = true;
                VEL_LOG(32) << "'rehash' flag set";
                break;
            case 't':
                options.transportException = true;
                VEL_LOG(32) << "'transportException' flag set";
                break;
            case 'u':
                options.upgrade = true;
                VEL_LOG(32) << "'upgrade' flag set";
                break;
            case 'x':
                options.xferInProgress = true;
                VEL_LOG(32) << "'xferInProgress' flag set";
                break;
            case 'z':
                options.sizeError = true;
                VEL_LOG(32) << "'sizeError' flag set";
                break;
            case 'g':
                options.configUpdate = true;
                VEL_LOG(32) << "'configUpdate' flag set";
                break;
            case '?':
            case 'h':
                usage();
        }
    }
    return options;
}

/// SIGINT: shuts both sockets down, which tells the peer, and ends with status 44. By exit, so that a rig's
/// own logger writes what it holds; as it may come in any statement, exit finds nothing here to free.
void handleInterrupt(int) {
    shutdown(g_clientFd, SHUT_RDWR);
    shutdown(g_serverFd, SHUT_RDWR);
    VEL_LOG(1) << "shutting down";
    std::exit(44);
}

void BindServer() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(kPort);
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    if (bind(g_serverFd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == -1) {
        const int error = errno;
        VEL_LOG(1) << "bind failed: " << error;
        VEL_LOG(1) << "bind failed: " << strerror(error);
        std::exit(99);
    }
}

/// Logs the peer, whose address is read from the bytes that accept left in the buffer.
void LogConnection(const sockaddr_un& peer) {
    unsigned char bytes[sizeof peer];
    memcpy(bytes, &peer, sizeof peer);
    VEL_LOG(16) << "Connected to: fam=" << peer.sun_family << "  " << unsigned{bytes[4]} << "."
                << unsigned{bytes[5]} << "." << unsigned{bytes[6]} << "." << unsigned{bytes[7]} << ":"
                << bytes[2] * 256 + bytes[3];
}

VelProtocolBase* NewProtocol(const TestOptions& options) {
    if (options.protocol == 2) {
        return new VelProtocol_2_0(options, g_clientFd);
    }
    return new VelProtocol_1_0(options, g_clientFd);
}

}  // namespace

// The assertions of main are its error report: rigs know them by their text, so it keeps its spacing.
// clang-format off
int main(int argc, char** argv) {
    LogClient::Instance()->ProcessName(std::string("velloran"));
    LogClient::Instance()->Level(127);
    const TestOptions options = ParseCommandLine(argc, argv);
    if (signal(SIGINT, handleInterrupt) == SIG_ERR) {
        VEL_LOG(1) << "Could not install SIGINT handler";
        std::exit(1);
    }

    g_serverFd = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    assert(g_serverFd not_eq -1);
    BindServer();
    assert(listen(g_serverFd, 5) == 0);

    fd_set readFds;
    fd_set exceptionFds;
    FD_ZERO(&readFds);
    FD_ZERO(&exceptionFds);
    FD_SET(g_serverFd, &readFds);
    FD_SET(g_serverFd, &exceptionFds);
    // Filled once: select takes what it slept off it, so this is the budget of all waits together.
    struct timeval time = {kWaitBudget, 0};
    assert(select(g_serverFd+1, &readFds, NULL, &exceptionFds, &time) == 1);
    assert(FD_ISSET(g_serverFd, &readFds));

    sockaddr_un peer = {};
    socklen_t peerLength = sizeof peer;
    g_clientFd = accept(g_serverFd, reinterpret_cast<sockaddr*>(&peer), &peerLength);
    assert(g_clientFd not_eq -1);
    LogConnection(peer);
    // The listening socket stays in the sets as the wait left it: a second DVR that knocks ends the run.
    FD_SET(g_clientFd, &readFds);
    FD_SET(g_clientFd, &exceptionFds);
    VelProtocolBase* const protocol = NewProtocol(options);

    for (;;) {
        // The sum is more than the highest descriptor plus one, and does no harm.
        assert(select(g_serverFd+g_clientFd+1, &readFds, NULL, &exceptionFds, &time) == 1);
        assert(FD_ISSET(g_clientFd, &readFds));
        if (protocol->HandleMessage() == VelProtocolBase::MSG_CLOSE_CLIENT) {
            sleep(1);
            VEL_LOG(16) << "Closing client socket...";
            close(g_clientFd);
            // The next connection gets the descriptor just closed, which the protocol object still holds.
            g_clientFd = accept(g_serverFd, reinterpret_cast<sockaddr*>(&peer), &peerLength);
            assert(g_clientFd not_eq -1);
        }
        FD_ZERO(&readFds);
        FD_ZERO(&exceptionFds);
        FD_SET(g_clientFd, &readFds);
        FD_SET(g_clientFd, &exceptionFds);
        FD_SET(g_serverFd, &readFds);
        FD_SET(g_serverFd, &exceptionFds);
    }
}
// clang-format on
