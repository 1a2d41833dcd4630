#pragma once

#include <sstream>
#include <string>

class LogMsg {
 public:
    std::ostream& Log(unsigned int level, const std::string& processName);

 protected:
    std::ostringstream text;
};
