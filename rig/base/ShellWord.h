#pragma once

#include <string>

namespace rig {

/// @return the text as a word that the shell takes literally
inline std::string ShellWord(const std::string& text) {
    std::string word = "'";
    for (const char one : text) {
        word += one == '\'' ? std::string("'\\''") : std::string(1, one);
    }
    return word + "'";
}

}  // namespace rig
