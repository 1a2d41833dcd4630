#pragma once

#include "tests/harness/unit/support/log/LogMsg.h"

class SysLogMsg : public LogMsg {
 public:
    SysLogMsg() = default;
    SysLogMsg(const SysLogMsg&) = delete;
    SysLogMsg& operator=(const SysLogMsg&) = delete;

    /// Adds the line to the journal.
    ~SysLogMsg() override;
};
