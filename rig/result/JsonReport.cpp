#include "rig/result/Json.h"
#include "rig/result/Reports.h"

namespace rig::result {
namespace {

Json ToJson(const CheckResult& check) {
    Json evidence = Json::array();
    for (const Evidence& line : check.evidence) {
        evidence.push_back(
            {{"file", line.file}, {"line", line.line}, {"text", line.text}, {"note", line.note}});
    }
    return {{"id", check.id},
            {"requirement", check.requirement},
            {"verdict", NameOf(check.verdict)},
            {"expected", check.expected},
            {"found", check.found},
            {"evidence", std::move(evidence)}};
}

Json ToJson(const Step& step) {
    static constexpr const char* kKinds[] = {"dvr", "harness", "fault", "note"};
    return {{"kind", kKinds[static_cast<std::size_t>(step.kind)]},
            {"time", Optional(step.time)},
            {"text", step.text},
            {"line", step.line}};
}

Json ToJson(const RunResult& run);

Json ToJson(const RunResult& run) {
    return {{"name", run.name},
            {"switches", run.switches},
            {"verdict", NameOf(WorstOf(run))},
            {"begin", Optional(run.begin)},
            {"end", Optional(run.end)},
            {"checks", ToArray(run.checks, ToJson)},
            {"timings", ToArray(run.timings, result::ToJson)},
            {"steps", ToArray(run.steps, ToJson)}};
}

}  // namespace

std::string JsonReport(const Result& result) {
    const Json json = {{"verdict", NameOf(WorstOf(result))}, {"runs", ToArray(result.runs, ToJson)}};
    return Print(json);
}

}  // namespace rig::result
