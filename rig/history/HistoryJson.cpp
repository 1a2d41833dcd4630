#include "rig/history/Reports.h"
#include "rig/result/Json.h"

namespace rig::history {
namespace {

using result::Json;

std::size_t Number(std::size_t build) {
    return build + 1;
}

Json ToJson(const Build& build, std::size_t number) {
    return {{"number", number},
            {"folder", build.facts.folder},
            {"note", build.facts.note},
            {"begin", build.facts.begin},
            {"state", build.facts.state},
            {"shard", build.facts.shard},
            {"parts", build.facts.parts.size()},
            {"passed", build.passed},
            {"cases", build.cases},
            {"versions", build.facts.versions}};
}

Json ToJson(const Cell& cell) {
    return {{"campaign", Number(cell.build)},
            {"outcome", *cell.digest.worst},
            {"count", cell.digest.worstCount},
            {"runs", cell.digest.outcomes.size()},
            {"folder", cell.digest.folder}};
}

Json ToJson(const CaseCourse& one) {
    Json outcomes = Json::array();
    for (const Cell& cell : one.cells) {
        outcomes.push_back(ToJson(cell));
    }
    return {{"name", *one.name}, {"switches", *one.switches}, {"outcomes", std::move(outcomes)}};
}

Json ToJson(const Failure& failure) {
    Json cases = Json::array();
    for (const Text name : failure.cases) {
        cases.push_back(*name);
    }
    return {{"check", *failure.check},
            {"verdict", *failure.verdict},
            {"found", *failure.found},
            {"cases", std::move(cases)},
            {"since", Number(failure.since)},
            {"last", Number(failure.last)},
            {"lastPassed", failure.passed ? Json(Number(*failure.passed)) : Json(nullptr)}};
}

Json ToJson(const UnsteadyCase& unsteady) {
    Json firmwares = Json::array();
    for (const UnsteadyCase::Firmware& firmware : unsteady.firmwares) {
        firmwares.push_back({{"note", firmware.note}, {"outcomes", firmware.outcomes}});
    }
    return {{"case", *unsteady.name},
            {"changes", unsteady.changes},
            {"chances", unsteady.chances},
            {"rate", unsteady.Rate()},
            {"firmwares", std::move(firmwares)}};
}

Json ToJson(const diff::Span& span) {
    return {{"medianLeast", span.typical}, {"percentile95Most", span.most}};
}

Json ToJson(const ReactionCourse& course) {
    Json points = Json::array();
    for (const ReactionCourse::Point& point : course.points) {
        Json json = {{"campaign", Number(point.build)}, {"median", point.digest.median}};
        json.update(ToJson(point.digest.span));
        points.push_back(std::move(json));
    }
    Json marks = Json::array();
    for (const ReactionCourse::Mark& mark : course.marks) {
        marks.push_back({{"campaign", Number(course.points[mark.point].build)},
                         {"change", mark.isSlower ? "slower" : "faster"},
                         {"before", ToJson(mark.before)}});
    }
    return {{"request", *course.request},
            {"case", *course.name},
            {"points", std::move(points)},
            {"marks", std::move(marks)}};
}

}  // namespace

std::string HistoryJson(const History& history) {
    Json campaigns = Json::array();
    for (std::size_t build = 0; build < history.builds.size(); ++build) {
        campaigns.push_back(ToJson(history.builds[build], Number(build)));
    }
    Json leftOut = Json::array();
    for (const LeftOut& one : history.leftOut) {
        leftOut.push_back({{"folder", one.folder}, {"reason", one.reason}});
    }
    return result::Print({{"order", history.order == Order::Time ? "time" : "note"},
                          {"campaigns", std::move(campaigns)},
                          {"leftOut", std::move(leftOut)},
                          {"failures", result::ToArray(history.failures, ToJson)},
                          {"unsteady", result::ToArray(history.unsteady, ToJson)},
                          {"cases", result::ToArray(history.cases, ToJson)},
                          {"reactions", result::ToArray(history.reactions, ToJson)}});
}

}  // namespace rig::history
