#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "Export.h"

// A recorder, which distrusts every backend, passes with the harness as the DVR does that checks it.

namespace {

struct RecordedRun {
    const char* dialect;
    const char* switches;
};

class Recorded : public testing::TestWithParam<RecordedRun> {};

TEST_P(Recorded, ExportFailsNoCheck) {
    const auto [dialect, switches] = GetParam();
    const Export played({"", dialect, "", switches, kRecorder});
    EXPECT_EQ(played.DvrStatus(), 0) << played.GetDvr().StandardError();
    EXPECT_EQ(played.GetDvr().StandardError(), "");
    const Judged judged = played.Judge();
    EXPECT_FALSE(judged.passed.empty());
    for (const auto& [check, found] : judged.found) {
        EXPECT_TRUE(check.back() == '?' or check.back() == '!') << check << ": " << found;
    }
}

std::string NameOfRecorded(const testing::TestParamInfo<RecordedRun>& info) {
    std::string name = std::string(info.param.dialect) + "_0" + info.param.switches;
    name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Export, Recorded,
                         testing::Values(RecordedRun{"1", ""}, RecordedRun{"1", "-g"}, RecordedRun{"1", "-z"},
                                         RecordedRun{"2", ""}, RecordedRun{"2", "-c 1"},
                                         RecordedRun{"2", "-e -f -t -r"}, RecordedRun{"2", "-x"},
                                         RecordedRun{"2", "-u"}, RecordedRun{"2", "-u -g"},
                                         RecordedRun{"2", "-g"}, RecordedRun{"2", "-z"},
                                         RecordedRun{"2", "-s 1"}, RecordedRun{"2", "-c 1 -d 1"}),
                         NameOfRecorded);

}  // namespace
