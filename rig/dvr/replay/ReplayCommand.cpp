#include "rig/dvr/replay/ReplayCommand.h"

#include <CLI/CLI.hpp>

#include "rig/base/ChoiceOption.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/Seconds.h"
#include "rig/dvr/replay/EarlierRun.h"
#include "rig/dvr/replay/Replay.h"
#include "rig/dvr/wire/Transcript.h"
#include "rig/dvr/wire/WireCheck.h"

namespace rig::dvr {
namespace {

/// Throws Failure (Unusable) if the options do not fit the log.
void CheckOptions(const DvrOptions& options, const EarlierRun& run) {
    if (options.hasProtocol && options.protocol != run.dialect) {
        throw Failure(ExitStatus::Unusable, "--protocol: expected " + std::to_string(run.dialect) +
                                                ", the dialect of " + Quoted(run.log) + ", or none, found " +
                                                std::to_string(options.protocol));
    }
    if (options.replaySpeed == "recorded" && !run.timed) {
        throw Failure(ExitStatus::Unusable,
                      "--replay-speed recorded: expected a time such as 2026-11-20T14:03:07.123456Z at the "
                      "start of each line, found lines without in " +
                          Quoted(run.log) + "; only full is possible");
    }
}

/// @return what the reader should know about the end of the run
std::string EndOfLog(const EarlierRun& run) {
    const std::string line = "; its last line is " + std::to_string(run.lastLine);
    if (run.cutMessage != 0) {
        return line + ", and the message announced in line " + std::to_string(run.cutMessage) +
               " is not in it whole";
    }
    if (!run.ended && !run.messages.back().closed) {
        return line + ", and what the harness did after that is not known";
    }
    return "";
}

void NoteStart(const EarlierRun& run, const DvrOptions& options, Transcript& transcript) {
    transcript.Note("replaying " + std::to_string(run.messages.size()) + " messages of " + run.log +
                    ", protocol " + std::to_string(run.dialect) + ".0, at " + options.replaySpeed + " speed");
    if (run.followed) {
        transcript.Note("there is more than one run in " + run.log + "; the first with a message, to line " +
                        std::to_string(run.lastLine) + ", is replayed");
    }
}

}  // namespace

void AddReplayOptions(CLI::App& dvr, DvrOptions& options) {
    auto* const replay =
        dvr.add_option(
               "--replay", options.replay,
               "Plays the DVR's side of an earlier run, from the harness's log of it, and reports the "
               "first point at which the harness asks for something else; the dialect is the log's")
            ->type_name("LOG")
            ->excludes(dvr.get_option("--defect"))
            ->excludes(dvr.get_option("--recordings"))
            ->excludes(dvr.get_option("--deliver"))
            ->excludes(dvr.get_option("--rate"))
            ->excludes(dvr.get_option("--transfer-time"))
            ->excludes(dvr.get_option("--seed"));
    dvr.add_option("--replay-speed", options.replaySpeed,
                   "With or without the pauses of the DVR that the log shows")
        ->check(OneOf("full", "recorded"))
        ->type_name("full|recorded")
        ->capture_default_str()
        ->needs(replay);
}

void PlayReplay(const DvrOptions& options, Transcript& transcript) {
    const EarlierRun run = ReadEarlierRun(*options.replay);
    CheckOptions(options, run);
    const Endpoint endpoint(options.host, options.port);
    NoteStart(run, options, transcript);
    Replay replay(
        run, endpoint, transcript,
        {FromSeconds(options.timeout), FromSeconds(options.frameTimeout), options.replaySpeed == "recorded",
         options.segment.value_or(0), Milliseconds(options.gap)});
    WireCheck wireCheck(run.dialect, false);
    if (options.wireCheck) {
        replay.Check(wireCheck);
    }
    const auto summary = [&] {
        return replay.Summary() + (options.wireCheck ? "; " + wireCheck.Summary() : "");
    };
    try {
        replay.Run(FromSeconds(options.wait));
    } catch (const Failure&) {
        transcript.Note("not finished: " + summary());
        throw;
    }
    transcript.Note(summary() + EndOfLog(run));
}

}  // namespace rig::dvr
