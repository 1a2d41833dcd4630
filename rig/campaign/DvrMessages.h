#pragma once

#include <functional>
#include <string>
#include <vector>

#include "rig/judge/Incoming.h"
#include "rig/log/LogLine.h"

namespace rig::campaign {

/// A message of the DVR as the log holds it.
struct DvrMessage {
    std::string name;                 // `req`; empty where there is none
    std::vector<std::string> fields;  // its attributes but `req`, and its children, "events/event"
};

/// Puts the DVR's messages together from the slices that the log holds of them. Documents that are no XML are
/// left out.
class DvrMessages {
 public:
    using Take = std::function<void(const DvrMessage& message)>;

    explicit DvrMessages(Take take) : take_(std::move(take)) {}
    void Add(const LogLine& line);

 private:
    void Give();

    Take take_;
    judge::Incoming incoming_;
};

}  // namespace rig::campaign
