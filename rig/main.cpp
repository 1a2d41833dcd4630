#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <string>

#include "rig/campaign/RunCommand.h"
#include "rig/common/Printable.h"
#include "rig/diff/DiffCommand.h"
#include "rig/dvr/DvrCommand.h"
#include "rig/dvr/Failure.h"
#include "rig/judge/JudgeCommand.h"

namespace {

constexpr const char* kVersion = "velloran-rig " VELLORAN_VERSION;
constexpr int kUsage = 64;  // of all but dvr: 2 says there that the verdict is inconclusive

/// Reads the command line and runs the subcommand that it asks for. @return the exit status
int Run(int argc, char** argv) {
    CLI::App app("Companion tools of the velloran test harness", "velloran-rig");
    app.set_version_flag("--version", kVersion);
    int status = 0;
    rig::AddDvrCommand(app, status);
    rig::AddJudgeCommand(app, status);
    rig::AddRunCommand(app, status);
    rig::AddDiffCommand(app, status);
    for (CLI::App* const command : app.get_subcommands({})) {
        command->set_version_flag("--version", kVersion);
    }
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty()) {
            throw CLI::ParseError("expected a subcommand: dvr, judge, run or diff",
                                  CLI::ExitCodes::RequiredError);
        }
    } catch (const CLI::Success& asked) {  // --help and --version
        return app.exit(asked);
    } catch (const CLI::ParseError& error) {
        for (const std::string command : {"judge", "run", "diff"}) {
            if (app.got_subcommand(command)) {
                std::cerr << "velloran-rig " << command << ": " << rig::Printable(error.what())
                          << " (velloran-rig " << command << " --help tells more)\n";
                return kUsage;
            }
        }
        throw;
    }
    return status;
}

}  // namespace

// velloran-rig: what stands beside the harness. Each subcommand adds itself to the command line and says
// there what its exit statuses mean; whatever is wrong with the command line itself ends with status 2 and
// one line.
int main(int argc, char** argv) {
    // A reader of our output who leaves (`| head`) must not end an export in the middle.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "velloran-rig: " << rig::Printable(error.what())
                  << " (velloran-rig --help tells more)\n";
        return static_cast<int>(rig::ExitStatus::UsageError);
    }
}
