#include <tinyxml.h>

#include <cstdlib>

#include "protocol/Log.h"
#include "protocol/Message.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

void VelProtocol_2_0::Handle_INVALID_EVENT(TiXmlDocument& document) {
    const char* const reid = MsgAttribute(document, "reid");
    if (reid == nullptr) {
        VEL_LOG(2) << "'reid' attribute missing from INVALID_EVENT message";
    } else {
        VEL_LOG(16) << "INVALID_EVENT 'reid' attribute = '" << reid << "'";
        if (FrontEvent() not_eq reid) {
            VEL_LOG(2) << "'reid' attribute does not match expected: '" << FrontEvent() << "'";
        }
    }

    if (not filesToReceive.empty()) {
        if (not invalidFile) {
            VEL_LOG(2) << "Received unexpected INVALID_EVENT message!";
        }
        ++invalidFileCount;
        CheckFileTestOptions();
        return;
    }
    if (not events.empty()) {
        events.pop_front();
    }
    invalidEvent = false;
    if (not events.empty()) {
        SendNextEvent(events.front());
    }
}

void VelProtocol_2_0::Handle_TRANSPORT_EXCEPTION(TiXmlDocument& document) {
    const char* const reid = MsgAttribute(document, "reid");
    if (reid == nullptr) {
        VEL_LOG(2) << "'reid' attribute missing from TRANSPORT_EXCEPTION message";
    } else {
        VEL_LOG(16) << "TRANSPORT_EXCEPTION 'reid' attribute = '" << reid << "'";
        const std::string expected = filesToReceive.empty() ? std::string() : filesToReceive.front().first;
        if (expected not_eq reid) {
            // Rigs count this line for a wrong identifier as for a missing one.
            VEL_LOG(2) << "'reid' attribute missing from TRANSPORT_EXCEPTION message";
            VEL_LOG(2) << "'reid' attribute does not match expected: '" << expected << "'";
        }
    }

    transportException = false;
    [[maybe_unused]] const int status = system("rm /mnt/hd/velloranFail");
    CheckFileTestOptions();
}

void VelProtocol_2_0::Handle_XFER_IN_PROGRESS(TiXmlDocument& document) {
    const char* const reid = MsgAttribute(document, "reid");
    if (reid == nullptr) {
        VEL_LOG(2) << "'reid' attribute missing from XFER_IN_PROGRESS message";
    } else {
        VEL_LOG(16) << "XFER_IN_PROGRESS 'reid' attribute = '" << reid << "'";
    }
}
