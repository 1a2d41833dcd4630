#pragma once

#include <ostream>
#include <string>
#include <vector>

/// The content of a `recording-event`, and the names of the files that the harness takes from it, in order.
struct Content {
    std::string name;
    std::string text;
    std::vector<std::string> files;
};

inline void PrintTo(const Content& content, std::ostream* stream) {
    *stream << content.text;
}

/// Both dialects read them alike.
std::vector<Content> ContentsOfADescription();
