#include "rig/proxy/Namespace.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

#include "rig/base/Descriptor.h"

namespace rig::proxy {
namespace {

constexpr const char* kLoopback = "lo";

void Require(bool fact, const std::string& what) {
    if (!fact) {
        throw std::runtime_error(
            fmt::format("--harness-command: expected a network of its own for the harness, found that the "
                        "system refuses it ({}: "
                        "{}); run as root, or start the harness on another machine and give --harness",
                        what, std::strerror(errno)));
    }
}

void WriteOfProcess(const std::string& name, const std::string& text) {
    const std::string path = "/proc/self/" + name;
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    Require(
        file.IsOpen() && write(file.Number(), text.data(), text.size()) == static_cast<ssize_t>(text.size()),
        path);
}

bool TurnOnLoopback() {
    const Descriptor any(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq device = {};
    std::strcpy(device.ifr_name, kLoopback);
    device.ifr_flags = IFF_UP | IFF_RUNNING;
    return any.IsOpen() && ioctl(any.Number(), SIOCSIFFLAGS, &device) == 0;
}

/// In a user namespace the user has all privileges, over that one network alone.
void LeaveNetworkAsUser() {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    Require(unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0, "user and network namespace");
    WriteOfProcess("setgroups", "deny");
    WriteOfProcess("uid_map", fmt::format("{0} {0} 1", user));
    WriteOfProcess("gid_map", fmt::format("{0} {0} 1", group));
    Require(TurnOnLoopback(), "loopback device");
}

/// As `ip route add local 0.0.0.0/0 dev lo`.
void TakeAllAddresses() {
    struct {
        nlmsghdr header;
        rtmsg route;
        rtattr attribute;
        int device;
    } order = {};
    order.header.nlmsg_len = sizeof order;
    order.header.nlmsg_type = RTM_NEWROUTE;
    order.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_ACK | NLM_F_CREATE;
    order.route.rtm_family = AF_INET;
    order.route.rtm_table = RT_TABLE_LOCAL;
    order.route.rtm_protocol = RTPROT_STATIC;
    order.route.rtm_scope = RT_SCOPE_HOST;
    order.route.rtm_type = RTN_LOCAL;
    order.attribute.rta_type = RTA_OIF;
    order.attribute.rta_len = RTA_LENGTH(sizeof order.device);
    order.device = static_cast<int>(if_nametoindex(kLoopback));
    struct {
        nlmsghdr header;
        nlmsgerr error;
    } answer = {};
    const Descriptor kernel(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    Require(kernel.IsOpen() && send(kernel.Number(), &order, sizeof order, 0) == sizeof order &&
                recv(kernel.Number(), &answer, sizeof answer, 0) >= static_cast<ssize_t>(sizeof answer),
            "routes");
    errno = -answer.error.error;
    Require(errno == 0, "local addresses");
}

}  // namespace

void EnterOwnNetwork() {
    const bool isDone = geteuid() == 0 && unshare(CLONE_NEWNET) == 0 && TurnOnLoopback();
    if (!isDone) {
        LeaveNetworkAsUser();
    }
    TakeAllAddresses();
}

bool MayHaveOwnNetwork() {
    const pid_t child = fork();
    if (child == 0) {
        try {
            EnterOwnNetwork();
        } catch (const std::exception&) {
            _exit(1);
        }
        _exit(0);
    }
    int status = -1;
    return child != -1 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace rig::proxy
