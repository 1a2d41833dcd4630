#include "rig/merge/Part.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "rig/base/Affix.h"
#include "rig/base/Holds.h"
#include "rig/base/Printable.h"
#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/evidence/RecordReader.h"
#include "rig/log/LogReader.h"
#include "rig/merge/RecordIn.h"

namespace rig::merge {
namespace {

namespace fs = std::filesystem;
using campaign::CampaignRecord;
using campaign::CaseRecord;
using campaign::Outcome;
using Json = nlohmann::ordered_json;

[[noreturn]] void Refuse(const fs::path& path, const std::string& expected, const std::string& found) {
    throw log::Unreadable(
        fmt::format("{}: expected {}, found {}", Printable(path.string()), expected, found));
}

const char* KindOf(fs::file_type type) {
    switch (type) {
        case fs::file_type::not_found:
            return "nothing";
        case fs::file_type::directory:
            return "a folder";
        case fs::file_type::symlink:
            return "a symbolic link";
        default:
            return "neither a file nor a folder";
    }
}

void CheckIs(const fs::path& path, fs::file_type wanted, const char* expected) {
    std::error_code unknown;
    const fs::file_type type = fs::symlink_status(path, unknown).type();
    if (type != wanted) {
        Refuse(path, expected, type == fs::file_type::none ? unknown.message() : KindOf(type));
    }
}

/// A link could lead anywhere, and reading a pipe might never end.
void CheckTree(const fs::path& folder) try {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const fs::file_type type = entry.symlink_status().type();
        if (type != fs::file_type::regular && type != fs::file_type::directory) {
            Refuse(entry.path(), "a file or a folder of evidence", KindOf(type));
        }
    }
} catch (const fs::filesystem_error& error) {
    Refuse(folder, "to read the evidence in it", error.code().message());
}

/// Refuses what has campaign.json, but cannot be a part.
void CheckKind(const Json& json) {
    if (json.value("format", 0) != campaign::kFormat) {
        throw std::runtime_error("format " + json.value("format", Json()).dump());
    }
    if (!json.value("merged", Json()).is_null()) {
        throw std::runtime_error("campaigns that are merged already");
    }
    for (const Json& word : json.at("commandLine")) {
        if (StartsWith(word.get<std::string>(), "--search")) {
            throw std::runtime_error("a search");
        }
    }
}

void TellPart(Part& part) {
    const CampaignRecord& record = part.record;
    part.told = {part.folder, record.note,  record.seed,  record.versions,
                 {},          record.state, record.begin, record.end};
    if (record.state == "running") {
        part.told.state = "killed";
    }
    if (record.shard) {
        part.told.shard = record.shard->part;
        part.planned = record.shard->cases;
        return;
    }
    for (const CaseRecord& one : record.cases) {
        part.planned.push_back(one.id);
    }
}

void ReadRecord(Part& part) try {
    const std::string path = part.folder + "/campaign.json";
    CheckIs(path, fs::file_type::regular, "the record of a campaign");
    std::ifstream file(path, std::ios::binary);
    part.json = Json::parse(file);
    CheckKind(part.json);
    part.record = RecordIn(part.json);
    TellPart(part);
} catch (const log::Unreadable&) {
    throw;
} catch (const std::exception& error) {
    Refuse(part.folder + "/campaign.json",
           fmt::format("the record of a campaign (format {})", campaign::kFormat), Printable(error.what()));
}

void ReadCase(const std::string& folder, CaseRecord& record) {
    const fs::path place = folder + "/" + record.Folder();
    record = campaign::ReadCaseRecord(folder, record);
    for (const std::string& file : record.files) {
        if (!IsPlainName(file) || !fs::exists(place / file)) {
            Refuse(place / file, "the evidence that case.json names",
                   IsPlainName(file) ? "nothing" : "another place");
        }
    }
    if (campaign::IsOver(record.outcome) && !Holds(record.files, "verdict.json")) {
        Refuse(place, "the verdict of a case that has come to its end", "none");
    }
}

/// A campaign may be killed before a case has its record, or before campaign.json tells of it.
void ReadCases(Part& part) {
    static constexpr Outcome kOpen[] = {Outcome::NotRun, Outcome::Running, Outcome::Interrupted};
    const Json& cases = part.json.at("cases");
    for (std::size_t at = 0; at < cases.size(); ++at) {
        CaseRecord& record = part.record.cases[at];
        const bool isOpen = std::any_of(std::begin(kOpen), std::end(kOpen), [&](Outcome outcome) {
            return cases[at].value("outcome", "") == NameOf(outcome);
        });
        if (!isOpen || fs::exists(part.folder + "/" + record.Folder() + "/case.json")) {
            ReadCase(part.folder, record);
        }
    }
}

}  // namespace

const CaseRecord* Part::Find(const std::string& id) const {
    const auto found = std::find_if(record.cases.begin(), record.cases.end(),
                                    [&id](const CaseRecord& one) { return one.id == id; });
    return found == record.cases.end() ? nullptr : &*found;
}

Part ReadPart(const std::string& folder) {
    Part part;
    part.folder = folder;
    CheckIs(fs::path(folder) / "campaign.json", fs::file_type::regular, "the record of a campaign");
    try {
        part.hold = campaign::HoldCampaignFolder(folder, true);
    } catch (const std::runtime_error& error) {
        throw log::Unreadable(error.what());
    }
    ReadRecord(part);
    const fs::path cases = folder + "/cases";
    std::error_code unknown;
    if (fs::symlink_status(cases, unknown).type() != fs::file_type::not_found) {
        CheckIs(cases, fs::file_type::directory, "a folder of evidence");
        CheckTree(cases);
    }
    ReadCases(part);
    return part;
}

}  // namespace rig::merge
