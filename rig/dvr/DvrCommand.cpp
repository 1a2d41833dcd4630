#include "rig/dvr/DvrCommand.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>

#include "rig/dvr/Connection.h"
#include "rig/dvr/Dialogue_1_0.h"
#include "rig/dvr/Dialogue_2_0.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/FolderRecordings.h"
#include "rig/dvr/Injector.h"
#include "rig/dvr/Printable.h"
#include "rig/dvr/Session.h"
#include "rig/dvr/SyntheticRecordings.h"
#include "rig/dvr/Transcript.h"

namespace rig {
namespace {

/// The harness makes this file to ask for failing transfers, and removes it again.
constexpr const char* kFailureMarker = "/mnt/hd/velloranFail";

constexpr double kLongestSeconds = 86'400;
constexpr int kLongestTransfer = 3'600'000;  // milliseconds

constexpr const char* kExitStatuses =
    "Exit status: 0 the dialogue ran to DONE (or to the refusal of a configuration update, after which the "
    "harness\n"
    "asks for nothing more); 1 the harness broke the protocol or closed the connection early; 2 usage "
    "error;\n"
    "3 nothing came within --timeout, or no connection within --wait.\n"
    "\n"
    "The DVR closes the connection when the dialogue is done. In protocol 2.0 the harness does not expect "
    "that unless\n"
    "it was started with -c: it then spins on the closed connection until it is interrupted.";

/// @return a check of an option's value for a number from `low` to `high`. "nan" is none.
template <typename Number>
CLI::Validator Between(Number low, Number high) {
    const auto check = [low, high](const std::string& text) {
        Number number{};
        if (CLI::detail::lexical_cast(text, number) && number >= low && number <= high) {
            return std::string();
        }
        std::ostringstream expected;
        expected << std::fixed << std::setprecision(0) << "expected a number from " << low << " to " << high;
        return expected.str() + ", found '" + text + "'";
    };
    return CLI::Validator(check, "");
}

Milliseconds FromSeconds(double seconds) {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::duration<double>(seconds));
}

std::unique_ptr<Recordings> OpenRecordings(const DvrOptions& options) {
    if (options.hasRecordings) {
        return std::make_unique<FolderRecordings>(options.recordings);
    }
    return std::make_unique<SyntheticRecordings>();
}

std::unique_ptr<Dialogue> NewDialogue(const DvrOptions& options, const Recordings& recordings) {
    if (options.protocol == 2) {
        return std::make_unique<Dialogue_2_0>(recordings, kFailureMarker);
    }
    return std::make_unique<Dialogue_1_0>(recordings);
}

bool WantsColour() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr && terminal != nullptr &&
           std::string(terminal) != "dumb";
}

/// @return the site that --on and --at name. Throws Failure (UsageError) when they do not make one.
DefectSite SiteOf(const DefectOption& option, const Recordings& recordings) {
    DefectSite site;
    const std::size_t colon = option.on.find(':');
    site.message = option.on.substr(0, colon);
    if (colon != std::string::npos) {
        const std::string number = option.on.substr(colon + 1);
        if (!CLI::detail::lexical_cast(number, site.occurrence) || site.occurrence == 0) {
            throw Failure(ExitStatus::UsageError,
                          "--on: expected MESSAGE or MESSAGE:N with N above 0, found " + Quoted(option.on));
        }
    }
    if (option.at.empty() || recordings.Has(option.at)) {
        site.event = option.at;
        return site;
    }
    // Identifiers may hold colons: the first one that parts an event from a file of it counts.
    for (std::size_t part = option.at.find(':'); part != std::string::npos;
         part = option.at.find(':', part + 1)) {
        site.event = option.at.substr(0, part);
        site.file = option.at.substr(part + 1);
        if (recordings.Has(site.event)) {
            return site;
        }
    }
    throw Failure(ExitStatus::UsageError, "--at: expected EVENT or EVENT:FILE with an event in " +
                                              recordings.Origin() + ", found " + Quoted(option.at));
}

Injector NewInjector(const DvrOptions& options, const Recordings& recordings, std::uint32_t seed) {
    Injector injector(recordings, options.protocol, seed);
    for (const DefectOption& option : options.defects) {
        injector.Add(option.defect, SiteOf(option, recordings));
    }
    return injector;
}

/// Holds one dialogue on a connection of its own. @return whether a defect asks for another
bool PlayOnce(const DvrOptions& options, const Recordings& recordings, const Endpoint& endpoint,
              Injector& injector, Transcript& transcript) {
    const std::unique_ptr<Dialogue> dialogue = NewDialogue(options, recordings);
    Connection connection = Connection::Open(endpoint, FromSeconds(options.wait));
    transcript.Note("connected; -> is sent by the DVR, <- by the harness");
    Session session(connection, *dialogue, transcript,
                    {FromSeconds(options.timeout), FromSeconds(options.frameTimeout),
                     Milliseconds(options.transferTime)});
    if (injector.HasDefects()) {
        session.Misbehave(injector, endpoint);
    }
    try {
        session.Run();
    } catch (const Failure&) {
        transcript.Note("not finished: " + dialogue->Summary());
        throw;
    }
    transcript.Note((dialogue->IsDone() ? "" : "not finished: ") + dialogue->Summary());
    return session.Reconnects();
}

