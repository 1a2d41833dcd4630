#include "rig/dvr/replay/Evidence.h"

#include <algorithm>

#include "rig/base/Affix.h"

namespace rig::dvr {
namespace {

struct Announcement {
    const char* start;  // of a text of the log, or a message of the DVR
    const char* name;   // of the message that follows
};

constexpr Announcement kAnnouncements[] = {
    {"got an OK, sending GET_XML", "GET_XML"},
    {"got an OK, sending UPDATE_SOFTWARE", "UPDATE_SOFTWARE"},
    {"got an OK, sending CONFIGURATION_UPDATE", "UPDATE_CONFIGURATION"},
    {"got an OK, sending GET_EVENT_LIST", "GET_EVENT_LIST"},
    {"processing 'invalidEvent' option", "NEXT_EVENT"},
    {"Got FILE_COMPLETE for: ", "GET_FILE"},
    {"filesToReceive size = ", "GET_FILE"},
    {"processing 'invalidFile' option", "GET_FILE"},
    {"processing 'transportException' option", "GET_FILE"},
    {"processing 'rehash' option", "GET_FILE"},
    {"processing 'xferInProgress' option", "GET_FILE"},
    {"calling SendFileRequest(", "GET_FILE"},
    {"Sending EVENT_XFER_COMPLETE", "EVENT_XFER_COMPLETE"},
    {"Got EVENT_XFER_ACK for: ", "NEXT_EVENT"},
    {"Sending DONE", "DONE"},
};

constexpr Announcement kAnswers[] = {
    {"XML", "GET_FILE"},
    {"EVENT_LIST", "NEXT_EVENT"},
    {"EVENT", "GET_FILE"},
    {"INVALID_EVENT", "NEXT_EVENT"},
};

constexpr const char* kFileRequest = "calling SendFileRequest(";
constexpr const char* kFileComplete = "Got FILE_COMPLETE for: ";
constexpr const char* kAcknowledged = "Got EVENT_XFER_ACK for: ";

/// @return what follows the start; empty if the text does not start so
std::string Rest(const std::string& text, const std::string& start) {
    return StartsWith(text, start) ? text.substr(start.size()) : "";
}

}  // namespace

std::string NameAnnouncedBy(const std::string& text) {
    const auto* const found =
        std::find_if(std::begin(kAnnouncements), std::end(kAnnouncements),
                     [&](const Announcement& candidate) { return StartsWith(text, candidate.start); });
    return found == std::end(kAnnouncements) ? "" : found->name;
}

std::string NameAnswering(const std::string& message) {
    const auto* const found =
        std::find_if(std::begin(kAnswers), std::end(kAnswers),
                     [&](const Announcement& candidate) { return message == candidate.start; });
    return found == std::end(kAnswers) ? "" : found->name;
}

std::string SubjectAnnouncedBy(const std::string& text) {
    const std::string request = Rest(text, kFileRequest);  // EVENT/FILE, BOOL)
    return request.substr(0, request.rfind(", "));
}

std::string SubjectConfirmedBy(const std::string& text) {
    return Rest(text, kFileComplete) + Rest(text, kAcknowledged);
}

std::vector<std::string> SubjectsOf(const Message& message) {
    const std::string reid = message.Get("reid");
    if (message.Name() == "GET_FILE") {
        const std::string event = message.Get("path");  // both dialects have it
        const std::string file = message.Get("file");
        return {event + "/" + file, "reid=" + event + "  file=" + file};
    }
    if (message.Name() == "DONE") {
        return {"duration=" + message.Get("duration")};
    }
    return message.Find("reid") ? std::vector<std::string>{"reid='" + reid + "'"}
                                : std::vector<std::string>{};
}

}  // namespace rig::dvr
