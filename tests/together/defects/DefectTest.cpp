#include "tests/together/defects/DefectTest.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <fstream>

#include "tests/together/defects/ShownLines.h"

const char* const kMetadataHash = "ea3bd73e2b506e00527232b3ed743c066da83a8e3066f62a71e75eb9b4aa1db6";
const char* const kVideoHash = "0cab1c9617404faf2b24e221e189ca5945813e14d3f766345b09ca13bbe28ffc";

const char* const kMain = "int main(int, char**)";
const char* const kGetMessage = "void VelProtocolBase::GetMessage(std::vector<char>&)";
const char* const kSendMessage = "void VelProtocolBase::SendMessage(TiXmlDocument&)";

namespace {

constexpr const char* kRecordings = "/mnt/recordings";

void Record(const std::string& file, const std::string& content) {
    std::ofstream(std::string(kRecordings) + "/Event1/" + file) << content;
}

/// MissingReid20 is missing-reid.
std::string DefectOf(const std::string& suite) {
    std::string name;
    for (const char letter : suite.substr(0, suite.size() - 2)) {
        if (std::isupper(static_cast<unsigned char>(letter)) not_eq 0 and not name.empty()) {
            name += '-';
        }
        name += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return name;
}

std::string FileComplete(const std::string& envelope, const std::string& reid, const std::string& file,
                         bool ofVideo) {
    return "<msg req=\"FILE_COMPLETE\"" + envelope + " reid=\"" + reid + "\" file=\"" + file +
           "\" length=\"" + (ofVideo ? "5" : "4") + "\" hashCode=\"" +
           (ofVideo ? kVideoHash : kMetadataHash) + "\" />";
}

}  // namespace

DefectTest::DefectTest(int number) : dialect(std::to_string(number)) {}

void DefectTest::SetUp() {
    mkdir(kRecordings, 0755);
    mkdir((std::string(kRecordings) + "/Event1").c_str(), 0755);
    Record("Meta.xml", "meta");
    Record("Video.ts", "video");
}

void DefectTest::TearDown() {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string(test.test_suite_name()) + "." + test.name();
    for (const ShownLine& line : LinesShownBy(name)) {
        EXPECT_TRUE(harness and Shows(harness->GetProcess().output, line))
            << "the log of this test has no line of level " << line.level << " like \"" << line.text << "\"";
    }
}

std::string DefectTest::Defect() const {
    return DefectOf(testing::UnitTest::GetInstance()->current_test_info()->test_suite_name());
}

void DefectTest::Start(const std::vector<std::string>& switches, const std::vector<std::string>& place,
                       const std::string& value, Here here) {
    std::vector<std::string> all = {"-p", dialect};
    all.insert(all.end(), switches.begin(), switches.end());
    harness.emplace(all);
    harness->Listens(here);

    const bool twice = std::find(switches.begin(), switches.end(), "-x") not_eq switches.end();
    std::vector<std::string> arguments = {
        "--protocol", dialect,         "--recordings",    kRecordings,
        "--timeout",  timeout,         "--transfer-time", twice ? "200" : transferTime,
        "--defect",   Defect() + value};
    arguments.insert(arguments.end(), place.begin(), place.end());
    dvr.emplace(arguments);

    while (not StartsWith(NextLine(here).text, "Connected to: fam=2  127.0.0.1:")) {
    }
}

void DefectTest::Logs(unsigned int level, const std::string& text, Here here) {
    harness->Logs(level, text, here);
}

LogLine DefectTest::NextLine(Here here) {
    LogLine line = ParseLogLine(harness->TakesRawLine(here));
    while (IsFramingTrace(line)) {
        line = ParseLogLine(harness->TakesRawLine(here));
    }
    return line;
}

void DefectTest::Completes(const std::string& summary, Here here) {
    dvr->EndsWithStatus(0, "", here);
    Notes(summary, here);
    harness->StopsOnInterrupt(here);
}

void DefectTest::Stalls(const std::string& expected, Here here) {
    dvr->EndsWithStatus(3, "expected " + expected + ", found nothing within " + timeout + "000 ms", here);
    harness->StopsOnInterrupt(here);
}

void DefectTest::DvrHasEnded(Here here) {
    dvr->EndsWithStatus(0, "", here);
}

void DefectTest::DvrMissesTheHarness(const std::string& expected, Here here) {
    dvr->EndsWithStatus(1, "expected " + expected + ", found the end of the connection between two messages",
                        here);
}

void DefectTest::Fails(const std::string& function, const std::string& assertion, const std::string& expected,
                       Here here) {
    harness->FailsAssertion(function, assertion, here);
    DvrMissesTheHarness(expected, here);
}

void DefectTest::Marks(const std::vector<std::string>& messages, Here here) {
    const std::vector<std::string> found = dvr->MarkedWith(Defect());
    if (found not_eq messages) {
        FailAt(here, "expected the mark of " + Defect() + " on " + testing::PrintToString(messages) +
                         ", found it on " + testing::PrintToString(found));
    }
}

void DefectTest::Notes(const std::string& line, Here here) {
    const std::vector<std::string> lines = dvr->Transcript();
    if (std::find(lines.begin(), lines.end(), line) == lines.end()) {
        FailAt(here, "the transcript has no line \"" + line + "\"");
    }
}

void Defect10::Opens(Here here) {
    Logs(1, "got an OK, sending GET_XML", here);
}

void Defect10::Describes(const std::string& reid, Here here) {
    Logs(32, "Found event " + reid, here);
}

void Defect10::CompletesFile(const std::string& file, Here here) {
    Logs(64, "Got FILE_COMPLETE for: reid=Event1  file=" + file, here);
}

void Defect10::IsDone(const std::vector<std::string>& events, Here here) {
    Logs(16, "Sending EVENT_XFER_COMPLETE", here);
    for (const std::string& event : events) {
        Logs(16, "HandleMessage: event = '" + event + "'", here);
    }
    Logs(16, "Sending DONE", here);
}

void Defect10::ExportsEvent(Here here) {
    CompletesFile("Meta.xml", here);
    CompletesFile("Video.ts", here);
    IsDone({"Event1"}, here);
}

void Defect10::ClosesAndCompletes(Here here) {
    Logs(16, "Closing client socket...", here);
    Completes("exported 1 of 1 event, 2 files, 9 bytes", here);
}

void Defect20::Opens(Here here) {
    Logs(1, "got an OK, sending GET_EVENT_LIST", here);
}

void Defect20::Lists(Here here) {
    Logs(16, "'source' attribute = 'velloran-rig'", here);
}

void Defect20::Describes(const std::string& reid, Here here) {
    Logs(16, "'reid' attribute in EVENT msg = '" + reid + "'", here);
}

void Defect20::ReachesFirstFile(Here here) {
    Opens(here);
    Lists(here);
    Describes("Event1", here);
}

void Defect20::CompletesFile(const std::string& file, int left, Here here) {
    Logs(64, "Got FILE_COMPLETE for: reid=Event1  file=" + file, here);
    Logs(32, "filesToReceive size = " + std::to_string(left), here);
}

void Defect20::RequestsVideo(bool rehash, Here here) {
    Logs(32, std::string("calling SendFileRequest(Event1/Video.ts, ") + (rehash ? "true" : "false") + ")",
         here);
}

void Defect20::CompletesMetadata(Here here) {
    CompletesFile("Meta.xml", 1, here);
    RequestsVideo(false, here);
}

void Defect20::CompletesVideo(Here here) {
    CompletesFile("Video.ts", 0, here);
    Logs(16, "Sending EVENT_XFER_COMPLETE", here);
}

void Defect20::Acknowledges(Here here) {
    Logs(32, "Got EVENT_XFER_ACK for: reid='Event1'", here);
    Logs(16, "Sending DONE", here);
}

void Defect20::ExportsRest(Here here) {
    CompletesVideo(here);
    Acknowledges(here);
}

void Defect20::ExportsFiles(Here here) {
    CompletesMetadata(here);
    ExportsRest(here);
}

std::string FileComplete10(const std::string& reid, const std::string& file, bool ofVideo) {
    return FileComplete("", reid, file, ofVideo);
}

std::string FileComplete20(const std::string& reid, const std::string& file, bool ofVideo) {
    return FileComplete(" protocolVersion=\"2.0\"", reid, file, ofVideo);
}
