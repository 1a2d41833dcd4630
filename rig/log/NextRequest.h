#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "rig/log/Document.h"
#include "rig/log/Statement.h"
#include "rig/log/WorkLists.h"

namespace rig::log {

/// What the harness does wrong on purpose in a request.
enum class Fault : std::size_t { None, Event, FileEvent, FileName, Transport, Rehash, Xfer, Pause, Count };

/// The switches of the harness, as it echoes them.
struct Switches {
    int protocol = 1;
    std::int64_t closeEarly = 0;
    std::int64_t doneDuration = 0;  // minutes
    bool hasDuration = false;
    std::int64_t sleepSeconds = 1;
    bool hasSleep = false;
};

/// A request of the harness.
struct Request {
    std::string name;  // GET_FILE
    std::string reid;
    std::string file;
    Fault fault = Fault::None;
    bool isGenuine = false;                 // with a fault: the DVR lists what is left of the name, too
    std::int64_t pause = 0;                 // microseconds that the harness sleeps after it
    std::uint32_t announced = 0;            // bytes, as far as its prefix has gone out
    bool isAnnounced = false;               // all of its prefix has gone out
    std::optional<std::string> statedFile;  // EVENT/FILE, where a statement names it
    std::vector<std::string> statedEvents;  // that a 1.0 report names, likewise
    bool isCertain = true;                  // the log, or the message before it, reveals its name
};

/// What the harness asks for next. The log does not hold its requests: they follow from the lists that it
/// keeps, from the last message, and from what it logs between message and request.
class NextRequest {
 public:
    /// A message has arrived: nothing logged before it matters any more.
    void Forget();

    /// Takes a message of the dialect. @return what it lists; null if it is none that could
    const Listed* TakeMessage(Document& message);

    /// Takes a statement of the harness about what it does. @return the fault that it injects, if any
    Fault TakeStatement(const Statement& statement, const Switches& switches);

    /// @return the request that the harness now sends
    Request MakeRequest(const Switches& switches);

    /// @return the identifier of the event that the harness takes as the one in progress; empty if there is
    /// none
    std::string Event() const { return lists_.events.empty() ? "" : lists_.events.front(); }

 private:
    Fault TakeFault(const Statement& statement);
    Fault DamageFile(std::int64_t count);
    void DamageEvent();
    bool IsListed(const std::string& event) const;
    void RetireEvent();
    void RetireFile();
    void AskTwice();
    std::string Name() const;

    WorkLists lists_;
    std::string last_;          // the last message's name
    std::string announced_;     // what a statement said would be sent next
    bool isAnnounced_ = false;  // a statement since the last message is about what is sent next
    std::optional<std::string> statedFile_;
    std::vector<std::string> statedEvents_;
    std::optional<std::int64_t> left_;  // files of the event, if one was retired since the last message
    Fault fault_ = Fault::None;         // of the next request
    bool isGenuine_ = false;            // see Request
    std::string damaged_;  // the identifier in the list that the harness made up; empty if there is none
    std::vector<std::string> doneEvents_;  // of the last list
    std::vector<std::string> doneFiles_;   // of the last description
    int doubled_ = 0;                      // requests of -x that are still to go out
};

/// @return whether the statement announces a request
bool IsAnnouncement(Sign sign);

/// @return an identifier or a name as the harness damages it: without its first three characters
std::string Damaged(const std::string& text);

}  // namespace rig::log
