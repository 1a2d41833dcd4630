#pragma once

#include "protocol/VelProtocolBase.h"

/// The older dialect: the DVR hands over all event descriptions in one message. Of the switches it heeds only
/// `configUpdate` and, in the framing, `sizeError`.
///
///     DVR                                        harness
///     OK                                         GET_XML (or UPDATE_CONFIGURATION)
///     XML                                        GET_FILE of the first file
///     FILE_COMPLETE                              GET_FILE of the next file
///     FILE_COMPLETE of the last file             EVENT_XFER_COMPLETE, DONE
///     CONFIGURATION_UPDATE_ERROR                 nothing
///
/// What is missing or unexpected in a message is logged, and the dialogue goes on from the lists.
class VelProtocol_1_0 : public VelProtocolBase {
 public:
    using VelProtocolBase::VelProtocolBase;

    /// Returns MSG_CLOSE_CLIENT once DONE has been sent. Neither list is cleared: a later export names the
    /// earlier events again, before its own.
    e_MsgReturn HandleMessage() override;

    /// Sends UPDATE_CONFIGURATION, which the DVR must refuse. Logs nothing.
    void SendConfigUpdateRequest();

    /// Appends the events that an XML message describes, and their files, to the lists. Sends nothing. Ends
    /// the process on a description that is not XML; never returns from one without an identifier.
    void Handle_XML_msg(TiXmlDocument& document);

    /// Sends GET_FILE. Logs nothing and leaves the lists alone.
    void SendFileRequest(FileEntry& file);

 private:
    void Handle_OK();
    e_MsgReturn Handle_FILE_COMPLETE(TiXmlDocument& document);
    void SendEventXferComplete();
};
