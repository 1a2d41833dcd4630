#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "rig/dvr/recordings/Recordings.h"

namespace rig::dvr {

/// Recordings in a folder: one folder for each event, named after it; all files in that folder, at any depth,
/// are the event's. Files next to the events' folders are ignored.
class FolderRecordings : public Recordings {
 public:
    /// Looks through the folder once, reading only names: a file is opened when it is asked for. Throws
    /// Failure (Unusable) when it or a folder in it cannot be read, when it has no event and when an event
    /// has no file: there would be nothing to export.
    explicit FolderRecordings(const std::filesystem::path& folder);

    const std::vector<std::string>& Events() const override { return events_; }
    Event Find(const std::string& event) const override;
    Source Open(const std::string& event, const std::string& file) const override;
    std::string Origin() const override { return folder_.string(); }
    bool Has(const std::string& event) const override;

 private:
    /// Calls `visit` with the path of each file of the event, in no particular order.
    void VisitFiles(const std::string& event,
                    const std::function<void(const std::filesystem::path&)>& visit) const;

    std::filesystem::path folder_;
    std::vector<std::string> events_;  // sorted
};

}  // namespace rig::dvr
