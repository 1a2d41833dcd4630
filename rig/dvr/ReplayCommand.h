#pragma once

#include "rig/dvr/DvrCommand.h"

namespace rig {

class Transcript;

/// Adds the options of a replay to the subcommand, behind all those that it excludes.
/// @param options  must live while the command line is parsed
void AddReplayOptions(CLI::App& dvr, DvrOptions& options);

/// Plays the DVR's side of the log that the options name, and prints it. Nothing is sent before the log is
/// read.
/// Throws Failure for every end but that where the harness asks for the same to the end of the log.
void PlayReplay(const DvrOptions& options, Transcript& transcript);

}  // namespace rig
