#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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
    int protocol = 1;          // dialect, 1 or 2; 1 is also the harness's default
    bool hasProtocol = false;  // it was given
    std::string host = "127.0.0.1";
    int port = 5001;
    std::string recordings;  // folder; only used if given
    bool hasRecordings = false;
    double wait = 10;                    // seconds
    double timeout = 30;                 // seconds
    double frameTimeout = 5;             // seconds
    int transferTime = 200;              // milliseconds
    std::uint64_t rate = 0;              // of transfers, in bytes per second, instead of that time; 0: none
    std::optional<std::size_t> segment;  // size of the pieces to send, in bytes; all at once if not given
    int gap = 10;                        // milliseconds between them
    std::optional<std::string> deliver;  // folder for copies
    std::optional<std::string> replay;   // log of an earlier run
    std::string replaySpeed = "full";    // or "recorded"
    std::string onSizeError = "close";   // or "continue"
    bool wireCheck = false;
    std::vector<DefectOption> defects;
    bool listDefects = false;           // and play nothing
    bool listMessages = false;          // likewise
    std::string format = "text";        // of a list, or "markdown"
    std::optional<std::uint32_t> seed;  // of everything random; a new one for each run if not given
};

/// Adds the subcommand `dvr`. When the command line asks for it, parsing runs it and leaves its exit status
/// in `status`, which must live until then.
void AddDvrCommand(CLI::App& app, int& status);

/// Plays a DVR to its end: transcript on standard output; if something goes wrong, one line on standard
/// error.
/// @return the exit status (ExitStatus)
int RunDvr(const DvrOptions& options);

}  // namespace rig::dvr
