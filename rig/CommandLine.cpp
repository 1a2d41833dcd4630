#include "rig/CommandLine.h"

#include <CLI/CLI.hpp>
#include <string>

#include "rig/base/Complaint.h"
#include "rig/base/Printable.h"
#include "rig/campaign/RunCommand.h"
#include "rig/diff/DiffCommand.h"
#include "rig/dvr/DvrCommand.h"
#include "rig/history/HistoryCommand.h"
#include "rig/judge/JudgeCommand.h"
#include "rig/merge/MergeCommand.h"
#include "rig/proxy/ProxyCommand.h"

namespace rig {
namespace {

constexpr const char* kVersion = "velloran-rig " VELLORAN_VERSION;

}  // namespace

int RunCommandLine(int argc, char** argv) {
    CLI::App app("Companion tools of the velloran test harness", "velloran-rig");
    app.set_version_flag("--version", kVersion);
    int status = 0;
    dvr::AddDvrCommand(app, status);
    judge::AddJudgeCommand(app, status);
    campaign::AddRunCommand(app, status);
    merge::AddMergeCommand(app, status);
    diff::AddDiffCommand(app, status);
    history::AddHistoryCommand(app, status);
    proxy::AddProxyCommand(app, status);
    for (CLI::App* const command : app.get_subcommands({})) {
        command->set_version_flag("--version", kVersion);
    }
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty()) {
            throw CLI::ParseError("expected a subcommand: dvr, judge, run, merge, diff, history or proxy",
                                  CLI::ExitCodes::RequiredError);
        }
    } catch (const CLI::Success& asked) {  // --help and --version
        return app.exit(asked);
    } catch (const CLI::ParseError& error) {
        for (const CLI::App* const command : app.get_subcommands()) {
            const std::string help = " (velloran-rig " + command->get_name() + " --help tells more)";
            return Complain(command->get_name(), kUsageStatus, Printable(error.what()) + help);
        }
        throw;
    }
    return status;
}

}  // namespace rig
