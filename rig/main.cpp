#include <csignal>
#include <exception>
#include <iostream>

#include "rig/CommandLine.h"
#include "rig/base/Complaint.h"
#include "rig/base/Printable.h"

// velloran-rig: the harness's companion tools. Each subcommand adds itself to the command line and says there
// what its exit statuses mean; a command line that no subcommand answers for ends with status 64 and one
// line.
int main(int argc, char** argv) {
    // A reader of our output that leaves (`| head`) must not end an export halfway.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return rig::RunCommandLine(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "velloran-rig: " << rig::Printable(error.what())
                  << " (velloran-rig --help tells more)\n";
        return rig::kUsageStatus;
    }
}
