#pragma once

#include "LogMsg.h"

class SysLogMsg : public LogMsg {
 public:
    ~SysLogMsg();
};
