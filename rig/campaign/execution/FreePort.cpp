#include "rig/campaign/execution/FreePort.h"

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "rig/base/Descriptor.h"

namespace rig::campaign {
namespace {

sockaddr_in AddressOf(const Socket::End& end) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = end.address;
    address.sin_port = htons(end.port);
    return address;
}

}  // namespace

bool MayBeReused(std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    const int on = 1;
    const Descriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return setsockopt(listener.Number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
           bind(listener.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void FreePort(const PortUse& use, bool evenHalfClosed) {
    for (const Socket& one : use.connections) {
        const bool isOver = one.state == TCP_TIME_WAIT || (evenHalfClosed && !one.hasOwner);
        if (isOver && one.isIPv4 && !use.isListening && !Drop(one)) {
            Knock(one);
        }
    }
}

bool Drop(const Socket& socket) {
    struct {
        nlmsghdr header;
        inet_diag_req_v2 request;
    } order = {};
    order.header.nlmsg_len = sizeof order;
    order.header.nlmsg_type = SOCK_DESTROY;
    order.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_ACK;
    order.request.sdiag_family = AF_INET;
    order.request.sdiag_protocol = IPPROTO_TCP;
    order.request.idiag_states = 1U << socket.state;
    order.request.id.idiag_src[0] = socket.own.address;
    order.request.id.idiag_sport = htons(socket.own.port);
    order.request.id.idiag_dst[0] = socket.peer.address;
    order.request.id.idiag_dport = htons(socket.peer.port);
    order.request.id.idiag_cookie[0] = order.request.id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    struct {
        nlmsghdr header;
        nlmsgerr error;
    } answer = {};
    const Descriptor kernel(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    return send(kernel.Number(), &order, sizeof order, 0) == sizeof order &&
           recv(kernel.Number(), &answer, sizeof answer, 0) > 0 && answer.header.nlmsg_type == NLMSG_ERROR &&
           answer.error.error == 0;
}

void Knock(const Socket& socket) {
    const sockaddr_in from = AddressOf(socket.peer);
    const sockaddr_in to = AddressOf(socket.own);
    const Descriptor caller(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (bind(caller.Number(), reinterpret_cast<const sockaddr*>(&from), sizeof from) == 0) {
        static_cast<void>(connect(caller.Number(), reinterpret_cast<const sockaddr*>(&to), sizeof to));
    }
}

}  // namespace rig::campaign
