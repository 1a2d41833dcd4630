#include <algorithm>

#include "rig/base/Printable.h"
#include "rig/judge/Exchange.h"
#include "rig/protocol/Catalogue.h"

// What the DVR may send about a request besides its answer.

namespace rig::judge {

/// A request with a fault that the DVR reports, but as something else.
bool Exchange::ReportsAnotherFault(const Arrival& message, const Place& place) {
    const auto request = std::find_if(run_.pending.begin(), run_.pending.end(), [&](const Request& waiting) {
        const bool isReportable = waiting.fault != Fault::Xfer && protocol::IsReport(waiting.expects);
        return isReportable && protocol::IsReport(message.Name()) && IsExact(waiting, message);
    });
    if (request == run_.pending.end() || message.Name() == "XFER_IN_PROGRESS") {
        return false;
    }
    run_.Of(request->fault).otherReport.Add(place, message.Name() + " to " + request->Words());
    run_.pending.erase(request);
    return true;
}

/// A DVR that took a damaged identifier for an event, and then refuses requests about it, behaves correctly:
/// its one fault has been counted.
bool Exchange::RefusesLater(const Arrival& message) {
    const std::string reid = message.Reid().value_or("");
    const auto request = std::find_if(
        run_.pending.begin(), run_.pending.end(),
        [&reid](const Request& waiting) { return waiting.fault == Fault::None && waiting.reid == reid; });
    if (!protocol::IsReport(message.Name()) || accepted_.count(reid) == 0 || request == run_.pending.end()) {
        return false;
    }
    run_.pending.erase(request);
    return true;
}

/// An event that the DVR has listed itself, or a file that it has described. The harness then asks for the
/// next.
bool Exchange::Refuses(const Arrival& message, const Place& place) {
    const auto request = std::find_if(run_.pending.begin(), run_.pending.end(), [&](const Request& waiting) {
        const bool isOwn = (waiting.name == "NEXT_EVENT" || waiting.name == "GET_FILE") &&
                           (waiting.fault == Fault::None || waiting.fault == Fault::Rehash);
        return message.Name() == "INVALID_EVENT" && (isOwn || waiting.mayBeRefused) &&
               IsExact(waiting, message);
    });
    if (request == run_.pending.end()) {
        return false;
    }
    if (!request->mayBeRefused) {
        const bool isEvent = request->name == "NEXT_EVENT";
        (isEvent ? run_.refused : run_.refusedFiles)
            .Add(place, Printable(request->reid + (isEvent ? "" : "/" + request->file)));
        refused_ = std::move(*request);
    }
    run_.pending.erase(request);
    return true;
}

/// What the DVR refused first, and then answers all the same: its one fault has been counted.
bool Exchange::AnswersTheRefused(const Arrival& message) {
    if (!refused_ || refused_->expects != message.Name() || !IsExact(*refused_, message)) {
        return false;
    }
    answered_.push_back(std::move(*refused_));
    refused_.reset();
    isExact_ = true;
    return true;
}

/// News of a transfer that goes on: legal, but nothing has asked for it. The same once more, at once, may
/// also be one answer sent twice: the other files tell.
bool Exchange::TellsProgress(const Arrival& message, const Place& place) {
    const bool mayBeDouble = message.isRepeated && WasThere(message);
    const auto request = std::find_if(run_.pending.begin(), run_.pending.end(), [&](const Request& waiting) {
        const bool isDamaged = waiting.fault == Fault::FileEvent || waiting.fault == Fault::FileName;
        return waiting.name == "GET_FILE" && !isDamaged && IsExact(waiting, message);
    });
    if (message.Name() != "XFER_IN_PROGRESS" || request == run_.pending.end()) {
        return false;
    }
    if (mayBeDouble) {
        run_.doubledProgress.Add(place, message.Name() + " twice");
    } else {
        run_.progress.Add(place, request->Words());
    }
    request->heard = message.time;
    return true;
}

}  // namespace rig::judge
