#pragma once

#include <cstdint>

#include "protocol/VelProtocolBase.h"

/// The newer dialect: events are listed first and fetched one by one. All switches act.
///
///     DVR                                        harness
///     OK                                         (UPDATE_SOFTWARE,) GET_EVENT_LIST or UPDATE_CONFIGURATION
///     EVENT_LIST                                 NEXT_EVENT
///     EVENT                                      GET_FILE of its first file
///     FILE_COMPLETE                              GET_FILE of the next file
///     FILE_COMPLETE of the event's last file     EVENT_XFER_COMPLETE
///     EVENT_XFER_ACK                             NEXT_EVENT or DONE
///     INVALID_EVENT                              NEXT_EVENT or GET_FILE: the request that was not damaged
///     TRANSPORT_EXCEPTION                        GET_FILE: the file again
///     XFER_IN_PROGRESS, SOFTWARE_UPDATE_CONFIRM, CONFIGURATION_UPDATE_ERROR    nothing
///
/// What is missing or unexpected in a message is logged, and the dialogue goes on from the lists. A handler
/// of a document without `msg` takes every attribute for absent.
class VelProtocol_2_0 : public VelProtocolBase {
 public:
    using VelProtocolBase::VelProtocolBase;

    /// Returns MSG_CLOSE_CLIENT only when `closeEarly` has ended the export.
    e_MsgReturn HandleMessage() override;

    /// Sends UPDATE_CONFIGURATION, which the DVR must refuse. Logs nothing.
    void SendConfigUpdateRequest();

    /// Appends the listed event identifiers to `events`. Sends nothing.
    void Handle_EVENT_LIST(TiXmlDocument& document);

    /// Sends NEXT_EVENT. Logs nothing.
    void SendNextEvent(const std::string& reid);

    /// Checks that the description is of the event asked for, saves it as "/mnt/hd/incoming_" and its
    /// identifier, and queues its files. Sends nothing. Ends the process on a description that is not XML.
    void Handle_EVENT_msg(TiXmlDocument& document);

    /// Drops the front file, on which the DVR has just reported, and sends what comes next: a GET_FILE, on
    /// the last file of an event with the fault that a switch asks for, or EVENT_XFER_COMPLETE when no file
    /// is left. Without a front file it goes straight to EVENT_XFER_COMPLETE.
    void CheckFileTestOptions();

    /// Sends GET_FILE. Logs nothing.
    /// @param rehashed  whether to ask for a new hash
    void SendFileRequest(FileEntry& file, bool rehashed);

    /// Compares the hashes of the rehash test, and goes on to the next file if the front one is complete.
    void Handle_FILE_COMPLETE(TiXmlDocument& document);

    /// Drops the front event and asks for the next, or sends DONE.
    e_MsgReturn Handle_EVENT_XFER_ACK(TiXmlDocument& document);

    /// The answers to injected faults. Each acts on what is pending here, whatever identifier the DVR names.
    void Handle_INVALID_EVENT(TiXmlDocument& document);
    void Handle_TRANSPORT_EXCEPTION(TiXmlDocument& document);
    void Handle_XFER_IN_PROGRESS(TiXmlDocument& document);

    std::uint32_t invalidFileCount = 0;  // INVALID_EVENTs that came while files were pending, provoked or not
    bool fileRequestPending = false;     // a GET_FILE is unanswered
    bool eventRequestPending = false;    // a NEXT_EVENT is unanswered
    bool rehashPending = false;          // the next plain request of the last file asks for a new hash

 private:
    void Handle_OK();
    void SendFirstNextEvent();
    void SendLastFileRequest();
    void SendDamagedFileRequest();
    void SendEventXferComplete();
    void SendDone();
    std::string FrontEvent() const;
};
