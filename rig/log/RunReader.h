#pragma once

#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>

#include "rig/log/Document.h"
#include "rig/log/Incoming.h"
#include "rig/log/NextRequest.h"
#include "rig/log/Statement.h"
#include "rig/protocol/Catalogue.h"

namespace rig::log {

/// A message of the DVR, as the log has it.
struct Message {
    using Form = Document::Form;

    std::string_view text;  // byte for byte
    pugi::xml_node root;    // `msg`; none unless the harness finds it
    Form form = Form::Good;
    std::string name;  // `req`
    std::shared_ptr<const Subject> about;
    const protocol::MessageKind* kind = nullptr;  // null if the dialect does not have it
    bool isRepeated = false;                      // it is, byte for byte, the known message before it
    std::string event;                            // the one in progress until then, as the harness sees it
    std::optional<std::int64_t> time;             // when its prefix was complete, microseconds
    const Listed* listed = nullptr;               // by a known message that may list something
};

/// Reads the log of one run of the harness, statement by statement. What the DVR sent is in the log; what the
/// harness sent is not, and follows from the state that the log shows. The judge, a replay and a campaign are
/// views of this.
class RunReader {
 public:
    /// What a statement completes. The rest is in LastMessage() and so on, until the next statement.
    enum class Event { None, Gap, Message, Request, Fault };

    /// Takes the next statement of the run.
    Event Add(const Statement& statement);

    /// @return whether the statement can only belong to a later run
    bool StartsAnother(Sign sign) const;

    /// @return whether the harness has said that it ends
    bool HasEnded() const { return hasEnded_; }

    /// @return whether the log holds the run's first lines
    bool HasStart() const { return hasStart_; }

    const Switches& Echoed() const { return switches_; }
    const Incoming& Arriving() const { return incoming_; }
    const Message& LastMessage() const { return message_; }
    const Request& LastRequest() const { return request_; }
    Fault LastFault() const { return fault_; }

 private:
    void NoteStart(Sign sign, bool isFirst);
    Event TakePrefixByte(const Statement& statement);
    void TakeSwitch(const Statement& statement);
    Event TakeSlice(const Statement& statement);
    void TakeMessage();

    Switches switches_;
    Incoming incoming_;
    NextRequest next_;
    std::shared_ptr<Document> document_;  // the last message; other runs may share it
    Message message_;
    Request request_;
    Fault fault_ = Fault::None;
    bool isFirst_ = true;  // no statement has come yet
    bool hasStart_ = false;
    bool hasConnected_ = false;
    bool hasExpected_ = false;
    bool hasEnded_ = false;
    int bindFailures_ = 0;
};

}  // namespace rig::log
