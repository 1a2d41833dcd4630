#include "rig/proxy/ProxyLog.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "rig/base/Printable.h"

namespace rig::proxy {
namespace {

using Json = nlohmann::ordered_json;

constexpr long long kMicroseconds = 1'000'000;  // in a second

std::string Now() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return TimeText(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

const char* NameOf(Party party) {
    switch (party) {
        case Party::Dvr:
            return "dvr";
        case Party::Harness:
            return "harness";
        case Party::Proxy:
            break;
    }
    return "proxy";
}

/// @return the beginning of each event
Json Event(const char* name) {
    return {{"time", Now()}, {"event", name}};
}

Json Event(const char* name, unsigned int connection) {
    return {{"time", Now()}, {"connection", connection}, {"event", name}};
}

Json FrameEvent(const char* name, unsigned int connection, Party sender) {
    Json event = Event(name, connection);
    event["direction"] = sender == Party::Dvr ? "dvr->harness" : "harness->dvr";
    return event;
}

Json WholeFrame(unsigned int connection, Party sender, const FollowedFrame& frame) {
    Json event = FrameEvent("frame", connection, sender);
    if (!frame.message.empty()) {
        event["message"] = frame.message;
    }
    if (frame.reid) {
        event["reid"] = *frame.reid;
    }
    if (frame.file) {
        event["file"] = *frame.file;
    }
    event["prefixBytes"] = frame.prefixBytes;
    event["textBytes"] = frame.textBytes;
    return event;
}

/// @return which messages the bytes hold, each once, as far as they are whole
Json MessagesIn(const std::string& bytes) {
    constexpr std::size_t kMostNames = 8;
    Json names = Json::array();
    FrameFollower().Follow(
        bytes.data(), bytes.size(), [&names](const FollowedFrame& frame, const std::string&) {
            const bool isNews = std::find(names.begin(), names.end(), frame.message) == names.end();
            if (!frame.message.empty() && isNews && names.size() < kMostNames) {
                names.push_back(frame.message);
            }
        });
    return names;
}

Json FaultEvent(const char* name, unsigned int connection, const std::string& fault) {
    Json event = Event(name, connection);
    event["fault"] = fault;
    return event;
}

[[noreturn]] void ThrowUnwritten(const std::string& what) {
    const int error = errno;
    throw std::runtime_error("--log: expected to write " + what + ", found: " + std::strerror(error));
}

}  // namespace

ProxyLog::ProxyLog(const std::string& file) : output_(STDOUT_FILENO) {
    if (!file.empty()) {
        file_ = Descriptor(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
        if (!file_.IsOpen()) {
            ThrowUnwritten(Quoted(file));
        }
        output_ = file_.Number();
    }
}

void ProxyLog::Listening(const std::string& address, const std::string& harness) {
    Json event = Event("listen");
    event["address"] = address;
    event["harness"] = harness;
    Write(event);
}

void ProxyLog::HarnessStarted(pid_t process, const std::string& command) {
    Json event = Event("harness");
    event["pid"] = process;
    event["command"] = command;
    Write(event);
}

void ProxyLog::HarnessEnded(const Ending& end) {
    Json event = Event("harness-end");
    if (end.status) {
        event["status"] = *end.status;
    } else {
        event["signal"] = end.signal.value_or(0);
    }
    Write(event);
}

void ProxyLog::Planned(const fault::Order& order) {
    Json event = Event("plan");
    event["fault"] = order.fault->name;
    if (!order.value.empty()) {
        event["value"] = order.value;
    }
    if (!order.message.empty()) {
        event["on"] = order.message + (order.occurrence == 0 ? "" : fmt::format(":{}", order.occurrence));
    }
    Write(event);
}

void ProxyLog::Connected(unsigned int connection, const std::string& dvr) {
    Json event = Event("connect", connection);
    event["from"] = dvr;
    Write(event);
}

void ProxyLog::Refused(unsigned int connection, const std::string& error) {
    Json event = Event("refused", connection);
    event["error"] = error;
    Write(event);
}

void ProxyLog::Frame(unsigned int connection, Party sender, const FollowedFrame& frame) {
    Write(WholeFrame(connection, sender, frame));
}

void ProxyLog::Taken(unsigned int connection, const FollowedFrame& frame) {
    Json event = WholeFrame(connection, Party::Dvr, frame);
    event["taken"] = true;
    Write(event);
}

void ProxyLog::FaultActs(unsigned int connection, const std::string& fault, const std::string& value,
                         const std::string& message) {
    Json event = FaultEvent("fault", connection, fault);
    if (!value.empty()) {
        event["value"] = value;
    }
    event["message"] = message;
    Write(event);
}

void ProxyLog::Sent(unsigned int connection, const std::string& fault, const std::string& bytes) {
    constexpr std::size_t kMostShown = 200;
    Json event = FaultEvent("sent", connection, fault);
    event["bytes"] = bytes.size();
    if (Json messages = MessagesIn(bytes); !messages.empty()) {
        event["messages"] = std::move(messages);
    }
    event["text"] = Excerpt(bytes.substr(0, kMostShown + 1), kMostShown);
    Write(event);
}

void ProxyLog::KeptOpen(unsigned int connection, const std::string& fault) {
    Write(FaultEvent("kept-open", connection, fault));
}

void ProxyLog::FaultEnds(unsigned int connection, const std::string& fault) {
    Write(FaultEvent("fault-end", connection, fault));
}

void ProxyLog::Partial(unsigned int connection, Party sender, const FollowedFrame& frame) {
    Json event = FrameEvent("partial", connection, sender);
    event["prefixBytes"] = frame.prefixBytes;
    event["textBytes"] = frame.textBytes;
    if (frame.announced) {
        event["announced"] = *frame.announced;
    }
    Write(event);
}

void ProxyLog::HalfClosed(unsigned int connection, Party first) {
    Json event = Event("half-close", connection);
    event["by"] = NameOf(first);
    Write(event);
}

void ProxyLog::Closed(unsigned int connection, Party first) {
    Json event = Event("close", connection);
    event["by"] = NameOf(first);
    Write(event);
}

void ProxyLog::Reset(unsigned int connection, Party first, const std::string& error) {
    Json event = Event("reset", connection);
    event["by"] = NameOf(first);
    event["error"] = error;
    Write(event);
}

void ProxyLog::Write(const nlohmann::ordered_json& event) {
    if (!isUnread_) {
        WriteLine(event.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
    }
}

void ProxyLog::WriteLine(const std::string& line) {
    for (std::size_t done = 0; done < line.size();) {
        const ssize_t count = write(output_, line.data() + done, line.size() - done);
        if (count >= 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno == EPIPE && !file_.IsOpen()) {
            isUnread_ = true;
            return;
        } else if (errno != EINTR) {
            const int error = errno;
            if (file_.IsOpen() && done > 0) {
                static_cast<void>(ftruncate(output_, static_cast<off_t>(written_)) == 0);
            }
            errno = error;
            ThrowUnwritten("an event");
        }
    }
    written_ += line.size();
}

std::string TimeText(long long time) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:06}Z",
                       fmt::gmtime(static_cast<std::time_t>(time / kMicroseconds)), time % kMicroseconds);
}

}  // namespace rig::proxy
