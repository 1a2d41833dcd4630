#include "tests/support/Command.h"

#include <unistd.h>

#include <cstdlib>
#include <iterator>
#include <sstream>

void Command::Run() {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    execvp(program.c_str(), arguments.data());
    _exit(127);
}

std::string Command::Line() const {
    std::string line = program;
    for (std::size_t word = 1; word < words.size(); ++word) {
        line += " " + words[word];
    }
    return line;
}

Command CommandOf(const char* variable, const std::string& program, const std::string& name,
                  const std::vector<std::string>& arguments) {
    const char* const other = std::getenv(variable);
    std::istringstream text(other == nullptr ? "" : other);
    std::vector<std::string> words{std::istream_iterator<std::string>(text), {}};
    Command command{words.empty() ? program : words.front(), words};
    if (words.empty()) {
        command.words = {name};
    }
    command.words.insert(command.words.end(), arguments.begin(), arguments.end());
    return command;
}

Command HarnessCommand(const std::vector<std::string>& switches) {
    return CommandOf("VELLORAN_HARNESS", VELLORAN_PROGRAM, "velloran", switches);
}
