#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

#include "rig/base/OptionChecks.h"
#include "rig/dvr/DvrCommand.h"
#include "rig/dvr/defects/Defect.h"
#include "rig/dvr/dialogue/Habits.h"
#include "rig/dvr/recordings/EventKinds.h"
#include "rig/dvr/replay/ReplayCommand.h"
#include "rig/dvr/weaknesses/Weakness.h"
#include "rig/dvr/wire/Style.h"
#include "rig/protocol/Catalogue.h"

namespace rig::dvr {
namespace {

constexpr int kLongestTransfer = 3'600'000;  // milliseconds
constexpr int kLongestGap = 3'600'000;       // milliseconds
constexpr std::size_t kLargestSegment = 1'000'000'000;
constexpr std::uint64_t kHighestRate = 1'000'000'000'000;

constexpr const char* kDvrStatuses =
    "Exit status: 0 the dialogue ran to DONE, to the refusal of a configuration update (after which the\n"
    "harness asks for nothing more), or until a defect ended the connection; 1 the harness broke the\n"
    "protocol or closed the connection early; 3 nothing came within --timeout, or no connection within\n"
    "--wait; 64 usage error, or a file or folder that cannot be read or written.\n"
    "With --replay: 0 the harness asked for the same things up to the end of the log; 1 it asked for\n"
    "something else; 3 and 64 as above. With --recorder: 0 on SIGINT, SIGTERM or SIGHUP, and 64.\n"
    "\n"
    "The DVR closes the connection when the dialogue is done. The harness expects that in protocol 1.0\n"
    "after DONE, and in 2.0 if it was started with -c. Otherwise, and in both after a refused\n"
    "configuration update, it then spins on the closed connection until it is interrupted.";

/// How long the DVR waits.
void AddTimeOptions(CLI::App& dvr, DvrOptions& options) {
    const auto addSeconds = [&dvr](const char* name, double& seconds, const char* text) {
        dvr.add_option(name, seconds, text)
            ->transform(Between(0.0, kLongestSeconds))
            ->type_name("SECONDS")
            ->capture_default_str();
    };
    addSeconds("--wait", options.wait, "How long to try to connect");
    addSeconds("--timeout", options.timeout, "How long to wait for each message of the harness");
    addSeconds("--frame-timeout", options.frameTimeout,
               "How long to wait for the rest of a message, which never comes if its prefix announces too "
               "much");
}

/// How fast the DVR is, and where the files go.
void AddPaceOptions(CLI::App& dvr, DvrOptions& options) {
    dvr.add_option("--transfer-time", options.transferTime,
                   "How long the transfer of a file takes, in ms; a second request for it in that time gets "
                   "XFER_IN_PROGRESS")
        ->transform(Between(0, kLongestTransfer))
        ->type_name("MS")
        ->capture_default_str();
    dvr.add_option("--rate", options.rate,
                   "Transfer the files at this rate instead, so that large ones take longer")
        ->transform(Between<std::uint64_t>(1, kHighestRate))
        ->type_name("BYTES/S")
        ->excludes("--transfer-time");
    dvr.add_option(
           "--deliver", options.deliver,
           "Copy each file there as it is transferred, as DIR/EVENT/FILE; it appears when it is complete")
        ->type_name("DIR");
    dvr.add_option("--hash", options.hash, "Which hash of a file FILE_COMPLETE announces")
        ->check(CLI::IsMember({"crc32", "md5", "sha1", "sha256"}))
        ->type_name("crc32|md5|sha1|sha256")
        ->capture_default_str();
    auto* const segment =
        dvr.add_option("--segment", options.segment, "Send every message in pieces of this size")
            ->transform(Between(std::size_t{1}, kLargestSegment))
            ->type_name("BYTES");
    dvr.add_option("--gap", options.gap, "Pause between the pieces, in ms")
        ->transform(Between(0, kLongestGap))
        ->type_name("MS")
        ->capture_default_str()
        ->needs(segment);
}

/// A flag that asks for a list.
void AddList(CLI::App& dvr, DvrOptions& options, const char* flag, const std::string& things,
             Listing (*list)()) {
    dvr.add_flag_callback(
        flag, [&options, list] { options.listing = list; }, "Print all " + things + " and exit");
}

/// How the DVR writes its XML, and what it does that others do not.
void AddMannerOptions(CLI::App& dvr, DvrOptions& options) {
    dvr.add_option("--style", options.styles,
                   "Write the XML in this manner (see --list-styles), or in all; may be given several times")
        ->type_name("STYLE")
        ->allow_extra_args(false);
    AddList(dvr, options, "--list-styles", "styles", ListStyles);
    dvr.add_option("--habit", options.habits,
                   "Have this habit (see --list-habits), or all; may be given several times")
        ->type_name("HABIT[=VALUE]")
        ->allow_extra_args(false);
    AddList(dvr, options, "--list-habits", "habits", ListHabits);
}

/// What the DVR has recorded.
void AddRecordingsOptions(CLI::App& dvr, DvrOptions& options) {
    dvr.add_option("--recordings", options.recordings,
                   "Folder with one folder of files for each event (default: a few synthetic events)")
        ->type_name("DIR");
    dvr.add_option("--events", options.events,
                   "Make up events of these kinds (see --list-events) instead, or of all")
        ->type_name("KIND[,KIND...]")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->excludes("--recordings");
    AddList(dvr, options, "--list-events", "kinds of events", ListEvents);
}

/// What the DVR does wrong, and what there is to choose from.
void AddDefectOptions(CLI::App& dvr, const std::shared_ptr<DvrOptions>& options) {
    // In command-line order: a place belongs to the defect before it.
    const auto lastDefect = [options](const char* option) -> DefectOption& {
        if (options->defects.empty()) {
            throw CLI::ValidationError(option, "expected a --defect before it, found none");
        }
        return options->defects.back();
    };
    const auto addDefect = [options](const std::string& name) { options->defects.push_back({name, "", ""}); };
    dvr.add_option_function<std::string>(
           "--defect", addDefect, "Something to do wrong (see --list-defects); may be given several times")
        ->type_name("NAME[=VALUE]")
        ->trigger_on_parse();
    dvr.add_option_function<std::string>(
           "--on", [lastDefect](const std::string& site) { lastDefect("--on").on = site; },
           "The preceding defect acts on each MESSAGE of the DVR, or only on the Nth (default: the first "
           "that it can change)")
        ->type_name("MESSAGE[:N]")
        ->trigger_on_parse();
    dvr.add_option_function<std::string>(
           "--at", [lastDefect](const std::string& site) { lastDefect("--at").at = site; },
           "The preceding defect acts only on messages about this event, or this file of it")
        ->type_name("EVENT[:FILE]")
        ->trigger_on_parse();
    dvr.add_option("--seed", options->seed, "Repeat the random choices of an earlier run")
        ->transform(Between<std::uint32_t>(0, UINT32_MAX))
        ->type_name("N");
    AddList(dvr, *options, "--list-defects", "defects", ListDefects);
    AddList(dvr, *options, "--list-messages", "messages of the protocol", protocol::ListMessages);
    AddFormatOption(dvr, options->format);
}

/// How closely the DVR looks at what the harness sends.
void AddWireOptions(CLI::App& dvr, DvrOptions& options) {
    dvr.add_flag("--wire-check", options.wireCheck,
                 "Check every byte of the harness's messages: prefix, printing, order of the attributes");
    dvr.add_option(
           "--on-size-error", options.onSizeError,
           "What to do about a message shorter than announced: end with status 1, or accept what came "
           "within --frame-timeout")
        ->check(OneOf("close", "continue"))
        ->type_name("close|continue")
        ->capture_default_str();
}

/// Added after all options that it excludes.
void AddRecorderOption(CLI::App& dvr, DvrOptions& options) {
    auto* const recorder = dvr.add_flag(
        "--recorder", options.recorder,
        "Do as a recorder in the field: call again after each end of a connection, hang up on what "
        "cannot be read, refuse what must not be done, until SIGINT or SIGTERM");
    for (const char* other : {"--wait", "--defect", "--wire-check", "--on-size-error", "--replay"}) {
        recorder->excludes(dvr.get_option(other));
    }
    dvr.add_option("--weakness", options.weaknesses,
                   "Be weak in this way (see --list-weaknesses), or in all; may be given several times")
        ->type_name("WEAKNESS[=VALUE]")
        ->allow_extra_args(false)
        ->needs(recorder);
    AddList(dvr, options, "--list-weaknesses", "weaknesses", ListWeaknesses);
}

}  // namespace

void AddDvrCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<DvrOptions>();
    CLI::App* const dvr = app.add_subcommand("dvr", "Plays a DVR that exports its recordings to the harness");
    dvr->footer(kDvrStatuses);
    dvr->add_option("--protocol", options->protocol, "Dialect, the same as the harness's -p")
        ->transform(Between(1, 2))
        ->type_name("1|2")
        ->default_str("1");
    dvr->add_option("--host", options->host, "Where the harness runs")
        ->type_name("HOST")
        ->capture_default_str();
    dvr->add_option("--port", options->port, "Where it listens")
        ->transform(Between(1, 65535))
        ->type_name("PORT")
        ->capture_default_str();
    AddRecordingsOptions(*dvr, *options);
    AddTimeOptions(*dvr, *options);
    AddPaceOptions(*dvr, *options);
    AddMannerOptions(*dvr, *options);
    AddDefectOptions(*dvr, options);
    AddWireOptions(*dvr, *options);
    AddReplayOptions(*dvr, *options);
    AddRecorderOption(*dvr, *options);
    dvr->callback([options, &status] {
        if (options->listing != nullptr) {
            Print(options->listing(), options->format);
        } else {
            status = RunDvr(*options);
        }
    });
}

}  // namespace rig::dvr
