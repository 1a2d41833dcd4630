#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "rig/dvr/recordings/Recordings.h"

namespace rig::dvr {

/// Small events for users without recordings. Names and contents are the same in every run; contents are made
/// when they are read.
class SyntheticRecordings : public Recordings {
 public:
    /// Three events: one with two streams, one with one, one with only its metadata, which gets no file
    /// fault.
    SyntheticRecordings();

    /// @param events  at least one, no two of the same identifier
    /// @param origin  what they are, for people
    SyntheticRecordings(const std::vector<Event>& events, const std::string& origin);

    const std::vector<std::string>& Events() const override { return events_; }
    Event Find(const std::string& event) const override;
    Source Open(const std::string& event, const std::string& file) const override;
    std::string Origin() const override { return origin_; }
    bool Has(const std::string& event) const override { return descriptions_.count(event) == 1; }

 private:
    void Add(const Event& event);

    std::string origin_;
    std::vector<std::string> events_;
    std::map<std::string, Event> descriptions_;                             // by event
    std::map<std::pair<std::string, std::string>, std::uint32_t> numbers_;  // of files, by event and file
};

}  // namespace rig::dvr
