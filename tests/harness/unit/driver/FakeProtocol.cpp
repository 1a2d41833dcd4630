#include "tests/harness/unit/driver/FakeProtocol.h"

#include <cstdio>
#include <cstdlib>
#include <deque>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

namespace {

std::deque<int>& Results() {
    static std::deque<int> results;
    return results;
}

/// The members that TestOptions and the protocol objects have under the same names.
template <typename T>
std::string Values(const T& values) {
    std::string text = std::to_string(values.closeEarly) + " " + std::to_string(values.doneDuration) + " " +
                       std::to_string(values.sleepForGetFile) + " " + std::to_string(values.protocol);
    text += values.rehash ? " rehash" : "";
    text += values.invalidEvent ? " invalidEvent" : "";
    text += values.invalidFile ? " invalidFile" : "";
    text += values.transportException ? " transportException" : "";
    text += values.xferInProgress ? " xferInProgress" : "";
    text += values.upgrade ? " upgrade" : "";
    text += values.sizeError ? " sizeError" : "";
    text += values.configUpdate ? " configUpdate" : "";
    return text;
}

std::string Line(const std::string& dialect, const std::string& values, int socket, std::size_t message) {
    return "HandleMessage " + dialect + " with " + values + ", socket " + std::to_string(socket) +
           ", message " + std::to_string(message);
}

VelProtocolBase::e_MsgReturn Handle(VelProtocolBase& protocol, const std::string& dialect) {
    protocol.events.emplace_back();  // the object counts its messages
    AddToJournal(Line(dialect, Values(protocol), protocol.socketFd, protocol.events.size()));
    if (Results().empty()) {
        fputs("HandleMessage: nothing is scripted\n", stderr);
        std::abort();
    }
    const int result = Results().front();
    Results().pop_front();
    return static_cast<VelProtocolBase::e_MsgReturn>(result);
}

}  // namespace

void NextHandleMessageReturns(int result) {
    Results().push_back(result);
}

void ResetProtocol() {
    Results().clear();
}

Entry Handled(const TestOptions& options, int socket, int message) {
    const std::string dialect = options.protocol == 2 ? "2.0" : "1.0";
    return {Line(dialect, Values(options), socket, static_cast<std::size_t>(message))};
}

VelProtocolBase::e_MsgReturn VelProtocol_1_0::HandleMessage() {
    return Handle(*this, "1.0");
}

VelProtocolBase::e_MsgReturn VelProtocol_2_0::HandleMessage() {
    return Handle(*this, "2.0");
}