/// Connects and plays; throws Failure for every end but the good one.
void Play(const DvrOptions& options) {
    const std::unique_ptr<Recordings> recordings = OpenRecordings(options);
    const std::uint32_t seed = options.seed.value_or(std::random_device()());
    Injector injector = NewInjector(options, *recordings, seed);
    const Endpoint endpoint(options.host, options.port);
    Transcript transcript(std::cout, WantsColour());
    transcript.Note("protocol " + std::to_string(options.protocol) + ".0, " +
                    std::to_string(recordings->Events().size()) + " events in " + recordings->Origin() +
                    ", waiting for the harness at " + endpoint.Name());
    if (injector.HasDefects()) {
        transcript.Note("seed " + std::to_string(seed));
    }
    while (PlayOnce(options, *recordings, endpoint, injector, transcript)) {
        transcript.Note("connecting again, as told");
    }
    if (!std::cout) {
        throw Failure(ExitStatus::UsageError,
                      "expected standard output to take the transcript, found that it did not");
    }
}

int Report(ExitStatus status, const std::string& text) {
    std::cerr << "velloran-rig dvr: " << text << std::endl;
    return static_cast<int>(status);
}

}  // namespace

void AddDvrCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<DvrOptions>();
    CLI::App* const dvr = app.add_subcommand("dvr", "Plays a DVR that exports its recordings to the harness");
    dvr->footer(kExitStatuses);
    dvr->add_option("--protocol", options->protocol, "Dialect, as the harness was told with its -p")
        ->check(Between(1, 2))
        ->type_name("1|2")
        ->capture_default_str();
    dvr->add_option("--host", options->host, "Where the harness runs")
        ->type_name("HOST")
        ->capture_default_str();
    dvr->add_option("--port", options->port, "Where it listens")
        ->check(Between(1, 65535))
        ->type_name("PORT")
        ->capture_default_str();
    const auto* const recordings =
        dvr->add_option("--recordings", options->recordings,
                        "Folder with one folder of files for each event (default: a few synthetic events)")
            ->type_name("DIR");
    const auto addSeconds = [dvr](const char* name, double& seconds, const char* text) {
        dvr->add_option(name, seconds, text)
            ->check(Between(0.0, kLongestSeconds))
            ->type_name("SECONDS")
            ->capture_default_str();
    };
    addSeconds("--wait", options->wait, "How long to try to connect");
    addSeconds("--timeout", options->timeout, "How long to wait for each message of the harness");
    addSeconds("--frame-timeout", options->frameTimeout,
               "How long the rest of a message may stay out, as it does for good when its prefix announces "
               "too much");
    dvr->add_option("--transfer-time", options->transferTime,
                    "How long the transfer of a file takes, in ms; a second request for it in that time gets "
                    "XFER_IN_PROGRESS")
        ->check(Between(0, kLongestTransfer))
        ->type_name("MS")
        ->capture_default_str();
    // In the order of the command line: a place belongs to the defect before it.
    const auto lastDefect = [options](const char* option) -> DefectOption& {
        if (options->defects.empty()) {
            throw CLI::ValidationError(option, "expected a --defect before it, found none");
        }
        return options->defects.back();
    };
    dvr->add_option_function<std::string>(
           "--defect",
           [options](const std::string& defect) {
               options->defects.push_back({defect, "", ""});
           },
           "A way in which to be wrong (see --list-defects); may be given several times")
        ->type_name("NAME[=VALUE]")
        ->trigger_on_parse();
    dvr->add_option_function<std::string>(
           "--on", [lastDefect](const std::string& site) { lastDefect("--on").on = site; },
           "The defect before it acts on each MESSAGE of the DVR, or only on the Nth (default: the first it "
           "can "
           "change)")
        ->type_name("MESSAGE[:N]")
        ->trigger_on_parse();
    dvr->add_option_function<std::string>(
           "--at", [lastDefect](const std::string& site) { lastDefect("--at").at = site; },
           "The defect before it acts only on messages about this event, or this file of it")
        ->type_name("EVENT[:FILE]")
        ->trigger_on_parse();
    dvr->add_option("--seed", options->seed, "Repeats the random choices of an earlier run")->type_name("N");
    dvr->add_flag_callback(
        "--list-defects",
        [] {
            std::cout << ListDefects();
            throw CLI::Success();
        },
        "Print the table of defects and exit");
    dvr->callback([options, recordings, &status] {
        options->hasRecordings = recordings->count() > 0;
        status = RunDvr(*options);
    });
}

int RunDvr(const DvrOptions& options) {
    try {
        Play(options);
        return static_cast<int>(ExitStatus::Complete);
    } catch (const Failure& failure) {
        return Report(failure.Status(), failure.what());
    } catch (const std::exception& error) {  // of the system or a library: nothing the harness did
        return Report(ExitStatus::UsageError, Printable(error.what()));
    }
}

}  // namespace rig
