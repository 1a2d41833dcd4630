#pragma once

#include <random>
#include <string>

/// Runs the harness in a world of its own, does one of several things that a DVR may do, chosen at random,
/// and sends SIGINT at a random moment, once the harness handles that signal.
/// @return empty if it ended with status 44 within a few seconds and its log is whole, every line of it, with
///         "shutting down" as the last; otherwise what was found instead
std::string InterruptAtRandom(std::mt19937& random);
