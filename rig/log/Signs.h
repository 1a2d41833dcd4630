#pragma once

#include <cstddef>
#include <string_view>

namespace rig::log {

/// What a statement of the harness's log is a sign of.
enum class Sign : std::size_t {
    None,
    CloseSwitch,
    DurationSwitch,
    SleepSwitch,
    ProtocolSwitch,
    EventSwitch,
    FileSwitch,
    RehashSwitch,
    TransportSwitch,
    UpgradeSwitch,
    XferSwitch,
    SizeSwitch,
    ConfigSwitch,
    NoSignalHandler,
    BindFailed,
    Connected,
    ClosingClient,
    ShuttingDown,
    PrefixReadError,
    BadPrefix,
    Expecting,
    TextReadError,
    EndInsideText,
    Incoming,
    HeaderByte,
    SendFailed,
    SentWrongSize,
    NotXml,
    NoRequest,
    UnknownMessage,
    Opening,
    UnexpectedAnswer,
    NoSource,
    NoEventTag,
    EventWithoutText,
    NoEvents,
    EventFault,
    EventReidWrong,
    NoDescription,
    EmptyDescription,
    DescriptionWithoutReid,
    DescriptionReidWrong,
    EventWithoutFiles,
    FileWithoutNames,
    SameHash,
    NewHash,
    NoLength,
    NoHash,
    FileDone,
    WrongFile,
    FilesLeft,
    FileFault,
    TransportFault,
    RehashFault,
    XferFault,
    LastFile,
    SendingComplete,
    AckWithoutReid,
    AckReidWrong,
    Acknowledged,
    SendingDone,
    InvalidEventReid,
    TransportReid,
    XferReid,
    ReidNotExpected,
    UnexpectedRefusal,
    RefusalWithoutReid,
    TransportWithoutReid,
    XferWithoutReid,
    Count
};

/// @return what the text of a statement is a sign of; Sign::None for those that say nothing further
Sign SignOf(std::string_view text);

/// @return the part of the text after the sign's fixed beginning
std::string_view Behind(Sign sign, std::string_view text);

}  // namespace rig::log
