#include "rig/dvr/DvrCommand.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>

#include "rig/dvr/ChoiceOption.h"
#include "rig/dvr/Connection.h"
#include "rig/dvr/Delivery.h"
#include "rig/dvr/Dialogue_1_0.h"
#include "rig/dvr/Dialogue_2_0.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/FolderRecordings.h"
#include "rig/dvr/Injector.h"
#include "rig/dvr/NumberOption.h"
#include "rig/dvr/Printable.h"
#include "rig/dvr/ReplayCommand.h"
#include "rig/dvr/Seconds.h"
#include "rig/dvr/Session.h"
#include "rig/dvr/SyntheticRecordings.h"
#include "rig/dvr/Transcript.h"
#include "rig/dvr/WireCheck.h"

namespace rig {
namespace {

/// The harness makes this file to ask for failing transfers, and removes it again.
constexpr const char* kFailureMarker = "/mnt/hd/velloranFail";

constexpr double kLongestSeconds = 86'400;
constexpr int kLongestTransfer = 3'600'000;  // milliseconds
constexpr int kLongestGap = 3'600'000;       // milliseconds
constexpr std::size_t kLargestSegment = 1'000'000'000;
constexpr std::uint64_t kHighestRate = 1'000'000'000'000;

constexpr const char* kExitStatuses =
    "Exit status: 0 the dialogue ran to DONE (or to the refusal of a configuration update, after which the "
    "harness\n"
    "asks for nothing more, or to where a defect ended the connection); 1 the harness broke the protocol or "
    "closed the connection early; 2 usage "
    "error, or a\n"
    "file or folder that cannot be read or written; 3 nothing came within --timeout, or no connection within "
    "--wait.\n"
    "With --replay: 0 the harness asked for the same to the end of the log; 1 it asked for something else; 2 "
    "and 3 as above.\n"
    "\n"
    "The DVR closes the connection when the dialogue is done. The harness expects that in protocol 1.0 after "
    "DONE, and\n"
    "in 2.0 if it was started with -c. Otherwise, and in both after a refused configuration update, it then "
    "spins on\n"
    "the closed connection until it is interrupted.";

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

/// @return the folder for copies, none where none is wanted. It must not lie in the one that is copied from,
/// which would change what is exported.
std::unique_ptr<DeliveryFolder> OpenDelivery(const DvrOptions& options, const Recordings& recordings) {
    if (!options.deliver) {
        return nullptr;
    }
    if (options.hasRecordings) {
        const auto from = std::filesystem::weakly_canonical(options.recordings);
        const auto way = std::filesystem::weakly_canonical(*options.deliver).lexically_relative(from);
        if (!way.empty() && *way.begin() != "..") {
            throw Failure(
                ExitStatus::UsageError,
                "--deliver: expected a folder outside of --recordings, found " + Quoted(*options.deliver));
        }
    }
    return std::make_unique<DeliveryFolder>(*options.deliver, recordings);
}

/// @return the site that --on and --at name. Throws Failure (UsageError) when they do not make one.
DefectSite SiteOf(const DefectOption& option, const Recordings& recordings) {
    DefectSite site;
    const std::size_t colon = option.on.find(':');
    site.message = option.on.substr(0, colon);
    if (colon != std::string::npos) {
        const std::string number = option.on.substr(colon + 1);
        site.occurrence = ParseNumber<std::size_t>(number).value_or(0);
        if (site.occurrence == 0 || site.message.empty()) {
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
              const DeliveryFolder* delivery, Injector& injector, WireCheck& wireCheck,
              Transcript& transcript) {
    const std::unique_ptr<Dialogue> dialogue = NewDialogue(options, recordings);
    Connection connection = Connection::Open(endpoint, FromSeconds(options.wait));
    if (options.segment) {
        connection.SendInPieces(*options.segment, Milliseconds(options.gap));
    }
    transcript.Note("connected; -> is sent by the DVR, <- by the harness");
    Session session(connection, *dialogue, transcript,
                    {FromSeconds(options.timeout),
                     FromSeconds(options.frameTimeout),
                     {Milliseconds(options.transferTime), options.rate}});
    if (delivery != nullptr) {
        session.Deliver(*delivery);
    }
    if (injector.HasDefects()) {
        session.Misbehave(injector, endpoint);
    }
    if (options.onSizeError == "continue") {
        session.AcceptSizeErrors();
    }
    if (options.wireCheck) {
        session.Check(wireCheck);
    }
    try {
        session.Run();
    } catch (const Failure&) {
        transcript.Note("not finished: " + dialogue->Summary() + session.WireSummary());
        throw;
    }
    transcript.Note((dialogue->IsDone() ? "" : "not finished: ") + dialogue->Summary() +
                    session.WireSummary());
    return session.Reconnects();
}

/// Connects and plays; throws Failure for every end but the good one.
void Play(const DvrOptions& options) {
    if (options.replay) {
        Transcript transcript(std::cout, WantsColour());
        return PlayReplay(options, transcript);
    }
    const std::unique_ptr<Recordings> recordings = OpenRecordings(options);
    const std::uint32_t seed = options.seed.value_or(std::random_device()());
    Injector injector = NewInjector(options, *recordings, seed);
    const Endpoint endpoint(options.host, options.port);
    const std::unique_ptr<DeliveryFolder> delivery = OpenDelivery(options, *recordings);
    Transcript transcript(std::cout, WantsColour());
    transcript.Note("protocol " + std::to_string(options.protocol) + ".0, " +
                    Counted(recordings->Events().size(), "event") + " in " + recordings->Origin() +
                    ", waiting for the harness at " + endpoint.Name());
    if (injector.HasDefects()) {
        transcript.Note("seed " + std::to_string(seed));
    }
    WireCheck wireCheck(options.protocol, injector.HasDefects());
    while (PlayOnce(options, *recordings, endpoint, delivery.get(), injector, wireCheck, transcript)) {
        transcript.Note("connecting again, as told");
    }
    if (!injector.Idle().empty()) {
        transcript.Note("had nothing to act on: " + injector.Idle());
    }
    if (!std::cout) {
        throw Failure(ExitStatus::UsageError,
                      "expected standard output to take the transcript, found that it did not");
    }
}

/// How fast the DVR is, and where the files go. After --transfer-time.
void AddPaceOptions(CLI::App& dvr, const std::shared_ptr<DvrOptions>& options) {
    dvr.add_option("--rate", options->rate,
                   "Transfer the files at this rate instead, so that long ones take long")
        ->transform(Between<std::uint64_t>(1, kHighestRate))
        ->type_name("BYTES/S")
        ->excludes("--transfer-time");
    dvr.add_option(
           "--deliver", options->deliver,
           "Copy the files there while they are transferred, as DIR/EVENT/FILE; a file appears when it is "
           "complete")
        ->type_name("DIR");
    auto* const segment =
        dvr.add_option("--segment", options->segment, "Send every message in pieces of so many bytes")
            ->transform(Between(std::size_t{1}, kLargestSegment))
            ->type_name("BYTES");
    dvr.add_option("--gap", options->gap, "Pause between the pieces, in ms")
        ->transform(Between(0, kLongestGap))
        ->type_name("MS")
        ->capture_default_str()
        ->needs(segment);
}

/// How closely the DVR looks at what the harness sends.
void AddWireOptions(CLI::App& dvr, DvrOptions& options) {
    dvr.add_flag("--wire-check", options.wireCheck,
                 "Check every byte of the harness's messages: prefix, printing, order of the attributes");
    dvr.add_option(
           "--on-size-error", options.onSizeError,
           "What to do about a message that is shorter than announced: end with status 1, or take what "
           "came within --frame-timeout")
        ->check(OneOf("close", "continue"))
        ->type_name("close|continue")
        ->capture_default_str();
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
    const auto* const protocol =
        dvr->add_option("--protocol", options->protocol, "Dialect, as the harness was told with its -p")
            ->transform(Between(1, 2))
            ->type_name("1|2")
            ->capture_default_str();
    dvr->add_option("--host", options->host, "Where the harness runs")
        ->type_name("HOST")
        ->capture_default_str();
    dvr->add_option("--port", options->port, "Where it listens")
        ->transform(Between(1, 65535))
        ->type_name("PORT")
        ->capture_default_str();
    const auto* const recordings =
        dvr->add_option("--recordings", options->recordings,
                        "Folder with one folder of files for each event (default: a few synthetic events)")
            ->type_name("DIR");
    const auto addSeconds = [dvr](const char* name, double& seconds, const char* text) {
        dvr->add_option(name, seconds, text)
            ->transform(Between(0.0, kLongestSeconds))
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
        ->transform(Between(0, kLongestTransfer))
        ->type_name("MS")
        ->capture_default_str();
    AddPaceOptions(*dvr, options);
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
    dvr->add_option("--seed", options->seed, "Repeats the random choices of an earlier run")
        ->transform(Between<std::uint32_t>(0, UINT32_MAX))
        ->type_name("N");
    dvr->add_flag_callback(
        "--list-defects",
        [] {
            std::cout << ListDefects();
            throw CLI::Success();
        },
        "Print the table of defects and exit");
    AddWireOptions(*dvr, *options);
    AddReplayOptions(*dvr, *options);
    dvr->callback([options, recordings, protocol, &status] {
        options->hasRecordings = recordings->count() > 0;
        options->hasProtocol = protocol->count() > 0;
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
