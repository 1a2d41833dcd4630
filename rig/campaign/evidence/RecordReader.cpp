#include "rig/campaign/evidence/RecordReader.h"

#include <fmt/format.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/log/LogReader.h"
#include "rig/result/Reports.h"

namespace rig::campaign {
namespace {

using Json = nlohmann::ordered_json;

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

template <typename Value>
std::optional<Value> MaybeIn(const Json& json) {
    return json.is_null() ? std::optional<Value>() : json.get<Value>();
}

/// @return the value of an enumeration that has this name, up to the last one
template <typename Named>
Named NamedAs(const std::string& name, Named last) {
    for (int value = 0; value <= static_cast<int>(last); ++value) {
        if (name == NameOf(static_cast<Named>(value))) {
            return static_cast<Named>(value);
        }
    }
    throw std::runtime_error("an unknown name: " + name);
}

std::optional<Ending> EndingIn(const Json& json) {
    const Ending end{MaybeIn<int>(json.at("status")), MaybeIn<int>(json.at("signal"))};
    return end.status || end.signal ? std::optional(end) : std::nullopt;
}

ProcessRecord ProcessIn(const Json& json) {
    return {json.at("command"), EndingIn(json), json.at("stoppedBy")};
}

CaseTimes TimesIn(const Json& json) {
    return {json.at("waited"),   json.at("duration"), json.at("pauses"), json.at("dvr"),
            json.at("lingered"), json.at("overhead"), json.at("hooks")};
}

void TakeRecord(const Json& json, CaseRecord& record) {
    record.outcome = NamedAs(json.at("outcome"), Outcome::Interrupted);
    record.reason = json.at("reason");
    record.over = NamedAs(json.at("over"), End::PortTaken);
    record.isSuspect = json.at("suspect");
    record.begin = MaybeIn<std::int64_t>(json.at("begin"));
    record.end = MaybeIn<std::int64_t>(json.at("end"));
    record.times = TimesIn(json.at("times"));
    record.attempts = json.at("attempts");
    record.harness = ProcessIn(json.at("harness"));
    if (!json.at("dvr").is_null()) {
        record.dvr = ProcessIn(json.at("dvr"));
    }
    for (const Json& hook : json.at("hooks")) {
        record.hooks.push_back({hook.at("hook"), hook.at("command"), EndingIn(hook), hook.at("seconds")});
    }
    record.files = json.at("files").get<std::vector<std::string>>();
    record.excluded = json.at("excluded").get<std::vector<std::string>>();
    if (!json.at("verdict").is_null()) {
        record.verdict = result::VerdictOf(json.at("verdict"));
    }
}

/// Passes a file of evidence on. Refuses what `take` does not find in it.
template <typename Take>
void TakeFile(const std::string& path, const char* expected, const Take& take) try {
    take(ContentOf(path));
} catch (const std::exception& error) {
    throw log::Unreadable(
        fmt::format("{}: expected {}, found: {}", Printable(path), expected, Printable(error.what())));
}

}  // namespace

bool IsOver(Outcome outcome) {
    return outcome != Outcome::NotRun && outcome != Outcome::Running && outcome != Outcome::Interrupted;
}

CaseRecord ReadCaseRecord(const std::string& campaign, const CaseRecord& planned) {
    CaseRecord record = planned;
    TakeFile(campaign + "/" + planned.Folder() + "/case.json", "the record of a case",
             [&record](const std::string& text) { TakeRecord(Json::parse(text), record); });
    return record;
}

result::RunResult ReadCaseResult(const std::string& campaign, CaseRecord& record) {
    result::RunResult run;
    TakeFile(campaign + "/" + record.Folder() + "/verdict.json", "a case's verdict",
             [&run](const std::string& text) { run = result::ReadJsonReport(text).runs.at(0); });
    for (result::CheckResult check : run.checks) {
        check.evidence.clear();
        record.checks.push_back(std::move(check));
    }
    record.timings = run.timings;
    return run;
}

std::optional<FinishedCase> ReadFinishedCase(const std::string& campaign, const CaseRecord& planned) try {
    FinishedCase finished{ReadCaseRecord(campaign, planned), {}};
    if (!IsOver(finished.record.outcome)) {
        return std::nullopt;
    }
    finished.result = ReadCaseResult(campaign, finished.record);
    return finished;
} catch (const std::exception&) {
    return std::nullopt;
}

}  // namespace rig::campaign
