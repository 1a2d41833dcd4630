#pragma once

namespace rig {

/// Reads the command line of velloran-rig and runs the subcommand that it asks for. Throws for a command line
/// that no subcommand takes, and whatever the subcommands throw. @return the exit status
int RunCommandLine(int argc, char** argv);

}  // namespace rig
