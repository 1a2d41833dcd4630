#pragma once

#include <optional>
#include <string>

#include "rig/dvr/Connection.h"
#include "rig/dvr/Dialogue.h"
#include "rig/dvr/Injector.h"
#include "rig/dvr/Transcript.h"

namespace rig {

/// How long a session waits.
struct SessionTimes {
    Milliseconds silence{30'000};  // for the harness's next message, and for it to take one of ours
    Milliseconds frame{5'000};     // for the next bytes of a message that has begun
    Milliseconds transfer{200};    // that the transfer of each file takes
};

/// Drives one dialogue over one connection, and prints it.
///
/// A second request for a file in transfer is told from a later one by the transfer's time alone. The harness
/// writes prefix and text apart and sets no socket option, so its second request can come some 40 ms after
/// the first; SessionTimes::transfer must be well above that.
class Session {
 public:
    /// All of them must outlive the session.
    Session(Connection& connection, Dialogue& dialogue, Transcript& transcript, const SessionTimes& times);

    /// Lets defects act on what is sent. The dialogue then tolerates what they provoke. Both must outlive the
    /// session.
    /// @param endpoint  where a second connection goes, if a defect opens one
    void Misbehave(Injector& injector, const Endpoint& endpoint);

    /// Opens the dialogue and answers until it is done, or until a defect has ended the connection.
    /// Throws Breach when the harness breaks the protocol or leaves early, with a text that says what was
    /// expected and what was found, and Failure (NothingCame) when it stays silent.
    void Run();

    /// @return whether a defect asks for the dialogue to be held once more, on a connection of its own
    bool Reconnects() const { return reconnects_; }

 private:
    void Step();
    void Answer(const std::string& text);

    /// Every message of ours goes out here, and here alone.
    void Send(Message message);
    void SendHonest(const Message& message);
    void SendDefective(Message message);
    void EndAsTold(Outgoing::End end);

    Connection& connection_;
    Dialogue& dialogue_;
    Transcript& transcript_;
    SessionTimes times_;
    std::optional<Clock::time_point> transferEnd_;  // while a file is in transfer
    Injector* injector_ = nullptr;
    const Endpoint* endpoint_ = nullptr;
    std::optional<Connection> second_;
    bool silent_ = false;      // a defect forbids every further message
    bool ended_ = false;       // a defect has ended the connection
    bool reconnects_ = false;  // a defect asks for another session
};

}  // namespace rig
