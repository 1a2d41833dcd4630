#include "rig/log/Signs.h"

#include <array>
#include <vector>

#include "rig/base/Affix.h"

namespace rig::log {
namespace {

struct Beginning {
    Sign sign;
    std::string_view text;
};

constexpr std::array kBeginnings = {
    Beginning{Sign::HeaderByte, "hdr["},
    Beginning{Sign::Expecting, "expecting a message of "},
    Beginning{Sign::Incoming, "GetMessage:incoming message, bytes "},
    Beginning{Sign::FileDone, "Got FILE_COMPLETE for: reid="},
    Beginning{Sign::FilesLeft, "filesToReceive size = "},
    Beginning{Sign::LastFile, "calling SendFileRequest("},
    Beginning{Sign::CloseSwitch, "closeEarly set to "},
    Beginning{Sign::DurationSwitch, "doneDuration set to "},
    Beginning{Sign::SleepSwitch, "sleepForGetFile set to "},
    Beginning{Sign::ProtocolSwitch, "'protocol' option set to "},
    Beginning{Sign::EventSwitch, "'invalidEvent' flag set"},
    Beginning{Sign::FileSwitch, "'invalidFile' flag set"},
    Beginning{Sign::RehashSwitch, "'rehash' flag set"},
    Beginning{Sign::TransportSwitch, "'transportException' flag set"},
    Beginning{Sign::UpgradeSwitch, "'upgrade' flag set"},
    Beginning{Sign::XferSwitch, "'xferInProgress' flag set"},
    Beginning{Sign::SizeSwitch, "'sizeError' flag set"},
    Beginning{Sign::ConfigSwitch, "'configUpdate' flag set"},
    Beginning{Sign::NoSignalHandler, "Could not install SIGINT handler"},
    Beginning{Sign::BindFailed, "bind failed: "},
    Beginning{Sign::Connected, "Connected to: fam="},
    Beginning{Sign::ClosingClient, "Closing client socket..."},
    Beginning{Sign::ShuttingDown, "shutting down"},
    Beginning{Sign::PrefixReadError, "read error: "},
    Beginning{Sign::BadPrefix, "Read7BitEncodedInt:badly formatted 7 bit string length prefix"},
    Beginning{Sign::TextReadError, "read errored out:"},
    Beginning{Sign::EndInsideText, "EOF at: "},
    Beginning{Sign::SendFailed, "SendMessage: msg: size= "},
    Beginning{Sign::SentWrongSize, "sent: size= "},
    Beginning{Sign::NotXml, "error: "},
    Beginning{Sign::NoRequest, "INVALID XML RECEIVED"},
    Beginning{Sign::UnknownMessage, "UNSUPPORTED MSG RECEIVED: "},
    Beginning{Sign::Opening, "got an OK, sending "},
    Beginning{Sign::UnexpectedAnswer, "Unexpected "},
    Beginning{Sign::NoSource, "'source' attribute missing from EVENT_LIST message"},
    Beginning{Sign::NoEventTag, "could not find 'event' tag in EVENT_LIST message"},
    Beginning{Sign::EventWithoutText, "'event' found with no text"},
    Beginning{Sign::NoEvents, "Got EVENT_LIST message with no events"},
    Beginning{Sign::EventFault, "processing 'invalidEvent' option [event]"},
    Beginning{Sign::EventReidWrong, "Handle_EVENT_msg: 'reid' attribute incorrect: "},
    Beginning{Sign::NoDescription, "EVENT message does not contain 'xmlFile' tag"},
    Beginning{Sign::EmptyDescription, "EVENT message 'xmlFile' tag does not contain data"},
    Beginning{Sign::DescriptionWithoutReid, "Escaped XML for event contains no REID"},
    Beginning{Sign::DescriptionWithoutReid, "Found event with no REID"},
    Beginning{Sign::DescriptionReidWrong, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: "},
    Beginning{Sign::EventWithoutFiles, "Got EVENT message with no files to receive"},
    Beginning{Sign::FileWithoutNames, "Got FILE_COMPLETE without both reid and file"},
    Beginning{Sign::SameHash, "rehash resulted in same hash: "},
    Beginning{Sign::NewHash, "rehash resulted in new hash: "},
    Beginning{Sign::NoLength, "'length' attribute not present when requested"},
    Beginning{Sign::NoHash, "'hashCode' attribute not present when requested"},
    Beginning{Sign::WrongFile, "invalid file in FILE_COMPLETE: "},
    Beginning{Sign::FileFault, "processing 'invalidFile' option, cnt="},
    Beginning{Sign::TransportFault, "processing 'transportException' option"},
    Beginning{Sign::RehashFault, "processing 'rehash' option"},
    Beginning{Sign::XferFault, "processing 'xferInProgress' option"},
    Beginning{Sign::SendingComplete, "Sending EVENT_XFER_COMPLETE"},
    Beginning{Sign::AckWithoutReid, "Got EVENT_XFER_ACK with no reid attribute"},
    Beginning{Sign::AckReidWrong, "In EVENT_XFER_ACK, got unexpected reid: "},
    Beginning{Sign::Acknowledged, "Got EVENT_XFER_ACK for: "},
    Beginning{Sign::SendingDone, "Sending DONE"},
    Beginning{Sign::InvalidEventReid, "INVALID_EVENT 'reid' attribute = '"},
    Beginning{Sign::TransportReid, "TRANSPORT_EXCEPTION 'reid' attribute = '"},
    Beginning{Sign::XferReid, "XFER_IN_PROGRESS 'reid' attribute = '"},
    Beginning{Sign::ReidNotExpected, "'reid' attribute does not match expected: "},
    Beginning{Sign::UnexpectedRefusal, "Received unexpected INVALID_EVENT message!"},
    Beginning{Sign::RefusalWithoutReid, "'reid' attribute missing from INVALID_EVENT message"},
    Beginning{Sign::TransportWithoutReid, "'reid' attribute missing from TRANSPORT_EXCEPTION message"},
    Beginning{Sign::XferWithoutReid, "'reid' attribute missing from XFER_IN_PROGRESS message"},
};

/// The beginnings by first character: every line of a log is looked up.
using ByFirst = std::array<std::vector<Beginning>, 256>;

std::size_t IndexOf(char first) {
    return static_cast<unsigned char>(first);
}

const ByFirst& Beginnings() {
    static const ByFirst kByFirst = [] {
        ByFirst byFirst;
        for (const Beginning& beginning : kBeginnings) {
            byFirst[IndexOf(beginning.text.front())].push_back(beginning);
        }
        return byFirst;
    }();
    return kByFirst;
}

}  // namespace

Sign SignOf(std::string_view text) {
    if (text.empty()) {
        return Sign::None;
    }
    for (const Beginning& beginning : Beginnings()[IndexOf(text.front())]) {
        if (StartsWith(text, beginning.text)) {
            return beginning.sign;
        }
    }
    return Sign::None;
}

std::string_view Behind(Sign sign, std::string_view text) {
    if (text.empty()) {
        return {};
    }
    for (const Beginning& beginning : Beginnings()[IndexOf(text.front())]) {
        if (beginning.sign == sign && StartsWith(text, beginning.text)) {
            return text.substr(beginning.text.size());
        }
    }
    return {};
}

}  // namespace rig::log
