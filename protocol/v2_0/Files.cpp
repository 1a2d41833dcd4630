#include <tinyxml.h>
#include <unistd.h>

#include <cstdlib>

#include "protocol/Log.h"
#include "protocol/Message.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

namespace {

/// Puts a copy of the front entry in front of it: the faulty request's own, which its answer then drops.
void DuplicateFront(std::list<VelProtocolBase::FileEntry>& files) {
    files.push_front(files.front());
}

}  // namespace

void VelProtocol_2_0::CheckFileTestOptions() {
    if (not filesToReceive.empty()) {
        filesToReceive.pop_front();
    }
    VEL_LOG(32) << "filesToReceive size = " << filesToReceive.size();
    if (filesToReceive.empty()) {
        SendEventXferComplete();
    } else if (filesToReceive.size() == 1) {
        SendLastFileRequest();
    } else {
        SendFileRequest(filesToReceive.front(), false);
        sleep(static_cast<unsigned int>(sleepForGetFile));
    }
}

void VelProtocol_2_0::SendLastFileRequest() {
    if (invalidFile) {
        SendDamagedFileRequest();
    } else if (transportException) {
        VEL_LOG(32) << "processing 'transportException' option";
        DuplicateFront(filesToReceive);
        [[maybe_unused]] const int status = system("touch /mnt/hd/velloranFail");
        SendFileRequest(filesToReceive.front(), false);
    } else if (rehash) {
        VEL_LOG(32) << "processing 'rehash' option";
        DuplicateFront(filesToReceive);
        rehash = false;
        rehashPending = true;
        // This first request asks for no new hash; the plain one that follows does.
        SendFileRequest(filesToReceive.front(), false);
    } else if (xferInProgress) {
        VEL_LOG(32) << "processing 'xferInProgress' option";
        SendFileRequest(filesToReceive.front(), false);
        SendFileRequest(filesToReceive.front(), false);
        xferInProgress = false;
    } else {
        VEL_LOG(32) << "calling SendFileRequest(" << filesToReceive.front().first << "/"
                    << filesToReceive.front().second << ", " << (rehashPending ? "true" : "false") << ")";
        SendFileRequest(filesToReceive.front(), rehashPending);
    }
}

void VelProtocol_2_0::SendDamagedFileRequest() {
    VEL_LOG(32) << "processing 'invalidFile' option, cnt=" << invalidFileCount;
    if (invalidFileCount == 0) {
        DuplicateFront(filesToReceive);
        filesToReceive.front().first.erase(0, 3);
        SendFileRequest(filesToReceive.front(), false);
    } else if (invalidFileCount == 1) {
        DuplicateFront(filesToReceive);
        filesToReceive.front().second.erase(0, 3);
        SendFileRequest(filesToReceive.front(), false);
        invalidFile = false;
    }
    // Any other count sends nothing: a DVR that refused files before the fault was injected is left waiting.
}

void VelProtocol_2_0::SendFileRequest(FileEntry& file, bool rehashed) {
    TiXmlDocument request;
    TiXmlElement* const msg = AddMsg(request, "GET_FILE");
    msg->SetAttribute("reid", file.first);
    // The path carries the event identifier again, not a folder.
    msg->SetAttribute("path", file.first);
    msg->SetAttribute("file", file.second);
    msg->SetAttribute("protocolVersion", "2.0");
    if (rehashed) {
        msg->SetAttribute("rehash", "true");
    }
    fileRequestPending = true;
    SendMessage(request);
}

void VelProtocol_2_0::SendEventXferComplete() {
    VEL_LOG(16) << "Sending EVENT_XFER_COMPLETE";
    TiXmlDocument report;
    TiXmlElement* const msg = AddMsg(report, "EVENT_XFER_COMPLETE");
    msg->SetAttribute("reid", FrontEvent());
    msg->SetAttribute("protocolVersion", "2.0");
    report.SaveFile(kOutgoingEventXferComplete);
    SendMessage(report);
}
