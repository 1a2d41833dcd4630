#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "rig/dvr/Recordings.h"

namespace rig {

/// Recordings in a folder: one folder for each event, named as the event; whatever files lie in it, at any
/// depth, are the event's files. Files beside the events' folders are left out.
class FolderRecordings : public Recordings {
 public:
    /// Looks through the folder once, at names alone: a file is opened when it is asked for. Throws Failure
    /// (UsageError) when it or a folder in it cannot be read, when it has no event and when an event has no
    /// file: nothing of such an export could be shown.
    explicit FolderRecordings(const std::filesystem::path& folder);

    const std::vector<std::string>& Events() const override { return events_; }
    Event Find(const std::string& event) const override;
    Source Open(const std::string& event, const std::string& file) const override;
    std::string Origin() const override { return folder_.string(); }
    bool Has(const std::string& event) const override;

 private:
    /// Shows `visit` the path of each file of the event, in no order.
    void VisitFiles(const std::string& event,
                    const std::function<void(const std::filesystem::path&)>& visit) const;

    std::filesystem::path folder_;
    std::vector<std::string> events_;  // sorted
};

}  // namespace rig
