#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/result/Json.h"

namespace rig::campaign {
namespace {

using result::Json;
using result::Optional;
using result::ToArray;

Json ToJson(const ProcessRecord& process) {
    return {{"command", process.command},
            {"status", process.end ? Optional(process.end->status) : Json(nullptr)},
            {"signal", process.end ? Optional(process.end->signal) : Json(nullptr)},
            {"stoppedBy", process.stoppedBy}};
}

Json ToJson(const HookRecord& hook) {
    return {{"hook", hook.hook},
            {"command", hook.command},
            {"status", hook.end ? Optional(hook.end->status) : Json(nullptr)},
            {"signal", hook.end ? Optional(hook.end->signal) : Json(nullptr)},
            {"seconds", hook.seconds}};
}

Json ToJson(const CaseTimes& times) {
    return {{"waited", times.waited}, {"duration", times.duration}, {"pauses", times.pauses},
            {"dvr", times.dvr},       {"lingered", times.lingered}, {"overhead", times.overhead},
            {"hooks", times.hooks}};
}

Json ToJson(const result::CheckResult& check) {
    return {{"id", check.id}, {"verdict", result::NameOf(check.verdict)}, {"found", check.found}};
}

Json ToJson(const Spread::Reaction& reaction) {
    return {{"request", reaction.request},
            {"medianLeast", reaction.least},
            {"medianMost", reaction.most},
            {"longest", reaction.longest}};
}

Json ToJson(const Coverage::ItemCount& item) {
    return {{"protocol", item.item.protocol},
            {"from", item.item.from},
            {"message", item.item.message},
            {"field", item.item.field},
            {"count", item.count}};
}

Json ToJson(const Coverage::Use& use) {
    return {{"name", use.name}, {"cases", use.cases}};
}

Json ToJson(const Coverage::FaultUse& use) {
    return {{"protocol", use.protocol}, {"message", use.message}, {"fault", use.fault}, {"cases", use.cases}};
}

Json ToJson(const Spread& spread);
Json ToJson(const CaseRecord& record);
Json ToJson(const PartRecord& part);
Json ToJson(const OtherRun& other);

Json ToJson(const Spread& spread) {
    const std::vector<double>& durations = spread.durations;
    return {{"case", spread.name},
            {"outcomes", spread.outcomes},
            {"duration",
             {{"least", durations.front()},
              {"median", durations[durations.size() / 2]},
              {"most", durations.back()}}},
            {"reactions", ToArray(spread.reactions, ToJson)}};
}

Json RoleOf(const Case& plan) {
    static constexpr const char* kRoles[] = {"first", "fault", "last"};
    return kRoles[static_cast<std::size_t>(plan.role)];
}

Json ToJson(const CaseRecord& record) {
    return {{"id", record.id},
            {"name", record.plan.name},
            {"run", record.run},
            {"protocol", record.plan.protocol},
            {"switches", record.plan.switches},
            {"sentence", record.plan.sentence},
            {"role", RoleOf(record.plan)},
            {"outcome", NameOf(record.outcome)},
            {"reason", record.reason},
            {"over", NameOf(record.over)},
            {"suspect", record.isSuspect},
            {"verdict", record.verdict ? Json(result::NameOf(*record.verdict)) : Json(nullptr)},
            {"folder", record.Folder()},
            {"files", record.files},
            {"begin", Optional(record.begin)},
            {"end", Optional(record.end)},
            {"times", ToJson(record.times)},
            {"attempts", record.attempts},
            {"harness", ToJson(record.harness)},
            {"dvr", record.dvr ? ToJson(*record.dvr) : Json(nullptr)},
            {"hooks", ToArray(record.hooks, ToJson)},
            {"excluded", record.excluded},
            {"checks", ToArray(record.checks, ToJson)},
            {"timings", ToArray(record.timings, result::ToJson)}};
}

Json ToObject(const std::vector<std::pair<std::string, std::string>>& pairs) {
    Json object = Json::object();
    for (const auto& [name, value] : pairs) {
        object[name] = value;
    }
    return object;
}

Json ToJson(const Shard& shard) {
    return {{"index", shard.index}, {"total", shard.total}, {"from", shard.from}};
}

Json ToJson(const PartRecord& part) {
    return {{"folder", part.folder},
            {"note", part.note},
            {"seed", part.seed},
            {"versions", ToObject(part.versions)},
            {"shard", part.shard ? ToJson(*part.shard) : Json(nullptr)},
            {"state", part.state},
            {"begin", part.begin},
            {"end", Optional(part.end)}};
}

Json ToJson(const OtherRun& other) {
    return {{"case", other.id},
            {"part", other.part},
            {"outcome", NameOf(other.outcome)},
            {"folder", other.folder}};
}

Json ToJson(const MergeRecord& merged) {
    return {{"differences", merged.differences},
            {"missing", merged.missing},
            {"doubles", merged.doubles},
            {"parts", ToArray(merged.parts, ToJson)},
            {"others", ToArray(merged.others, ToJson)}};
}

Json ToJson(const ShardRecord& shard) {
    Json json = ToJson(shard.part);
    json["cases"] = shard.cases;
    json["knownUnseen"] = shard.knownUnseen;
    return json;
}

Json OptionsOf(const CampaignRecord& campaign) {
    return {{"repeat", campaign.repeat},
            {"patience", campaign.patience.answer},
            {"maxReaction", Optional(campaign.maxReaction)},
            {"strict", campaign.isStrict},
            {"direct", campaign.isDirect},
            {"connectTimeout", campaign.patience.connect},
            {"idleTimeout", campaign.patience.idle},
            {"transferTimeout", campaign.patience.transfer},
            {"caseTimeout", campaign.patience.whole},
            {"linger", Optional(campaign.linger)}};
}

Json CoverageOf(const Coverage& coverage) {
    return {{"items", ToArray(coverage.Items(), ToJson)},
            {"switches", ToArray(coverage.Switches(), ToJson)},
            {"rules", ToArray(coverage.Rules(), ToJson)},
            {"faults", ToArray(coverage.Faults(), ToJson)},
            {"unreached", coverage.Unreached()}};
}

}  // namespace

std::string CampaignJson(const CampaignRecord& campaign) {
    const bool isOver = campaign.state != "running";
    return result::Print({{"format", kFormat},
                          {"state", campaign.state},
                          {"outcome", isOver ? Json(NameOf(campaign.Whole())) : Json(nullptr)},
                          {"status", isOver ? Json(ExitStatusOf(campaign.Whole())) : Json(nullptr)},
                          {"merged", campaign.merged ? ToJson(*campaign.merged) : Json(nullptr)},
                          {"counts", campaign.Counts()},
                          {"begin", campaign.begin},
                          {"end", Optional(campaign.end)},
                          {"note", campaign.note},
                          {"seed", campaign.HasOneSeed() ? Json(campaign.seed) : Json(nullptr)},
                          {"shard", campaign.shard ? ToJson(*campaign.shard) : Json(nullptr)},
                          {"commandLine", campaign.commandLine},
                          {"workingDirectory", campaign.workingDirectory},
                          {"versions", ToObject(campaign.versions)},
                          {"commands", ToObject(campaign.commands)},
                          {"options", OptionsOf(campaign)},
                          {"times", ToJson(campaign.Times())},
                          {"cases", ToArray(campaign.cases, ToJson)},
                          {"spread", ToArray(campaign.Spreads(), ToJson)},
                          {"knownUnseen", campaign.knownUnseen},
                          {"coverage", CoverageOf(campaign.coverage)}});
}

std::string CaseJson(const CaseRecord& record) {
    Json json = ToJson(record);
    Json whole = {{"format", kFormat}};
    whole.update(json);
    return result::Print(whole);
}

}  // namespace rig::campaign
