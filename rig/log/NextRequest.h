#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "rig/judge/Run.h"
#include "rig/log/WorkLists.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace rig::judge {

/// What the harness asks for next. The log does not hold its requests: they follow from the lists that it
/// keeps, from the last message, and from what it logs between message and request.
class NextRequest {
 public:
    explicit NextRequest(Run& facts) : run_(facts) {}

    /// A message has arrived: nothing that was logged before it matters any more.
    void Forget();

    /// The message is one of the dialect's.
    void TakeMessage(const std::string& name, const pugi::xml_node& message, const Place& place);

    /// Takes a statement of the harness about what it does. @return the fault that it injects, if it does
    Fault Take(log::Sign sign, std::string_view text);

    /// The harness sends. @return its request, without what the current statement says
    Request Make();

    /// @return the identifier of the event that the harness takes for the one in progress; empty if there is
    /// none
    std::string Event() const;

 private:
    Fault TakeFault(log::Sign sign, std::string_view text);
    Fault DamageFile(std::int64_t count);
    void RetireFile();
    void AskTwice();
    std::string Name() const;

    Run& run_;
    WorkLists lists_;
    std::string last_;           // the last message's name
    std::string announced_;      // what a line said would be sent next
    bool popped_ = false;        // since the last message, a file was retired
    std::int64_t left_ = 0;      // files of the event after that
    Fault fault_ = Fault::None;  // of the next request
    int doubled_ = 0;            // requests of -x that are still to go out
};

}  // namespace rig::judge
