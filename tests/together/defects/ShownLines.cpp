#include "tests/together/defects/ShownLines.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>
#include <sstream>

#include "tests/support/LogLine.h"

namespace {

bool IsOfAName(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) not_eq 0 or character == '_';
}

bool StandsForAValue(const std::string& word) {
    static const std::set<std::string> values = {"NUMBER", "REASON", "N",      "M",       "NAME",
                                                 "ID",     "ROW",    "COLUMN", "DOCUMENT"};
    return values.count(word) == 1;
}

/// The fixed parts of a listed text; a value is between each two of them.
std::vector<std::string> FixedParts(const std::string& text) {
    std::vector<std::string> parts = {""};
    for (auto start = text.begin(); start not_eq text.end();) {
        const auto end = std::find_if_not(start, text.end(), IsOfAName);
        const std::string word(start, end == start ? start + 1 : end);
        if (StandsForAValue(word)) {
            parts.emplace_back();
        } else {
            parts.back() += word;
        }
        start += static_cast<std::ptrdiff_t>(word.size());
    }
    return parts;
}

bool IsLike(const std::vector<std::string>& parts, const std::string& text) {
    std::size_t end = parts.front().size();
    if (not StartsWith(text, parts.front()) or parts.size() == 1) {
        return text == parts.front();
    }
    for (std::size_t part = 1; part + 1 < parts.size(); ++part) {
        const std::size_t found = text.find(parts[part], end);
        if (found == std::string::npos) {
            return false;
        }
        end = found + parts[part].size();
    }
    const std::string& last = parts.back();
    return text.size() >= end + last.size() and
           text.compare(text.size() - last.size(), last.size(), last) == 0;
}

}  // namespace

// clang-format off
const std::vector<ShownLine>& ShownLines() {
    static const std::vector<ShownLine> lines = {
        {1, "shutting down", "Silence20.BehindTheEventList"},

        {1, "read error: NUMBER:REASON", "Reset20.BeforeAMessage"},
        {2, "Read7BitEncodedInt:badly formatted 7 bit string length prefix", "BadPrefix20.EndsTheHarness"},
        {1, "expecting a message of N bytes", "LongPrefix10.LeavesTheHarnessWaitingForTheRest"},
        {1, "read errored out:NUMBER:REASON", "Reset20.InsideAText"},
        {1, "EOF at: N  exp=M", "Close20.InsideAText"},
        {1, "read success:N", "EmptyFrame20.EndsTheHarness"},
        {2, "SendMessage: msg: size= N  errorno=REASON", "Reset20.BehindAMessage"},
        {1, "error: 1:REASON", "MalformedXml20.OnOk"},
        {1, "row: ROW:COLUMN", "MalformedXml20.OnOk"},
        {1, "INVALID XML RECEIVED", "NoReq20.IsIgnored"},
        {1, "UNSUPPORTED MSG RECEIVED: NAME", "UnknownMessage20.IsIgnored"},

        {1, "got an OK, sending GET_XML", "Double10.OnOk"},
        {1, "got an OK, sending UPDATE_SOFTWARE", "NoAnswer20.ToASoftwareUpdate"},
        {1, "got an OK, sending CONFIGURATION_UPDATE", "NoAnswer20.ToAConfigurationUpdate"},
        {1, "got an OK, sending GET_EVENT_LIST", "Double20.OnOk"},
        {2, "Unexpected NAME", "UnaskedSoftwareUpdateConfirm20.IsUnexpected"},

        {2, "Found event with no REID", "DescriptionWithoutReid10.RepeatsForEver"},
        {2, "'source' attribute missing from EVENT_LIST message", "MissingSource20.IsReported"},
        {2, "could not find 'event' tag in EVENT_LIST message", "EmptyList20.LeavesNothingToAskFor"},
        {2, "'event' found with no text", "EventWithoutText20.IsSkipped"},
        {2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='ID'  act='ID'", "WrongReid20.OnEvent"},
        {2, "EVENT message does not contain 'xmlFile' tag", "NoDescription20.LeavesNothingToAskFor"},
        {2, "EVENT message 'xmlFile' tag does not contain data", "EmptyDescription20.LeavesNothingToAskFor"},
        {2, "Escaped XML for event contains no REID", "DescriptionWithoutReid20.IsNotSaved"},
        {2, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp='ID'  act='ID'",
         "DescriptionOtherReid20.IsSavedUnderItsOwnName"},

        {2, "Got FILE_COMPLETE without both reid and file", "MissingReid20.OnFileComplete"},
        {2, "'length' attribute not present when requested", "MissingLength20.IsReportedOnARehash"},
        {2, "'hashCode' attribute not present when requested", "MissingHash20.IsReportedOnARehash"},
        {1, "invalid file in FILE_COMPLETE: DOCUMENT", "WrongFile20.OnFileComplete"},
        {2, "Got EVENT_XFER_ACK with no reid attribute", "MissingReid20.OnEventXferAck"},
        {2, "In EVENT_XFER_ACK, got unexpected reid: exp='ID'  act='ID'", "WrongReid20.OnEventXferAck"},

        {2, "'reid' attribute missing from INVALID_EVENT message", "MissingReid20.OnInvalidEventForAnEvent"},
        {2, "'reid' attribute does not match expected: 'ID'", "WrongReid20.OnInvalidEventForAnEvent"},
        {2, "Received unexpected INVALID_EVENT message!", "UnaskedInvalidEvent20.DropsAFile"},
        {2, "'reid' attribute missing from TRANSPORT_EXCEPTION message", "MissingReid20.OnTransportException"},
        {2, "'reid' attribute missing from XFER_IN_PROGRESS message", "MissingReid20.OnXferInProgress"},
    };
    return lines;
}

const std::vector<UnprovokedLine>& UnprovokedLines() {
    static const std::vector<UnprovokedLine> lines = {
        {1, "Could not install SIGINT handler",
         "the harness's own system refuses, before the harness listens; Linux never refuses this signal"},
        {1, "bind failed: NUMBER", "another program holds the port, before the harness listens"},
        {1, "bind failed: REASON", "the same"},
    };
    return lines;
}
// clang-format on

std::vector<ShownLine> LinesShownBy(const std::string& test) {
    std::vector<ShownLine> lines;
    std::copy_if(ShownLines().begin(), ShownLines().end(), std::back_inserter(lines),
                 [&](const ShownLine& line) { return line.test == test; });
    return lines;
}

bool Shows(const std::string& log, const ShownLine& line) {
    const std::vector<std::string> parts = FixedParts(line.text);
    std::istringstream output(log);
    for (std::string raw; std::getline(output, raw);) {
        const LogLine found = ParseLogLine(raw);
        if (found.level == line.level and IsLike(parts, found.text)) {
            return true;
        }
    }
    return false;
}
