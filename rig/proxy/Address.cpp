#include "rig/proxy/Address.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netdb.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>

#include "rig/base/ParseNumber.h"
#include "rig/base/Printable.h"

namespace rig::proxy {
namespace {

constexpr const char* kAnywhere = "0.0.0.0";

int FamilyOf(const Address& address) {
    return address.bytes.ss_family;
}

struct NumericAddress {
    std::string host;
    std::string port;
};

NumericAddress Numeric(const Address& address) {
    char host[NI_MAXHOST] = "";
    char port[NI_MAXSERV] = "";
    getnameinfo(address.Get(), address.size, host, sizeof host, port, sizeof port,
                NI_NUMERICHOST | NI_NUMERICSERV);
    return {host, port};
}

const addrinfo* BestOf(const addrinfo* all) {
    for (const addrinfo* one = all; one != nullptr; one = one->ai_next) {
        if (one->ai_family == AF_INET) {
            return one;
        }
    }
    return all;
}

bool IsAnywhere(const std::string& host) {
    return host == kAnywhere || host == "::";
}

bool IsLoopbackHost(const std::string& host) {
    return host.compare(0, 4, "127.") == 0 || host == "::1";
}

}  // namespace

std::optional<HostAndPort> ParseHostAndPort(const std::string& text, int lowestPort) {
    const std::size_t colon = text.rfind(':');
    std::string host = colon == std::string::npos ? "" : text.substr(0, colon);
    const bool isBracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    const bool isHost = colon == std::string::npos || isBracketed ||
                        (!host.empty() && host.find_first_of(":[]") == std::string::npos);
    const std::string portText = colon == std::string::npos ? text : text.substr(colon + 1);
    const std::optional<int> port = ParseNumber<int>(portText);
    if (!isHost || !port || *port < lowestPort || *port > kHighestPort) {
        return std::nullopt;
    }
    return HostAndPort{isBracketed ? host.substr(1, host.size() - 2) : host, *port};
}

Address Resolve(const HostAndPort& place, const std::string& option) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const std::string host = place.host.empty() ? kAnywhere : place.host;
    const int error = getaddrinfo(host.c_str(), std::to_string(place.port).c_str(), &hints, &found);
    if (error != 0) {
        throw std::runtime_error(fmt::format("{}: expected a host that can be resolved, found {}: {}", option,
                                             Quoted(host), gai_strerror(error)));
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
    const addrinfo* const best = BestOf(found);
    Address address;
    std::memcpy(&address.bytes, best->ai_addr, best->ai_addrlen);
    address.size = best->ai_addrlen;
    return address;
}

std::string Address::Words() const {
    const NumericAddress numeric = Numeric(*this);
    return fmt::format(FamilyOf(*this) == AF_INET6 ? "[{}]:{}" : "{}:{}", numeric.host, numeric.port);
}

bool Address::IsLoopback() const {
    return IsLoopbackHost(Numeric(*this).host);
}

Address OwnAddress(const Descriptor& socket) {
    Address address;
    address.size = sizeof address.bytes;
    getsockname(socket.Number(), address.Get(), &address.size);
    return address;
}

Address PeerAddress(const Descriptor& socket) {
    Address address;
    address.size = sizeof address.bytes;
    getpeername(socket.Number(), address.Get(), &address.size);
    return address;
}

bool LeadsTo(const Address& target, const Address& listener) {
    const NumericAddress to = Numeric(target);
    const NumericAddress at = Numeric(listener);
    return to.port == at.port && (to.host == at.host || (IsAnywhere(at.host) && IsLoopbackHost(to.host)));
}

}  // namespace rig::proxy
