#include "rig/judge/Protocol.h"

#include "rig/protocol/Catalogue.h"

namespace rig::judge {
namespace {

using protocol::Sender;

constexpr std::size_t kDamage = 3;  // characters

}  // namespace

std::string AnswerTo(const std::string& request, Fault fault, int protocol) {
    switch (fault) {
        case Fault::Event:
        case Fault::FileEvent:
        case Fault::FileName:
            return "INVALID_EVENT";
        case Fault::Transport:
            return "TRANSPORT_EXCEPTION";
        case Fault::Xfer:
            return "XFER_IN_PROGRESS";
        default:
            break;
    }
    // A log without its beginning may not say which dialect it is of.
    const int dialect = protocol == 2 ? 2 : 1;
    const auto* kind = protocol::Find(dialect, Sender::Harness, request);
    if (kind == nullptr) {
        kind = protocol::Find(3 - dialect, Sender::Harness, request);
    }
    return kind == nullptr || kind->answers.empty() ? "" : kind->answers.front();
}

bool Knows(int protocol, const std::string& message) {
    return protocol::Find(protocol == 2 ? 2 : 1, Sender::Dvr, message) != nullptr;
}

bool IsReport(const std::string& message) {
    return protocol::IsReport(message);
}

std::string Damaged(const std::string& text) {
    return text.size() < kDamage ? "" : text.substr(kDamage);
}

}  // namespace rig::judge
