#include "rig/dvr/replay/RequestBuilder.h"

#include <algorithm>
#include <charconv>

#include "rig/base/Affix.h"
#include "rig/base/Printable.h"
#include "rig/dvr/replay/Evidence.h"
#include "rig/dvr/wire/Frame.h"

namespace rig::dvr {
namespace {

/// @return the byte after the head, in hexadecimal up to the text's end; nothing if there is none
std::optional<unsigned int> ByteBehind(const std::string& text, const std::string& head) {
    unsigned int byte = 0;
    if (!StartsWith(text, head)) {
        return std::nullopt;
    }
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + head.size(), end, byte, 16);
    return parsed.ec == std::errc() && parsed.ptr == end && byte <= 0xff ? std::optional<unsigned int>(byte)
                                                                         : std::nullopt;
}

const EarlierRequest& At(const EarlierRun& run, const std::pair<std::size_t, std::size_t>& id) {
    return run.messages[id.first].requests[id.second];
}

}  // namespace

void RequestBuilder::BeginAnswer(const EarlierRun& run, const std::string& name) {
    name_ = name;
    evidence_.clear();
    subject_.reset();
    prefixBytes_ = 0;
    if (name != "INVALID_EVENT" && name != "TRANSPORT_EXCEPTION") {
        return;
    }
    // The last request will no longer be confirmed: the file's, or else the event's.
    const auto isFile = [&](const RequestId& id) { return At(run, id).name == "GET_FILE"; };
    const bool hasFiles = std::any_of(unconfirmed_.begin(), unconfirmed_.end(), isFile);
    unconfirmed_.erase(std::remove_if(unconfirmed_.begin(), unconfirmed_.end(),
                                      [&](const RequestId& id) { return !hasFiles || isFile(id); }),
                       unconfirmed_.end());
}

std::string RequestBuilder::TakePrefixByte(EarlierRun& run, std::size_t number, const std::string& text) {
    const std::string head = "hdr[" + std::to_string(prefixBytes_) + "]= ";
    const auto byte = ByteBehind(text, head);
    if (!byte) {
        return Quoted(head) + " and a byte in hexadecimal";
    }
    if (prefixBytes_ == 0) {
        BeginRequest(run, number);
    }
    run.messages.back().requests.back().announced |= (*byte & 0x7f) << (7 * prefixBytes_);
    const bool isLast = (*byte & 0x80) == 0 || prefixBytes_ + 1 == kMaxPrefixBytes;
    prefixBytes_ = isLast ? 0 : prefixBytes_ + 1;
    return "";
}

void RequestBuilder::BeginRequest(EarlierRun& run, std::size_t number) {
    EarlierRequest request;
    request.line = number;
    request.name = NameAnnouncedBy(evidence_);
    request.evidence = evidence_;
    request.subject = subject_;
    if (request.name.empty()) {
        request.name = NameAnswering(name_);
        request.evidence = request.name.empty() ? "" : "in answer to " + name_;
    }
    if (request.name == "DONE" && name_ == "EVENT_XFER_ACK") {  // the older dialect ignores the duration
        request.subject = duration_;
    }
    std::vector<EarlierRequest>& requests = run.messages.back().requests;
    requests.push_back(request);
    if (request.name == "GET_FILE" || request.name == "NEXT_EVENT" || request.name == "EVENT_XFER_COMPLETE") {
        unconfirmed_.emplace_back(run.messages.size() - 1, requests.size() - 1);
    }
    promised_.clear();
}

void RequestBuilder::TakeSentText(EarlierRun& run, const std::string& text) {
    std::vector<EarlierRequest>& requests = run.messages.back().requests;
    const std::size_t quote = text.find("  '");
    if (!requests.empty() && quote != std::string::npos && text.size() > quote + 3 && text.back() == '\'') {
        requests.back().text = text.substr(quote + 3, text.size() - quote - 4);
    }
}

std::string RequestBuilder::TakeEvidence(EarlierRun& run, const std::string& text) {
    if (!NameAnnouncedBy(text).empty()) {
        evidence_ = text;
        const std::string subject = SubjectAnnouncedBy(text);
        subject_ = subject.empty() ? std::nullopt : std::optional<std::string>(subject);
    }
    const std::string confirmed = SubjectConfirmedBy(text);
    if (!confirmed.empty()) {
        Confirm(run, confirmed, StartsWith(text, "Got FILE_COMPLETE"));
    }
    const bool promises = StartsWith(text, "got an OK, sending ") || StartsWith(text, "Sending ");
    if (!promises) {
        return "";
    }
    std::string missing = Missing();
    promised_ = text;
    return missing;
}

void RequestBuilder::Confirm(EarlierRun& run, const std::string& subject, bool files) {
    std::vector<RequestId> left;
    for (const RequestId& id : unconfirmed_) {
        EarlierRequest& request = run.messages[id.first].requests[id.second];
        if (files != (request.name == "GET_FILE")) {
            left.push_back(id);
        } else if (!request.subject) {
            request.subject = subject;
        }
    }
    unconfirmed_ = left;
}

std::string RequestBuilder::Missing() const {
    return promised_.empty() ? "" : "'hdr[0]= ' behind " + Quoted(promised_) + ", as in a log of all levels";
}

}  // namespace rig::dvr
