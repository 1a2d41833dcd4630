#pragma once

#include <functional>
#include <string>
#include <vector>

#include "rig/log/Incoming.h"
#include "rig/log/LogLine.h"

namespace rig::campaign {

/// A message of the DVR as the log has it.
struct DvrMessage {
    std::string name;                 // `req`; empty if missing
    std::vector<std::string> fields;  // its attributes except `req`, and its children, "events/event"
};

/// Assembles the DVR's messages from their slices in the log. Leaves out documents that are not XML.
class DvrMessages {
 public:
    using Take = std::function<void(const DvrMessage& message)>;

    explicit DvrMessages(Take take) : take_(std::move(take)) {}
    void Add(const log::LogLine& line);

 private:
    void Give();

    Take take_;
    log::Incoming incoming_;
};

}  // namespace rig::campaign
