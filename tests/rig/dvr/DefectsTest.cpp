#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "rig/dvr/defects/Defect.h"
#include "rig/dvr/defects/Injector.h"
#include "rig/dvr/wire/Frame.h"
#include "tests/rig/dvr/FixedRecordings.h"

// Each row of defects.txt here: what a defect makes of a message.
namespace {

using rig::dvr::Injector;
using rig::dvr::Message;
using rig::dvr::Outgoing;

struct BytesRow {
    std::string message;  // dialect and name
    std::string honest;   // its text
    std::string defect;
    std::string sent;
};

void PrintTo(const BytesRow& row, std::ostream* out) {
    *out << row.defect << " on " << row.message;
}

std::vector<BytesRow> ReadBytes() {
    std::ifstream table(VELLORAN_DEFECTS);
    std::vector<BytesRow> rows;
    std::string message;
    std::string honest;
    for (std::string line; std::getline(table, line);) {
        const std::size_t text = line.find(": ");
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (line.front() == ' ') {
            rows.push_back({message, honest, line.substr(4, text - 4), line.substr(text + 2)});
        } else {
            message = line.substr(0, text);
            honest = line.substr(text + 2);
        }
    }
    return rows;
}

/// The text of a frame, or all of its bytes if it is not one whole frame.
std::string Show(const std::string& frame) {
    const std::string text = frame.substr(std::min(frame.find('<'), frame.size()));
    if (frame == rig::dvr::EncodeFrame(text)) {
        return text;
    }
    std::string shown = "bytes ";
    for (const char byte : frame) {
        const bool isPlain = byte >= ' ' && byte <= '~';
        shown += isPlain ? std::string(1, byte) : fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    }
    return shown;
}

/// All that goes out in place of a message, and what happens to the connection.
std::string Show(Injector& injector, const Outgoing& outgoing) {
    std::string shown;
    for (const Message& message : outgoing.before) {
        shown += message.Text() + " first, ";
    }
    shown += outgoing.dropped ? "nothing" : Show(injector.Frame(outgoing));
    for (const Message& message : outgoing.after) {
        shown += ", then " + message.Text();
    }
    shown += outgoing.defects.empty() ? ", untouched" : "";
    shown += outgoing.copy == rig::dvr::Copy::Good ? "" : ", spoils the copy";
    shown += outgoing.silent ? ", silent" : "";
    shown += outgoing.knocks ? ", knocks" : "";
    shown += outgoing.reconnects ? ", reconnects" : "";
    shown += outgoing.end == Outgoing::End::Close ? ", closes" : "";
    shown += outgoing.end == Outgoing::End::Reset ? ", resets" : "";
    return shown;
}

class DefectTest : public testing::TestWithParam<BytesRow> {};

TEST_P(DefectTest, DoesWhatTheTableSays) {
    const FixedRecordings recordings;
    Injector injector(recordings, GetParam().message.front() - '0', 0);
    injector.AddDefect(GetParam().defect, {});
    EXPECT_EQ(Show(injector, injector.Prepare(Message::Parse(GetParam().honest))), GetParam().sent);
}

INSTANTIATE_TEST_SUITE_P(Each, DefectTest, testing::ValuesIn(ReadBytes()));

TEST(DefectKinds, AreAllTested) {
    std::set<std::string> tested = {"new-hash", "garble"};  // RandomDefectsTest has those
    for (const BytesRow& row : ReadBytes()) {
        tested.insert(row.defect.substr(0, row.defect.find('=')));
    }
    for (const rig::dvr::DefectKind& kind : rig::dvr::DefectKinds()) {
        EXPECT_EQ(tested.count(kind.name), 1U) << kind.name;
    }
}

}  // namespace
