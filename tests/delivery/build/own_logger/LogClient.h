#pragma once

#include <string>

/// A rig's logger as another vendor might write it: the same operations, otherwise unlike ours.
struct LogClient {
    static LogClient* Instance();
    int ProcessName(const std::string& name);
    std::string ProcessName();
    int Level(unsigned int mask);
    unsigned int Level();
};
