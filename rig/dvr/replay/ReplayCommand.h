#pragma once

#include "rig/dvr/DvrCommand.h"

namespace rig::dvr {

class Transcript;

/// Adds the options of a replay to the subcommand, after all those that it excludes.
/// @param options  must live while the command line is parsed
void AddReplayOptions(CLI::App& dvr, DvrOptions& options);

/// Plays the DVR's side of the log that the options name, and prints it. Sends nothing before the log is
/// read.
/// Throws Failure unless the harness asks for the same things up to the end of the log.
void PlayReplay(const DvrOptions& options, Transcript& transcript);

}  // namespace rig::dvr
