#include <array>
#include <stdexcept>

#include "rig/result/Json.h"
#include "rig/result/Reports.h"

namespace rig::result {
namespace {

template <typename Value>
std::optional<Value> OptionalIn(const Json& json) {
    return json.is_null() ? std::optional<Value>() : json.get<Value>();
}

CheckResult CheckIn(const Json& json) {
    CheckResult check{LastingId(json.at("id")), json.at("requirement"), VerdictOf(json.at("verdict")),
                      json.at("expected"),      json.at("found"),       {}};
    for (const Json& line : json.at("evidence")) {
        check.evidence.push_back({line.at("file"), line.at("line"), line.at("text"), line.at("note")});
    }
    return check;
}

Timing TimingIn(const Json& json) {
    return {json.at("request"),      json.at("count"),        json.at("median"),
            json.at("percentile95"), json.at("percentile99"), json.at("longest")};
}

Step StepIn(const Json& json) {
    static constexpr std::array kKinds = {"dvr", "harness", "fault", "note"};
    Step step{Step::Kind::Note, OptionalIn<std::int64_t>(json.at("time")), json.at("text"), json.at("line")};
    for (std::size_t kind = 0; kind < kKinds.size(); ++kind) {
        if (json.at("kind") == kKinds[kind]) {
            step.kind = static_cast<Step::Kind>(kind);
        }
    }
    return step;
}

RunResult RunIn(const Json& json) {
    RunResult run;
    run.name = json.at("name");
    run.switches = json.at("switches");
    run.begin = OptionalIn<std::int64_t>(json.at("begin"));
    run.end = OptionalIn<std::int64_t>(json.at("end"));
    for (const Json& check : json.at("checks")) {
        run.checks.push_back(CheckIn(check));
    }
    for (const Json& timing : json.at("timings")) {
        run.timings.push_back(TimingIn(timing));
    }
    for (const Json& step : json.at("steps")) {
        run.steps.push_back(StepIn(step));
    }
    return run;
}

}  // namespace

Verdict VerdictOf(const std::string& name) {
    for (int verdict = 0; verdict <= static_cast<int>(Verdict::Fail); ++verdict) {
        if (name == NameOf(static_cast<Verdict>(verdict))) {
            return static_cast<Verdict>(verdict);
        }
    }
    throw std::runtime_error("expected a verdict, found \"" + name + "\"");
}

Result ReadJsonReport(const std::string& text) {
    Result result;
    const Json json = Json::parse(text);
    for (const Json& run : json.at("runs")) {
        result.runs.push_back(RunIn(run));
    }
    return result;
}

}  // namespace rig::result
