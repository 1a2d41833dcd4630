#pragma once

#include <string>

/// The unit tests' own platform logger, with no part of ours in it: its lines go to the journal. That the
/// harness builds with it also shows that a rig's own logger can replace ours. It offers only what any such
/// logger must: the name is returned as a copy, and each use clears errno.
class LogClient {
 public:
    static LogClient* Instance();

    void ProcessName(const std::string& name);
    std::string ProcessName() const;

    void Level(unsigned int mask);
    unsigned int Level() const;

 private:
    std::string name_;
    unsigned int mask_ = 0;
};
