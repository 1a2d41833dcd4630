#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "rig/dvr/Failure.h"
#include "rig/dvr/replay/EarlierRun.h"
#include "rig/dvr/wire/Connection.h"
#include "rig/dvr/wire/Transcript.h"
#include "rig/dvr/wire/WireCheck.h"

namespace rig::dvr {

/// How a replay waits, and sends.
struct ReplayManner {
    Milliseconds silence{30'000};      // for the harness's next message, and for it to take one of ours
    Milliseconds frame{5'000};         // for the next bytes of a message that has begun
    bool paced = false;                // keeps the pauses of the earlier run, which must then be timed
    std::optional<std::size_t> piece;  // bytes to send at a time; all at once if not set
    Milliseconds gap{0};               // between two pieces
};

/// Plays the DVR's side of an earlier run, byte for byte and in order, on as many connections as that run
/// had, and compares what this harness asks for with what the earlier one asked for.
///
/// Where the log lacks the text of a request, compares its announced length and whatever else the log says of
/// it.
class Replay {
 public:
    /// All arguments must outlive the replay.
    Replay(const EarlierRun& run, const Endpoint& endpoint, Transcript& transcript,
           const ReplayManner& manner);

    /// Has the harness's frames inspected. `check` must outlive the replay.
    void Check(WireCheck& check) { wireCheck_ = &check; }

    /// Plays to the end of the earlier run.
    /// @param wait  how long to try to connect
    /// Throws Failure (ProtocolBroken) where this harness first does something else, with the log's line,
    /// what was expected and what was found, and Failure (NothingCame) when it stays silent.
    void Run(Milliseconds wait);

    /// @return how far it got, for people
    std::string Summary() const;

 private:
    void Play(const EarlierMessage& message);
    void Pause(const EarlierMessage& message);
    void Send(const EarlierMessage& message);
    void AwaitRequest(const EarlierRequest& request);
    void AwaitEnd(const EarlierMessage& message);
    void AwaitNothing(const EarlierMessage& message);

    /// Waits for a frame, and prints and inspects it.
    /// @param line, expected  for the failure when the connection ends or breaks the protocol
    std::optional<std::string> Receive(std::size_t line, const std::string& expected,
                                       Clock::time_point deadline);

    /// @return what was received, for people
    std::string Found(const std::string& text);
    void Show(bool isOurs, const std::string& text);

    /// Throws the failure of what the log's line makes us expect.
    [[noreturn]] void Deviate(std::size_t line, const std::string& expected, const std::string& found,
                              ExitStatus status = ExitStatus::ProtocolBroken) const;

    const EarlierRun& run_;
    const Endpoint& endpoint_;
    Transcript& transcript_;
    ReplayManner manner_;
    WireCheck* wireCheck_ = nullptr;
    std::optional<Connection> connection_;
    Clock::time_point anchor_;  // of the last traffic on the connection, or of its start
    std::size_t messages_ = 0;  // sent
    std::size_t requests_ = 0;  // received, as expected
};

}  // namespace rig::dvr
