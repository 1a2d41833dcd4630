#include "rig/report/JsonReport.h"

#include <nlohmann/json.hpp>

namespace rig::report {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kIndent = 2;

Json ToJson(const std::optional<std::int64_t>& time) {
    return time ? Json(*time) : Json(nullptr);
}

Json ToJson(const CheckResult& check) {
    Json evidence = Json::array();
    for (const Evidence& line : check.evidence) {
        evidence.push_back({{"file", line.file}, {"line", line.line}, {"text", line.text}});
    }
    return {{"id", check.id},
            {"requirement", check.requirement},
            {"verdict", NameOf(check.verdict)},
            {"expected", check.expected},
            {"found", check.found},
            {"evidence", std::move(evidence)}};
}

Json ToJson(const Timing& timing) {
    return {{"request", timing.request},
            {"count", timing.count},
            {"median", timing.median},
            {"percentile95", timing.percentile95},
            {"percentile99", timing.percentile99},
            {"longest", timing.longest}};
}

Json ToJson(const Step& step) {
    static constexpr const char* kKinds[] = {"dvr", "harness", "fault", "note"};
    return {{"kind", kKinds[static_cast<std::size_t>(step.kind)]},
            {"time", ToJson(step.time)},
            {"text", step.text},
            {"line", step.line}};
}

Json ToJson(const RunResult& run);

template <typename Item>
Json ToArray(const std::vector<Item>& items) {
    Json array = Json::array();
    for (const Item& item : items) {
        array.push_back(ToJson(item));
    }
    return array;
}

Json ToJson(const RunResult& run) {
    return {{"name", run.name},
            {"switches", run.switches},
            {"verdict", NameOf(WorstOf(run))},
            {"begin", ToJson(run.begin)},
            {"end", ToJson(run.end)},
            {"checks", ToArray(run.checks)},
            {"timings", ToArray(run.timings)},
            {"steps", ToArray(run.steps)}};
}

}  // namespace

std::string JsonReport(const Result& result) {
    const Json json = {{"verdict", NameOf(WorstOf(result))}, {"runs", ToArray(result.runs)}};
    return json.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace rig::report
