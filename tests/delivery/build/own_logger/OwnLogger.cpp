#include <cstdio>

#include "LogClient.h"
#include "SysLogMsg.h"

static std::string processName = "unnamed";
static unsigned int levelMask = 0;

LogClient* LogClient::Instance() {
    static LogClient client;
    return &client;
}

int LogClient::ProcessName(const std::string& name) {
    std::printf("own logger: name %s\n", name.c_str());
    processName = name;
    return 0;
}

std::string LogClient::ProcessName() {
    return processName;
}

int LogClient::Level(unsigned int mask) {
    std::printf("own logger: mask %u\n", mask);
    levelMask = mask;
    return 0;
}

unsigned int LogClient::Level() {
    return levelMask;
}

std::ostream& LogMsg::Log(unsigned int level, const std::string& name) {
    return text << name << " at " << level << ": ";
}

SysLogMsg::~SysLogMsg() {
    std::printf("own logger: %s\n", text.str().c_str());
}
