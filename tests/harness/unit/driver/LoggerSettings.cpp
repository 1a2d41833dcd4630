#include "tests/harness/unit/driver/LoggerSettings.h"

#include <cerrno>

#include "LogClient.h"
#include "SysLogMsg.h"

Entry NamedTheProcess(const std::string& name) {
    return {"process name '" + name + "'"};
}

Entry SetTheLevelMask(unsigned int mask) {
    return {"level mask " + std::to_string(mask)};
}

// The mangled names of LogClient::ProcessName, LogClient::Level and LogMsg::Log.
#define PROCESS_NAME(kind) \
    kind##_ZN9LogClient11ProcessNameERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE
#define LEVEL(kind) kind##_ZN9LogClient5LevelEj
#define LOG(kind) kind##_ZN6LogMsg3LogEjRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE

extern "C" {

void PROCESS_NAME(__real_)(LogClient* client, const std::string& name);
void LEVEL(__real_)(LogClient* client, unsigned int mask);
std::ostream& LOG(__real_)(LogMsg* message, unsigned int level, const std::string& processName);

void PROCESS_NAME(__wrap_)(LogClient* client, const std::string& name) {
    AddToJournal(NamedTheProcess(name).text);
    PROCESS_NAME(__real_)(client, name);
}

void LEVEL(__wrap_)(LogClient* client, unsigned int mask) {
    AddToJournal(SetTheLevelMask(mask).text);
    LEVEL(__real_)(client, mask);
}

std::ostream& LOG(__wrap_)(LogMsg* message, unsigned int level, const std::string& processName) {
    errno = EDOM;
    return LOG(__real_)(message, level, processName);
}
}
