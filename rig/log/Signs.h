#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace rig::log {

/// What a statement of the harness's log is a sign of. doc/log.md explains the statements.
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
    TextRead,
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
    UpdateConfirmed,
    ConfigRefused,
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
    ReportedEvent,
    AckWithoutReid,
    AckReidWrong,
    Acknowledged,
    SendingDone,
    Count
};

/// The beginning of a statement's text, and what it is a sign of.
struct Beginning {
    Sign sign;
    std::string_view text;
};

/// @return every beginning that has a meaning; none is the beginning of another
const std::vector<Beginning>& Beginnings();

/// @return the beginning of this text; Sign::None and no text for one without further meaning
Beginning BeginningOf(std::string_view text);

/// @return whether the statement echoes a switch of the harness
inline bool IsSwitch(Sign sign) {
    return sign >= Sign::CloseSwitch && sign <= Sign::ConfigSwitch;
}

}  // namespace rig::log
