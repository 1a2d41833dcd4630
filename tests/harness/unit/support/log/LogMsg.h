#pragma once

#include <ostream>
#include <string>

class LogMsg {
 public:
    LogMsg() = default;
    LogMsg(const LogMsg&) = delete;
    LogMsg& operator=(const LogMsg&) = delete;
    virtual ~LogMsg() = default;

    /// @return the one stream that all messages share. Its format flags outlive a message, so a statement
    /// that leaves std::hex set shows in the next line.
    std::ostream& Log(unsigned int level, const std::string& processName);

 protected:
    unsigned int level_ = 0;
    std::string processName_;
};
