#include "rig/log/Signs.h"

#include <array>

namespace rig::log {
namespace {

using ByFirst = std::array<std::vector<Beginning>, 256>;

std::size_t IndexOf(char first) {
    return static_cast<unsigned char>(first);
}

/// Every line of a log is looked up: by its first character, and then by the last one of the beginning, which
/// tells most of them apart.
const ByFirst& BeginningsByFirst() {
    static const ByFirst kByFirst = [] {
        ByFirst byFirst;
        for (const Beginning& beginning : Beginnings()) {
            byFirst[IndexOf(beginning.text.front())].push_back(beginning);
        }
        return byFirst;
    }();
    return kByFirst;
}

}  // namespace

const std::vector<Beginning>& Beginnings() {
    static const std::vector<Beginning> kBeginnings = {
        {Sign::HeaderByte, "hdr["},
        {Sign::Expecting, "expecting a message of "},
        {Sign::TextRead, "read success:"},
        {Sign::Incoming, "GetMessage:incoming message, bytes "},
        {Sign::FileDone, "Got FILE_COMPLETE for: reid="},
        {Sign::FilesLeft, "filesToReceive size = "},
        {Sign::LastFile, "calling SendFileRequest("},
        {Sign::CloseSwitch, "closeEarly set to "},
        {Sign::DurationSwitch, "doneDuration set to "},
        {Sign::SleepSwitch, "sleepForGetFile set to "},
        {Sign::ProtocolSwitch, "'protocol' option set to "},
        {Sign::EventSwitch, "'invalidEvent' flag set"},
        {Sign::FileSwitch, "'invalidFile' flag set"},
        {Sign::RehashSwitch, "'rehash' flag set"},
        {Sign::TransportSwitch, "'transportException' flag set"},
        {Sign::UpgradeSwitch, "'upgrade' flag set"},
        {Sign::XferSwitch, "'xferInProgress' flag set"},
        {Sign::SizeSwitch, "'sizeError' flag set"},
        {Sign::ConfigSwitch, "'configUpdate' flag set"},
        {Sign::NoSignalHandler, "Could not install SIGINT handler"},
        {Sign::BindFailed, "bind failed: "},
        {Sign::Connected, "Connected to: fam="},
        {Sign::ClosingClient, "Closing client socket..."},
        {Sign::ShuttingDown, "shutting down"},
        {Sign::PrefixReadError, "read error: "},
        {Sign::BadPrefix, "Read7BitEncodedInt:badly formatted 7 bit string length prefix"},
        {Sign::TextReadError, "read errored out:"},
        {Sign::EndInsideText, "EOF at: "},
        {Sign::SendFailed, "SendMessage: msg: size= "},
        {Sign::SentWrongSize, "sent: size= "},
        {Sign::NotXml, "error: "},
        {Sign::NoRequest, "INVALID XML RECEIVED"},
        {Sign::UnknownMessage, "UNSUPPORTED MSG RECEIVED: "},
        {Sign::Opening, "got an OK, sending "},
        {Sign::UnexpectedAnswer, "Unexpected "},
        {Sign::UpdateConfirmed, "Got SOFTWARE_UPDATE_CONFIRM"},
        {Sign::ConfigRefused, "Got CONFIGURATION_UPDATE_ERROR"},
        {Sign::NoSource, "'source' attribute missing from EVENT_LIST message"},
        {Sign::NoEventTag, "could not find 'event' tag in EVENT_LIST message"},
        {Sign::EventWithoutText, "'event' found with no text"},
        {Sign::NoEvents, "Got EVENT_LIST message with no events"},
        {Sign::EventFault, "processing 'invalidEvent' option [event]"},
        {Sign::EventReidWrong, "Handle_EVENT_msg: 'reid' attribute incorrect: "},
        {Sign::NoDescription, "EVENT message does not contain 'xmlFile' tag"},
        {Sign::EmptyDescription, "EVENT message 'xmlFile' tag does not contain data"},
        {Sign::DescriptionWithoutReid, "Escaped XML for event contains no REID"},
        {Sign::DescriptionWithoutReid, "Found event with no REID"},
        {Sign::DescriptionReidWrong, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: "},
        {Sign::EventWithoutFiles, "Got EVENT message with no files to receive"},
        {Sign::FileWithoutNames, "Got FILE_COMPLETE without both reid and file"},
        {Sign::SameHash, "rehash resulted in same hash: "},
        {Sign::NewHash, "rehash resulted in new hash: "},
        {Sign::NoLength, "'length' attribute not present when requested"},
        {Sign::NoHash, "'hashCode' attribute not present when requested"},
        {Sign::WrongFile, "invalid file in FILE_COMPLETE: "},
        {Sign::FileFault, "processing 'invalidFile' option, cnt="},
        {Sign::TransportFault, "processing 'transportException' option"},
        {Sign::RehashFault, "processing 'rehash' option"},
        {Sign::XferFault, "processing 'xferInProgress' option"},
        {Sign::SendingComplete, "Sending EVENT_XFER_COMPLETE"},
        {Sign::ReportedEvent, "HandleMessage: event = '"},
        {Sign::AckWithoutReid, "Got EVENT_XFER_ACK with no reid attribute"},
        {Sign::AckReidWrong, "In EVENT_XFER_ACK, got unexpected reid: "},
        {Sign::Acknowledged, "Got EVENT_XFER_ACK for: "},
        {Sign::SendingDone, "Sending DONE"},
    };
    return kBeginnings;
}

Beginning BeginningOf(std::string_view text) {
    if (text.empty()) {
        return {Sign::None, {}};
    }
    static const ByFirst& kByFirst = BeginningsByFirst();
    for (const Beginning& beginning : kByFirst[IndexOf(text.front())]) {
        const std::size_t size = beginning.text.size();
        if (text.size() >= size && text[size - 1] == beginning.text.back() &&
            text.compare(0, size, beginning.text) == 0) {
            return beginning;
        }
    }
    return {Sign::None, {}};
}

}  // namespace rig::log
