#pragma once

#include "LogMsg.h"

/// A log message for standard output and syslog. Emitted by its destructor, at the end of the statement that
/// logs.
class SysLogMsg : public LogMsg {
 public:
    SysLogMsg() = default;
    ~SysLogMsg() override;
    SysLogMsg(const SysLogMsg&) = delete;
    SysLogMsg& operator=(const SysLogMsg&) = delete;
};
