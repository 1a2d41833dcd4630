#pragma once

#include <string>
#include <vector>

/// How to start one of the real programs. The environment may name another one instead, in words separated by
/// blanks, such as "qemu-arm -0 velloran -L /usr/arm-linux-gnueabihf build/armhf/bin/velloran".
struct Command {
    std::string program;             // its file, or the emulator's
    std::vector<std::string> words;  // from its name on

    /// Becomes the program. Called in a new process.
    [[noreturn]] void Run();

    /// As a shell takes it.
    std::string Line() const;
};

/// @param variable  of the environment that may name another one
/// @param program,name  the file of the usual one, and what it is called
Command CommandOf(const char* variable, const std::string& program, const std::string& name,
                  const std::vector<std::string>& arguments);

/// The harness, or what VELLORAN_HARNESS names.
Command HarnessCommand(const std::vector<std::string>& switches = {});
