#include "rig/campaign/Plan.h"

#include <fmt/format.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/base/ShellWord.h"
#include "rig/campaign/Campaign.h"
#include "rig/campaign/RunCommand.h"
#include "rig/campaign/evidence/Fingerprint.h"
#include "rig/judge/KnownFailures.h"
#include "rig/proxy/Namespace.h"

namespace rig::campaign {
namespace {

namespace fs = std::filesystem;

fs::path OwnPath() {
    std::error_code unknown;
    return fs::read_symlink("/proc/self/exe", unknown);
}

std::string DefaultHarness() {
    const fs::path beside = OwnPath().parent_path() / "velloran";
    return access(beside.c_str(), X_OK) == 0 ? ShellWord(beside.string()) : "velloran";
}

/// @return whether a proxy adds faults to the harness's
bool AddsFaults(const RunOptions& options) {
    return !options.selection.faults.empty() || !options.search.empty();
}

std::optional<std::string> DvrCommand(const RunOptions& options) {
    if (options.dvr && options.dvr->empty()) {
        // Short exports, as there are many of them.
        const char* const manner =
            AddsFaults(options) ? " --recorder --events single-file --transfer-time 50" : "";
        return ShellWord(OwnPath().string()) + " dvr --protocol {protocol} --seed {seed}" + manner;
    }
    return options.dvr;
}

bool IsProgram(const std::string& path) {
    std::array<char, 4> begin = {};
    std::ifstream(path, std::ios::binary).read(begin.data(), begin.size());
    const std::string_view found(begin.data(), begin.size());
    return found == "\177ELF" && access(path.c_str(), X_OK) == 0;
}

/// @return whether the harness may run in a network of its own: one that runs on this machine, and is no
///         script, which may call another machine
bool MayBeProxied(const RunOptions& options) {
    return !options.isDirect && options.log.empty() && options.stop.empty() &&
           (options.velloran.empty() || IsProgram(options.velloran)) && proxy::MayHaveOwnNetwork();
}

Rig RigOf(const RunOptions& options, std::uint32_t seed) {
    Rig rig;
    rig.harness = options.velloran.empty() ? DefaultHarness() : options.velloran;
    rig.proxy = ShellWord(OwnPath().string()) + " proxy";
    rig.isDirect = options.selection.faults.empty() && !MayBeProxied(options);
    rig.log = options.log;
    rig.stop = options.stop;
    rig.dvr = DvrCommand(options);
    rig.seed = seed;
    rig.hooks = options.hooks;
    rig.patience = options.patience;
    rig.linger = options.linger;
    rig.limits = {
        options.patience.answer, options.maxReaction, options.strict, {}, judge::PlaceOf(options.delivery)};
    if (rig.limits.delivered) {
        rig.limits.delivered->isLive = true;
    }
    rig.known = options.known.empty() ? judge::KnownFailures() : judge::ReadKnownFailures(options.known);
    rig.capture = options.capture;
    return rig;
}

std::vector<std::pair<std::string, std::string>> VersionsOf(const Rig& rig) {
    utsname system = {};
    uname(&system);
    return {{"velloran-rig", VELLORAN_VERSION},
            {"harnessSha256", FingerprintOf(rig.harness)},
            {"system", std::string(system.sysname) + " " + system.release + " " + system.machine},
            {"host", system.nodename}};
}

std::vector<std::pair<std::string, std::string>> CommandsOf(const Rig& rig) {
    std::vector<std::pair<std::string, std::string>> commands = {{"harness", rig.harness}};
    const auto add = [&commands](const char* name, const std::string& command) {
        if (!command.empty()) {
            commands.emplace_back(name, command);
        }
    };
    add("dvr", rig.dvr.value_or(""));
    add("log", rig.log);
    add("stop", rig.stop);
    add("before-case", rig.hooks.beforeCase);
    add("after-case", rig.hooks.afterCase);
    add("alive", rig.hooks.alive);
    add("power-cycle", rig.hooks.powerCycle);
    return commands;
}

/// The runs of a case follow each other: in a part of the campaign, too, so that one DVR made their spread.
std::vector<CaseRecord> PlannedCases(const Selection& selection, int repeat) {
    std::vector<CaseRecord> records;
    for (const Case& plan : Select(selection)) {
        for (int run = 1; run <= repeat; ++run) {
            CaseRecord record;
            record.plan = plan;
            record.run = run;
            record.id = repeat == 1 ? plan.name : plan.name + "-" + std::to_string(run);
            records.push_back(std::move(record));
        }
    }
    return records;
}

std::optional<ShardRecord> ShardRecordOf(const RunOptions& options) {
    if (!options.selection.shard) {
        return std::nullopt;
    }
    Selection whole = options.selection;
    whole.shard.reset();
    ShardRecord shard{*options.selection.shard, {}, {}};
    for (const CaseRecord& record : PlannedCases(whole, options.repeat)) {
        shard.cases.push_back(record.id);
    }
    return shard;
}

CampaignRecord RecordOf(const RunOptions& options, const Rig& rig) {
    CampaignRecord record;
    record.commandLine = OwnCommandLine();
    record.workingDirectory = fs::current_path();
    record.versions = VersionsOf(rig);
    record.commands = CommandsOf(rig);
    record.note = options.note;
    record.seed = rig.seed;
    record.repeat = options.repeat;
    record.patience = options.patience;
    record.maxReaction = options.maxReaction;
    record.linger = options.linger;
    record.isStrict = options.strict;
    record.isDirect = rig.isDirect;
    if (options.search.empty()) {
        record.shard = ShardRecordOf(options);
        record.cases = PlannedCases(options.selection, options.repeat);
    }
    return record;
}

std::string FolderOf(const RunOptions& options) {
    if (!options.out.empty()) {
        return options.out;
    }
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char name[64] = "";
    std::strftime(name, sizeof name, "velloran-campaign-%Y%m%d-%H%M%S", &local);
    // Parts often begin in the same second.
    const std::optional<Shard>& shard = options.selection.shard;
    return shard ? fmt::format("{}-{}-of-{}", name, shard->index, shard->total) : name;
}

bool IsExecutable(const std::string& path) {
    std::error_code unknown;
    return fs::is_regular_file(path, unknown) && access(path.c_str(), X_OK) == 0;
}

/// Once, as each case would fail for the same reason.
void CheckProxy(const RunOptions& options) {
    if (!AddsFaults(options)) {
        return;
    }
    if (!options.velloran.empty() && !IsExecutable(options.velloran)) {
        throw std::runtime_error(
            fmt::format("--velloran: with --faults expected the path of a program on this machine, found {}",
                        Quoted(options.velloran)));
    }
    if (!proxy::MayHaveOwnNetwork()) {
        throw std::runtime_error(
            "expected a network of its own for the harness, found that the system refuses it; run "
            "as root, or allow user namespaces");
    }
}

/// Evidence in the folder of the delivered files would count as delivered.
void CheckFolder(const std::string& folder, const RunOptions& options) {
    if (options.delivery.folder && IsInside(folder, *options.delivery.folder)) {
        throw std::runtime_error(
            fmt::format("--out: expected a folder outside --delivered, found {}", Quoted(folder)));
    }
}

}  // namespace

std::vector<std::string> OwnCommandLine() {
    std::ifstream file("/proc/self/cmdline");
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');) {
        words.push_back(word);
    }
    return words;
}

Planned PlanOf(const RunOptions& options, std::uint32_t seed) {
    Rig rig = RigOf(options, seed);
    CampaignRecord record = RecordOf(options, rig);
    CheckProxy(options);
    return {std::move(rig), std::move(record)};
}

Outcome PlanAndRun(const RunOptions& options) {
    Planned planned = PlanOf(options, options.seed ? *options.seed : std::random_device()());
    const std::string folder = FolderOf(options);
    CheckFolder(folder, options);
    MakeCampaignFolder(folder);
    Campaign campaign(std::move(planned.rig), folder, std::move(planned.record));
    const std::string& protocol = options.selection.protocol;
    return options.search.empty() ? campaign.Run()
                                  : campaign.Search(*ParseSearchLimit(options.search),
                                                    protocol == "both" ? 0 : std::stoi(protocol));
}

}  // namespace rig::campaign
