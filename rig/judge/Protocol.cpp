#include "rig/judge/Protocol.h"

#include "rig/protocol/Catalogue.h"

namespace rig::judge {
namespace {

using protocol::Sender;

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

bool IsReport(const std::string& message) {
    return protocol::IsReport(message);
}

}  // namespace rig::judge
