#include "rig/dvr/replay/ReplayCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "rig/base/Counted.h"
#include "rig/base/OptionChecks.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/replay/EarlierRun.h"
#include "rig/dvr/replay/Replay.h"
#include "rig/dvr/wire/Transcript.h"
#include "rig/dvr/wire/WireCheck.h"

namespace rig::dvr {
namespace {

/// Throws Failure (Unusable) if the options do not fit the log.
void CheckOptions(const DvrOptions& options, const EarlierRun& run) {
    if (options.protocol.value_or(run.dialect) != run.dialect) {
        throw Failure(ExitStatus::Unusable,
                      fmt::format("--protocol: expected {}, the dialect of {}, or none, found {}",
                                  run.dialect, Quoted(run.log), *options.protocol));
    }
    if (options.replaySpeed == "recorded" && !run.timed) {
        throw Failure(ExitStatus::Unusable,
                      "--replay-speed recorded: expected a time such as 2026-11-20T14:03:07.123456Z at the "
                      "start of each line, found lines without one in " +
                          Quoted(run.log) + "; only full speed is possible");
    }
}

/// @return what the reader should know about the end of the log, to append to a summary; may be empty
std::string EndOfLog(const EarlierRun& run) {
    if (run.cutMessage) {
        return fmt::format("; its last line is {}, and the message announced in line {} is incomplete",
                           run.lastLine, *run.cutMessage);
    }
    if (!run.ended && !run.messages.back().closed) {
        return fmt::format("; its last line is {}, and what the harness did next is unknown", run.lastLine);
    }
    return "";
}

void NoteStart(const EarlierRun& run, const DvrOptions& options, Transcript& transcript) {
    transcript.Note(fmt::format("replaying {} of {}, protocol {}.0, at {} speed",
                                Counted(run.messages.size(), "message"), run.log, run.dialect,
                                options.replaySpeed));
    if (run.hasOtherRuns) {
        transcript.Note(
            fmt::format("{} holds more than one run; replaying the first with a message, to line {}", run.log,
                        run.lastLine));
    }
}

}  // namespace

void AddReplayOptions(CLI::App& dvr, DvrOptions& options) {
    auto* const replay =
        dvr.add_option(
               "--replay", options.replay,
               "Play the DVR's side of an earlier run, from the harness's log of it, and report where the "
               "harness first asks for something else; the dialect is the log's")
            ->type_name("LOG")
            ->excludes(dvr.get_option("--defect"))
            ->excludes(dvr.get_option("--recordings"))
            ->excludes(dvr.get_option("--events"))
            ->excludes(dvr.get_option("--habit"))
            ->excludes(dvr.get_option("--deliver"))
            ->excludes(dvr.get_option("--hash"))
            ->excludes(dvr.get_option("--rate"))
            ->excludes(dvr.get_option("--transfer-time"))
            ->excludes(dvr.get_option("--seed"));
    dvr.add_option("--replay-speed", options.replaySpeed,
                   "Without or with the DVR's pauses that the log shows")
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
    Replay replay(run, endpoint, transcript,
                  {FromSeconds(options.timeout), FromSeconds(options.frameTimeout),
                   options.replaySpeed == "recorded", options.segment, Milliseconds(options.gap)});
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
