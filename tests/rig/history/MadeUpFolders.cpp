#include "tests/rig/history/MadeUpFolders.h"

using Json = nlohmann::ordered_json;

namespace {

constexpr std::int64_t kNewYear = 1'767'225'600'000'000;
constexpr std::int64_t kDay = 86'400'000'000;

}  // namespace

MadeUpFolders::MadeUpFolders() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder_.Path());
}

MadeUpFolders::~MadeUpFolders() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
}

void MadeUpFolders::Write(const std::string& folder, int day, const std::string& note,
                          const std::vector<Json>& cases, const Json& more) const {
    Json record = {{"format", 1},   {"state", "finished"}, {"begin", kNewYear + (day - 1) * kDay},
                   {"note", note},  {"seed", day},         {"versions", {{"host", "rig"}}},
                   {"cases", cases}};
    if (more.is_object()) {
        record.update(more);
    }
    folder_.Write(folder + "/campaign.json", record.dump());
}

Json MadeUpCase(const std::string& name, const std::string& outcome, const std::string& found,
                double median) {
    const bool hasRun = outcome != "NOT RUN" && outcome != "RUNNING";
    const std::string verdict = hasRun ? outcome : "NOT REACHED";
    Json timing = {{"request", "GET_FILE"}, {"median", median}, {"percentile95", median + 10}};
    return {{"name", name},
            {"switches", "-p 2"},
            {"folder", "cases/" + name},
            {"outcome", outcome},
            {"reason", found},
            {"files", {"report.html"}},
            {"checks", Json::array({{{"id", "event-list.source"}, {"verdict", verdict}, {"found", found}}})},
            {"timings", Json::array({timing})}};
}
