#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "rig/base/Listing.h"

namespace CLI {
class App;
}

namespace rig::dvr {

/// One --defect with the --on and --at after it.
struct DefectOption {
    std::string defect;  // NAME or NAME=VALUE
    std::string on;      // MESSAGE or MESSAGE:N; empty if not given
    std::string at;      // EVENT or EVENT:FILE; empty if not given
};

/// What the command line of `velloran-rig dvr` says, with its defaults.
struct DvrOptions {
    std::optional<int> protocol;  // dialect, 1 or 2; if not given, 1, or that of a replayed log
    std::string host = "127.0.0.1";
    int port = 5001;
    std::optional<std::string> recordings;  // folder; synthetic ones if not given
    std::vector<std::string> events;        // kinds of made-up ones instead
    double wait = 10;                       // seconds
    double timeout = 30;                    // seconds
    double frameTimeout = 5;                // seconds
    int transferTime = 200;                 // milliseconds
    std::optional<std::uint64_t> rate;      // of transfers, in bytes per second, instead of that time
    std::optional<std::size_t> segment;     // size of the pieces to send, in bytes; all at once if not given
    int gap = 10;                           // milliseconds between them
    std::optional<std::string> deliver;     // folder for copies
    std::string hash = "sha256";            // that FILE_COMPLETE announces
    std::optional<std::string> replay;      // log of an earlier run
    std::string replaySpeed = "full";       // or "recorded"
    std::string onSizeError = "close";      // or "continue"
    bool wireCheck = false;
    bool recorder = false;
    std::vector<std::string> weaknesses;
    std::vector<std::string> styles;
    std::vector<std::string> habits;
    std::vector<DefectOption> defects;
    Listing (*listing)() = nullptr;     // to print, and play nothing
    std::string format = "text";        // of it, or "markdown"
    std::optional<std::uint32_t> seed;  // of everything random; a new one for each run if not given
};

/// @return the dialect, which defaults to 1 as in the harness
inline int DialectOf(const DvrOptions& options) {
    return options.protocol.value_or(1);
}

/// @return seconds as the command line takes them, with fractions, rounded down to milliseconds
inline std::chrono::milliseconds FromSeconds(double seconds) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

/// Adds the subcommand `dvr`. If the command line asks for it, parsing runs it and sets `status` to its exit
/// status.
void AddDvrCommand(CLI::App& app, int& status);

/// Plays a DVR to its end: transcript on standard output; if something goes wrong, one line on standard
/// error.
/// @return the exit status (ExitStatus)
int RunDvr(const DvrOptions& options);

}  // namespace rig::dvr
