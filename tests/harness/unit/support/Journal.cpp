#include "tests/harness/unit/support/Journal.h"

#include <unistd.h>

#include <cstdio>

#include "LogClient.h"

namespace {

struct State {
    std::string lines;
    std::size_t count = 0;
    std::size_t limit = 0;  // 0: none
    bool echo = false;
    std::vector<std::string> rawLogLines;
};

State& TheJournal() {
    static State state;
    return state;
}

std::string LogLine(unsigned int level, const std::string& text) {
    return "log " + std::to_string(level) + ": " + Shown(text);
}

/// @return the length of the "velloran:LINE " that a line starts with; 0 if it starts otherwise
std::size_t HeadLength(const std::string& line) {
    const std::string name = "velloran:";
    const std::size_t end = line.find_first_not_of("0123456789", name.size());
    const bool isHead = line.compare(0, name.size(), name) == 0 and end not_eq std::string::npos and
                        end > name.size() and line[name.size()] not_eq '0' and line[end] == ' ';
    return isHead ? end + 1 : 0;
}

}  // namespace

Entry Logged(unsigned int level, const std::string& text) {
    return {LogLine(level, text), level};
}

Entry Read(std::size_t asked, std::size_t got) {
    return {"read " + std::to_string(asked) + ": got " + std::to_string(got)};
}

Entry ReadFailed(std::size_t asked, int error) {
    return {"read " + std::to_string(asked) + ": error " + std::to_string(error)};
}

Entry Wrote(const std::string& bytes) {
    return WroteOnly(bytes, static_cast<long>(bytes.size()));
}

Entry WroteOnly(const std::string& bytes, long result) {
    return {"write '" + Shown(bytes) + "': " + std::to_string(result)};
}

Entry Paused(unsigned int microseconds) {
    return {"usleep " + std::to_string(microseconds)};
}

Entry Slept(unsigned int seconds) {
    return {"sleep " + std::to_string(seconds)};
}

Entry Ran(const std::string& command) {
    return {"system '" + Shown(command) + "'"};
}

Entry Saved(const std::string& path, const std::string& content) {
    return {"save '" + Shown(path) + "': '" + Shown(content) + "'"};
}

Entry AssertionFailed(const std::string& function, const std::string& expression) {
    return {"assertion failed in " + function + ": " + expression};
}

Entries Uncaught(const std::string& type, const std::string& what) {
    return std::vector<Entry>{{"terminate called after throwing an instance of '" + type + "'"},
                              {"  what():  " + what}};
}

Entry Printed(const std::string& line) {
    return {line};
}

Entries Nothing() {
    return std::vector<Entry>();
}

void AddToJournal(const std::string& line) {
    State& journal = TheJournal();
    if (journal.limit not_eq 0 and journal.count == journal.limit) {
        _exit(kJournalFull);
    }
    ++journal.count;
    journal.lines += line + "\n";
    if (journal.echo) {
        fputs((line + "\n").c_str(), stderr);
    }
}

void AddLogLine(unsigned int level, const std::string& processName, const std::string& line) {
    TheJournal().rawLogLines.push_back(line);
    const std::size_t head = HeadLength(line);
    std::string faults;
    if (head == 0) {
        faults += " (does not start with velloran:LINE)";
    }
    if (processName not_eq "velloran") {
        faults += " (logged in the name of '" + processName + "')";
    }
    AddToJournal(LogLine(level, line.substr(head)) + faults);
}

void LimitJournal(std::size_t lines) {
    TheJournal().limit = lines;
    TheJournal().count = 0;
}

void EchoJournal() {
    TheJournal().echo = true;
}

std::string TakeJournal() {
    State& journal = TheJournal();
    journal.rawLogLines.clear();
    std::string lines;
    lines.swap(journal.lines);
    return lines;
}

const std::vector<std::string>& RawLogLines() {
    return TheJournal().rawLogLines;
}

std::string Expected(std::initializer_list<Entries> entries) {
    const unsigned int mask = LogClient::Instance()->Level();
    std::string lines;
    for (const Entries& group : entries) {
        for (const Entry& entry : group) {
            if (entry.level == 0 or (entry.level & mask) not_eq 0) {
                lines += entry.text + "\n";
            }
        }
    }
    return lines;
}

std::string Shown(const std::string& bytes) {
    std::string shown;
    for (const char character : bytes) {
        const unsigned int byte = static_cast<unsigned char>(character);
        if (character == '\\') {
            shown += "\\\\";
        } else if (byte < 0x20 or byte > 0x7e) {
            char code[5];
            snprintf(code, sizeof code, "\\x%02x", byte);
            shown += code;
        } else {
            shown += character;
        }
    }
    return shown;
}
