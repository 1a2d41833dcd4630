#include "SysLogMsg.h"

#include "LogClient.h"

SysLogMsg::~SysLogMsg() {
    if (processName_ == nullptr) {
        return;
    }
    line_.Append("\n", 1);
    LogClient::Instance()->Write(line_.Data(), line_.Size(), text_, level_, *processName_);
}
