#pragma once

#include <string>

/// A rig's logger as another maker would write it: the same operations, and nothing else like ours.
struct LogClient {
    static LogClient* Instance();
    int ProcessName(const std::string& name);
    std::string ProcessName();
    int Level(unsigned int mask);
    unsigned int Level();
};
