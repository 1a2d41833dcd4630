#pragma once

#include <map>
#include <string>
#include <vector>

#include "rig/dvr/recordings/Recordings.h"

namespace rig::dvr {

/// Three small events for users without recordings: one with two streams, one with one, one with only its
/// metadata, which gets no file fault. Held in memory; names and contents are the same in every run.
class SyntheticRecordings : public Recordings {
 public:
    SyntheticRecordings();

    const std::vector<std::string>& Events() const override { return events_; }
    Event Find(const std::string& event) const override;
    Source Open(const std::string& event, const std::string& file) const override;
    std::string Origin() const override { return "synthetic recordings"; }

 private:
    void Add(const Event& event);

    std::vector<std::string> events_;
    std::map<std::string, Event> descriptions_;                            // by event
    std::map<std::pair<std::string, std::string>, std::string> contents_;  // by event and file
};

}  // namespace rig::dvr
