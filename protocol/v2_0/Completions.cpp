#include <tinyxml.h>

#include "protocol/Log.h"
#include "protocol/Message.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

namespace {

/// Logs the outcome of the rehash test. A new hash is no error: only the DVR knows whether the file has
/// changed.
/// @param hashCode, length  as the DVR gave them; null where it did not
void LogRehash(const char* hashCode, const char* length, const std::string& lastHashCode) {
    if (length == nullptr) {
        VEL_LOG(2) << "'length' attribute not present when requested";
        length = "";
    }
    if (hashCode == nullptr) {
        VEL_LOG(2) << "'hashCode' attribute not present when requested";
    } else if (lastHashCode == hashCode) {
        VEL_LOG(16) << "rehash resulted in same hash: '" << hashCode << "'  len=" << length;
    } else {
        VEL_LOG(16) << "rehash resulted in new hash: old='" << lastHashCode << "'  new='" << hashCode
                    << "'  len=" << length;
    }
}

}  // namespace

void VelProtocol_2_0::Handle_FILE_COMPLETE(TiXmlDocument& document) {
    // The last hash that came with any FILE_COMPLETE, for the right file or not. Never destroyed: exit in the
    // SIGINT handler must free nothing that the interrupted statement changes.
    static std::string& lastHashCode = *new std::string;

    fileRequestPending = false;
    const char* const reid = MsgAttribute(document, "reid");
    const char* const file = MsgAttribute(document, "file");
    if (reid == nullptr or file == nullptr) {
        VEL_LOG(2) << "Got FILE_COMPLETE without both reid and file";
        return;
    }
    const char* const hashCode = MsgAttribute(document, "hashCode");
    if (rehashPending and filesToReceive.size() == 1) {
        LogRehash(hashCode, MsgAttribute(document, "length"), lastHashCode);
        rehashPending = false;
    }
    if (hashCode) {
        lastHashCode = hashCode;
    }
    if (filesToReceive.empty() or filesToReceive.front().first not_eq reid or
        filesToReceive.front().second not_eq file) {
        VEL_LOG(1) << "invalid file in FILE_COMPLETE: " << document;
        return;
    }
    VEL_LOG(64) << "Got FILE_COMPLETE for: reid=" << reid << "  file=" << file;
    CheckFileTestOptions();
}

VelProtocolBase::e_MsgReturn VelProtocol_2_0::Handle_EVENT_XFER_ACK(TiXmlDocument& document) {
    const char* const reid = MsgAttribute(document, "reid");
    if (reid == nullptr) {
        VEL_LOG(2) << "Got EVENT_XFER_ACK with no reid attribute";
        return MSG_CONTINUE;
    }
    if (events.empty() or events.front() not_eq reid) {
        VEL_LOG(2) << "In EVENT_XFER_ACK, got unexpected reid: exp='" << FrontEvent() << "'  act='" << reid
                   << "'";
        return MSG_CONTINUE;
    }
    events.pop_front();
    VEL_LOG(32) << "Got EVENT_XFER_ACK for: reid='" << reid << "'";
    if (not events.empty() and closeEarly not_eq 1) {
        SendNextEvent(events.front());
        if (static_cast<unsigned int>(closeEarly) > 1) {
            --closeEarly;
        }
        return MSG_CONTINUE;
    }
    SendDone();
    return closeEarly == 1 ? MSG_CLOSE_CLIENT : MSG_CONTINUE;
}

void VelProtocol_2_0::SendDone() {
    VEL_LOG(16) << "Sending DONE";
    TiXmlDocument done;
    TiXmlElement* const msg = AddMsg(done, "DONE");
    msg->SetAttribute("protocolVersion", "2.0");
    if (doneDuration not_eq 0) {
        msg->SetAttribute("duration", doneDuration);
    }
    SendMessage(done);
}
