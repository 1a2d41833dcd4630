#include "rig/merge/Folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>

#include "rig/base/Descriptor.h"
#include "rig/base/Interrupts.h"
#include "rig/base/Printable.h"
#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/log/LogReader.h"
#include "rig/result/Json.h"

namespace rig::merge {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 256 * 1024;  // bytes

[[noreturn]] void FailToWrite(const fs::path& path, const std::string& reason) {
    throw std::runtime_error(
        fmt::format("{}: expected to write evidence there, found: {}", Printable(path.string()), reason));
}

/// @return the path without links and without a slash at its end
fs::path Whole(const fs::path& path) {
    const fs::path whole = fs::weakly_canonical(fs::absolute(path));
    return whole.has_filename() ? whole : whole.parent_path();
}

/// A folder that goes away again unless it is kept.
class Beside {
 public:
    explicit Beside(const fs::path& out)
        : out_(Whole(out)), path_(out_.string() + ".merging-" + std::to_string(getpid())) {
        const campaign::CaseFolder parent(path_.parent_path().string());
        std::error_code error;
        if (!fs::create_directory(path_, error)) {
            FailToWrite(path_, error ? error.message() : "another merge");
        }
    }
    ~Beside() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;

    const fs::path& Path() const { return path_; }

    /// Once all is on the disk, as the parts may be deleted then.
    void Keep() {
        const Descriptor folder(open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (syncfs(folder.Number()) != 0 && errno != ENOSYS) {
            FailToWrite(path_, std::strerror(errno));
        }
        if (std::rename(path_.c_str(), out_.c_str()) != 0) {
            FailToWrite(out_, std::strerror(errno));
        }
    }

 private:
    const fs::path out_;
    const fs::path path_;
};

void CheckInterrupts(Interrupts& interrupts) {
    if (interrupts.Came()) {
        throw Interrupted("interrupted by " + interrupts.Words() + ", so that nothing is left");
    }
}

/// Copies evidence, unless a signal comes.
class Copier {
 public:
    explicit Copier(Interrupts& interrupts) : interrupts_(interrupts) {}

    void Copy(const fs::path& from, const fs::path& to) {
        if (fs::symlink_status(from).type() != fs::file_type::directory) {
            CopyFile(from, to);
            return;
        }
        const campaign::CaseFolder made(to.string());
        for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
            Copy(entry.path(), to / entry.path().filename());
        }
    }

 private:
    void CopyFile(const fs::path& from, const fs::path& to) {
        const Descriptor source(open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        std::size_t count = Read(source, from);
        for (campaign::GrowingFile target(to.string()); count > 0; count = Read(source, from)) {
            target.Add({piece_.data(), count});
            CheckInterrupts(interrupts_);
        }
    }

    std::size_t Read(const Descriptor& source, const fs::path& from) {
        const ssize_t count = read(source.Number(), piece_.data(), piece_.size());
        if (count < 0) {
            const char* const reason = std::strerror(errno);
            throw log::Unreadable(
                fmt::format("{}: expected to read evidence, found: {}", Printable(from.string()), reason));
        }
        return static_cast<std::size_t>(count);
    }

    Interrupts& interrupts_;
    std::vector<char> piece_ = std::vector<char>(kPiece);
};

/// @return where the part's evidence goes: by case that another part stands for
std::map<std::string, std::string> PlacesOf(std::size_t part, const Merged& merged) {
    std::map<std::string, std::string> places;
    for (const campaign::OtherRun& other : merged.record.merged->others) {
        if (other.part == part + 1) {
            places[other.id] = other.folder;
        }
    }
    return places;
}

/// @return the path, changed if there is something already
fs::path Free(const fs::path& path, std::size_t part) {
    return fs::exists(path) ? Free(fmt::format("{}~part-{}", path.string(), part + 1), part) : path;
}

/// Copies the folders of cases, and what is kept beside them of earlier attempts (CASE~1).
/// @param isOther  only those for which another part stands; else only the rest
void CopyPart(Copier& copier, const fs::path& to, const Merged& merged, std::size_t part,
              const fs::path& cases, bool isOther) {
    const std::map<std::string, std::string> places = PlacesOf(part, merged);
    for (const fs::directory_entry& entry : fs::directory_iterator(cases)) {
        const std::string name = entry.path().filename().string();
        const std::size_t attempt = std::min(name.find('~'), name.size());
        const auto place = places.find(name.substr(0, attempt));
        const bool hasOther = place != places.end();
        if (isOther == hasOther) {
            const std::string target = hasOther ? place->second + name.substr(attempt) : "cases/" + name;
            copier.Copy(entry.path(), Free(to / target, part));
        }
    }
}

/// What others have of a case goes into its folder, which must be there before.
void CopyEvidence(const fs::path& to, const Merged& merged, const std::vector<Part>& parts,
                  Interrupts& interrupts) {
    Copier copier(interrupts);
    for (const bool isOther : {false, true}) {
        for (std::size_t part = 0; part < parts.size(); ++part) {
            const fs::path cases = parts[part].folder + "/cases";
            if (fs::exists(cases)) {
                CopyPart(copier, to, merged, part, cases, isOther);
            }
        }
    }
}

/// What the merged campaign says of a case, its own record says as well.
void WriteRecords(const std::string& to, const Merged& merged, const std::vector<Part>& parts) {
    const campaign::CaseFolder folder(to + "/parts");
    for (std::size_t at = 0; at < parts.size(); ++at) {
        folder.Write(fmt::format("{}.json", at + 1), result::Print(parts[at].json));
    }
    for (const campaign::CaseRecord& record : merged.record.cases) {
        if (record.outcome == campaign::Outcome::Interrupted) {
            campaign::CaseFolder(to + "/" + record.Folder()).Write("case.json", CaseJson(record));
        }
    }
    campaign::WriteRecord(to, merged.record);
    campaign::WriteReports(to, merged.result);
}

}  // namespace

void WriteFolder(const std::string& out, const Merged& merged, const std::vector<Part>& parts) try {
    Interrupts interrupts;
    Beside beside(out);
    CopyEvidence(beside.Path(), merged, parts, interrupts);
    WriteRecords(beside.Path().string(), merged, parts);
    CheckInterrupts(interrupts);
    beside.Keep();
} catch (const fs::filesystem_error& error) {
    FailToWrite(out, error.what());
}

}  // namespace rig::merge
