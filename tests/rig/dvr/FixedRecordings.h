#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "rig/dvr/recordings/Recordings.h"

/// Two events whose files' contents are their names, until a test changes them:
///
///     EVT1   m.xml (metadata), a.ts, b.ts
///     EVT2   m.xml (metadata), c.ts
class FixedRecordings : public rig::dvr::Recordings {
 public:
    const std::vector<std::string>& Events() const override { return events_; }

    rig::dvr::Event Find(const std::string& event) const override {
        if (event == "EVT1") {
            return {"EVT1", "m.xml", {{"a.ts"}, {"b.ts"}}};
        }
        return {"EVT2", "m.xml", {{"c.ts"}}};
    }

    Source Open(const std::string& event, const std::string& file) const override {
        ++reads;
        return rig::dvr::SourceOf(contents.emplace(std::make_pair(event, file), file).first->second);
    }

    std::string Origin() const override { return "a test"; }

    mutable std::map<std::pair<std::string, std::string>, std::string> contents;
    mutable int reads = 0;

 private:
    std::vector<std::string> events_{"EVT1", "EVT2"};
};
