#include "rig/judge/Protocol.h"

#include <map>

namespace rig::judge {
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
    static const std::map<std::string, std::string> kAnswers = {
        {"GET_EVENT_LIST", "EVENT_LIST"},
        {"GET_XML", "XML"},
        {"UPDATE_SOFTWARE", "SOFTWARE_UPDATE_CONFIRM"},
        {"UPDATE_CONFIGURATION", "CONFIGURATION_UPDATE_ERROR"},
        {"NEXT_EVENT", "EVENT"},
        {"GET_FILE", "FILE_COMPLETE"}};
    if (request == "EVENT_XFER_COMPLETE" && protocol == 2) {
        return "EVENT_XFER_ACK";
    }
    const auto answer = kAnswers.find(request);
    return answer == kAnswers.end() ? "" : answer->second;
}

bool IsReport(const std::string& message) {
    return message == "INVALID_EVENT" || message == "TRANSPORT_EXCEPTION" || message == "XFER_IN_PROGRESS";
}

}  // namespace rig::judge
