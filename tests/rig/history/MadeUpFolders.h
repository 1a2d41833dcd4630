#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

/// Folders of made-up campaigns, in a folder that is the current one as long as this lives.
class MadeUpFolders {
 public:
    MadeUpFolders();
    ~MadeUpFolders();
    MadeUpFolders(const MadeUpFolders&) = delete;
    MadeUpFolders& operator=(const MadeUpFolders&) = delete;

    /// Writes a campaign's record. It began on that day of the year 2026.
    void Write(const std::string& folder, int day, const std::string& note,
               const std::vector<nlohmann::ordered_json>& cases,
               const nlohmann::ordered_json& more = {}) const;

    /// Writes any file.
    void WriteFile(const std::string& name, const std::string& content) const {
        folder_.Write(name, content);
    }

    std::string Path() const { return folder_.Path().string(); }

 private:
    TemporaryFolder folder_;
    std::filesystem::path before_;
};

/// @return a case of a record, with a page, "event-list.source" as its only check, and reactions to GET_FILE
/// of that median
nlohmann::ordered_json MadeUpCase(const std::string& name, const std::string& outcome,
                                  const std::string& found = "", double median = 50);
