#include "rig/dvr/replay/Subjects.h"

namespace rig::dvr {

std::string SubjectConfirmedBy(const log::Statement& statement) {
    if (statement.sign == log::Sign::FileDone) {
        return "reid=" + log::Unescaped(statement.detail);
    }
    return statement.sign == log::Sign::Acknowledged ? log::Unescaped(statement.detail) : "";
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
