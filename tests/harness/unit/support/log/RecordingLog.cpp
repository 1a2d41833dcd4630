#include <cerrno>
#include <sstream>

#include "tests/harness/unit/support/Journal.h"
#include "tests/harness/unit/support/log/LogClient.h"
#include "tests/harness/unit/support/log/SysLogMsg.h"

namespace {

std::ostringstream& SharedStream() {
    static std::ostringstream stream;
    return stream;
}

}  // namespace

LogClient* LogClient::Instance() {
    static auto* const instance = new LogClient;
    return instance;
}

void LogClient::ProcessName(const std::string& name) {
    name_ = name;
}

std::string LogClient::ProcessName() const {
    return name_;
}

void LogClient::Level(unsigned int mask) {
    mask_ = mask;
}

unsigned int LogClient::Level() const {
    errno = 0;
    return mask_;
}

std::ostream& LogMsg::Log(unsigned int level, const std::string& processName) {
    level_ = level;
    processName_ = processName;
    errno = 0;
    SharedStream().str("");
    return SharedStream();
}

SysLogMsg::~SysLogMsg() {
    AddLogLine(level_, processName_, SharedStream().str());
}
