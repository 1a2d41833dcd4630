#include "rig/campaign/execution/Watch.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string_view>
#include <utility>

#include "rig/base/Printable.h"

namespace rig::campaign {
namespace {

using log::Sign;

constexpr double kMargin = 0.2;   // seconds, so that the judge also counts the patience as over
constexpr double kReading = 0.5;  // seconds that the harness may take over a message that it has read

constexpr const char* kNoEvents =
    "the DVR has no event to export; if earlier cases have used them up, have --before-case make new ones";

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

std::string Words(const std::string& name, const std::string& reid, const std::string& file) {
    return Excerpt(name) + (reid.empty() ? "" : " " + Excerpt(reid)) +
           (file.empty() ? "" : " " + Excerpt(file));
}

/// @return the number at the end of "fam=2  127.0.0.1:4000"
std::uint16_t PortIn(std::string_view detail) {
    std::uint16_t port = 0;
    std::from_chars(detail.data() + detail.rfind(':') + 1, detail.data() + detail.size(), port);
    return port;
}

}  // namespace

void Watch::Add(const judge::ReadLine& read, bool isOver, Clock::time_point now) {
    lastLine_ = now;
    Note(*read.statement, now);
    Follow(read);
    const bool isConfigured = Has(plan_, 'g') && isRefused_ && (isConfirmed_ || !Has(plan_, 'u'));
    // A harness that could not listen, or was interrupted, is also over, but no dialogue came to its end.
    const bool isEnd = isOver && isConnected_ && read.statement->sign != Sign::ShuttingDown;
    isDone_ = isDone_ || isEnd || isConfigured;
}

void Watch::Note(const log::Statement& statement, Clock::time_point now) {
    const Sign sign = statement.sign;
    if (sign == Sign::Connected) {
        connected_ = connected_.value_or(now);
        firstCaller_ = PortIn(statement.detail);
    } else if (sign == Sign::SendingDone) {
        done_ = now;
    } else if (sign == Sign::Expecting && done_) {
        heardAgain_ = heardAgain_.value_or(now);
    }
    isConnected_ = isConnected_ || sign == Sign::Connected || sign == Sign::Expecting;
    isSent_ = isSent_ || sign == Sign::SentWrongSize;
    isRefused_ = isRefused_ || sign == Sign::ConfigRefused;
    isConfirmed_ = isConfirmed_ || sign == Sign::UpdateConfirmed;
}

/// Follows the dialogue to where it leads nowhere.
void Watch::Follow(const judge::ReadLine& read) {
    const log::Statement& statement = *read.statement;
    if (read.request != nullptr) {
        isTransferring_ = read.request->name == "GET_FILE";
        deadEnd_.reset();
        rounds_.Ask(Words(read.request->name, read.request->reid, read.request->file));
    } else if (read.message != nullptr && read.message->root) {
        TakeMessage(*read.message);
    }
    if (statement.sign == Sign::NoEvents) {
        Meet({End::NoEvents, kNoEvents, 0});
    } else if (statement.sign == Sign::EventWithoutFiles) {
        Meet({End::Stuck, "the DVR gave no file to ask for, and the harness waits", patience_.answer});
    } else if (statement.sign == Sign::PrefixReadError && statement.Number() != EINTR) {
        Meet({End::Lost,
              "the DVR broke the connection off before the export was done: " + std::string(statement.text),
              0});
    } else if (statement.sign == Sign::DescriptionWithoutReid && plan_.protocol == 1) {
        Meet({End::Endless, "the harness logs for ever: " + std::string(statement.text), 0});
    }
    if (!rounds_.Endless().empty()) {
        Meet({End::Endless, rounds_.Endless(), 0});
    }
}

void Watch::TakeMessage(const log::Message& message) {
    const pugi::xml_node root = message.root;
    rounds_.Answer(Words(message.name, root.attribute("reid").value(), root.attribute("file").value()));
    if (message.name == "XML" && !root.child("xmlFile").child("string")) {
        Meet({End::NoEvents, kNoEvents, patience_.answer});
    } else if (message.name == "XML") {
        Meet({End::Stuck, "the DVR gave no file to ask for, and the harness waits", patience_.answer});
    }
}

/// After a frame with a wrong prefix the DVR may do all of that, except answer.
void Watch::Meet(DeadEnd deadEnd) {
    if (!isSent_ || deadEnd.end == End::Endless) {
        deadEnd_ = std::move(deadEnd);
    }
}

void Watch::DvrFailed(Clock::time_point now) {
    dvrFailed_ = dvrFailed_.value_or(now);
}

void Watch::ConnectionClosed() {
    if (!deadEnd_) {
        Meet(
            {End::Lost,
             "the DVR closed the connection before the export was done, and the harness waits on it for ever",
             patience_.answer + kReading});
    }
}

double Watch::SilentFor(Clock::time_point now) const {
    return Seconds(now - lastLine_);
}

double Watch::LeftToConnect(Clock::time_point now) const {
    return std::max(patience_.connect - Seconds(now - begin_), 0.0);
}

End Watch::Look(Clock::time_point now, std::string& words) const {
    const double enough = patience_.answer + kMargin;
    const double silent = SilentFor(now);
    if (isDone_) {
        return End::Done;
    }
    if (deadEnd_ && silent >= deadEnd_->seconds) {
        words = deadEnd_->words;
        return deadEnd_->end;
    }
    if (isSent_ && silent >= enough) {
        return End::Silence;
    }
    if (bytes_ > kLargestLog) {
        words = fmt::format("the log grew beyond {} MiB", kLargestLog >> 20);
        return End::LogTooLarge;
    }
    if (dvrFailed_ && Seconds(now - *dvrFailed_) >= enough && silent >= enough) {
        return End::DvrFailed;
    }
    if (!isConnected_ && LeftToConnect(now) <= 0) {
        words = fmt::format("connect time-out: no DVR connected within {:g} s", patience_.connect);
        return End::ConnectTimeout;
    }
    if (isTransferring_ && silent >= patience_.transfer) {
        words = fmt::format("transfer time-out: no new line in the log for {:g} s after a request for a file",
                            patience_.transfer);
        return End::TransferTimeout;
    }
    if (isConnected_ && !isTransferring_ && silent >= patience_.idle) {
        words = fmt::format("idle time-out: no new line in the log for {:g} s", patience_.idle);
        return End::IdleTimeout;
    }
    if (Seconds(now - begin_) >= patience_.whole) {
        words = fmt::format("case time-out: the export did not end within {:g} s", patience_.whole);
        return End::CaseTimeout;
    }
    return End::None;
}

}  // namespace rig::campaign
