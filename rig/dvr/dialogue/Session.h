#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rig/dvr/defects/Injector.h"
#include "rig/dvr/dialogue/Dialogue.h"
#include "rig/dvr/dialogue/Habits.h"
#include "rig/dvr/dialogue/Transfer.h"
#include "rig/dvr/weaknesses/Weaknesses.h"
#include "rig/dvr/wire/Connection.h"
#include "rig/dvr/wire/Style.h"
#include "rig/dvr/wire/Transcript.h"
#include "rig/dvr/wire/WireCheck.h"

namespace rig::dvr {

/// How long a session waits.
struct SessionTimes {
    Milliseconds silence{30'000};  // for the harness's next message, and for it to take one of ours
    Milliseconds frame{5'000};     // for the next bytes of a message that has begun
    TransferPace transfer;         // of each file
};

/// Drives one dialogue over one connection, and prints it.
///
/// Only its timing tells a second request for a file in transfer from a later one. The harness writes prefix
/// and text separately and sets no socket option, so its second request can come some 40 ms after the first;
/// the transfer must take well over that.
class Session {
 public:
    /// All arguments must outlive the session.
    Session(Connection& connection, Dialogue& dialogue, Transcript& transcript, const SessionTimes& times);

    /// Lets defects act on what is sent. The dialogue then tolerates what they provoke. Both arguments must
    /// outlive the session.
    /// @param endpoint  where a second connection goes, if a defect opens one
    void Misbehave(Injector& injector, const Endpoint& endpoint);

    /// Copies each file as it is transferred.
    /// @param folder  must outlive the session
    void Deliver(const DeliveryFolder& folder) { deliveryFolder_ = &folder; }

    /// Writes messages in this style; what a defect has written itself stays as it is.
    void WriteAs(const Style& style) { style_ = style; }

    /// Does what these habits say within one dialogue.
    void Adopt(const Habits& habits);

    /// Tolerates messages shorter than announced: answers what has come of them.
    void AcceptSizeErrors() { connection_.Decoder().AcceptSizeErrors(); }

    /// Has the harness's frames inspected. `check` must outlive the session.
    void Check(WireCheck& check) { wireCheck_ = &check; }

    /// Has these weaknesses. They must outlive the session.
    /// @param recordings  what the DVR has; must outlive the session
    void Weaken(Weaknesses& weaknesses, const Recordings& recordings);

    /// Opens the dialogue and answers until it is done, or until a defect has ended the connection.
    /// Throws Breach when the harness breaks the protocol or leaves early, with a text that says what was
    /// expected and what was found, Failure (NothingCame) when it stays silent, and Failure (Unusable) when
    /// a file cannot be read or copied.
    void Run();

    /// @return what was found about the harness's frames, for people, to append to another summary; may be
    /// empty
    std::string WireSummary() const;

    /// @return whether any message has come
    bool HasHeard() const { return heard_; }

    /// @return whether a defect asks for another dialogue, on a new connection
    bool Reconnects() const { return reconnects_; }

 private:
    /// A file that a defect delivers after its FILE_COMPLETE.
    struct LateCopy {
        Dialogue::FileId file;
        Clock::time_point due;
    };

    void Step();
    void Inspect(const std::string& text);
    void Answer(const std::string& text);
    std::vector<Message> AnswersTo(const Message& message);
    void FollowTransfer();
    void ContinueTransfer();
    void ReportProgress(Clock::time_point now);
    void AwaitClose();

    /// Every message of ours goes out here, and only here.
    void Send(Message message);
    void SendHonest(const Message& message);
    void SendDefective(Message message);
    void Transmit(const Outgoing& outgoing);
    void SpoilCopyOf(const std::string& event, const std::string& file, Copy copy);
    void DeliverLate();
    void Emit(const Message& message, std::string frame);
    void Flush();
    void EndAsTold(Outgoing::End end);

    Connection& connection_;
    Dialogue& dialogue_;
    Transcript& transcript_;
    SessionTimes times_;
    Style style_;
    Habits habits_;
    std::string kept_;  // frames that go out with the next one
    const DeliveryFolder* deliveryFolder_ = nullptr;
    std::optional<Transfer> transfer_;  // of the file that the dialogue has in transfer
    Clock::time_point nextReport_ = Clock::time_point::max();  // of its progress
    Injector* injector_ = nullptr;
    const Endpoint* endpoint_ = nullptr;
    Weaknesses* weaknesses_ = nullptr;
    const Recordings* recordings_ = nullptr;
    WireCheck* wireCheck_ = nullptr;
    std::size_t sizeErrors_ = 0;  // messages that were not as long as announced
    std::optional<Connection> second_;
    std::vector<LateCopy> late_;
    bool heard_ = false;
    bool silent_ = false;      // a defect forbids every further message
    bool ended_ = false;       // a defect has ended the connection
    bool reconnects_ = false;  // a defect asks for another session
};

}  // namespace rig::dvr
