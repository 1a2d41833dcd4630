#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rig/dvr/defects/Defect.h"
#include "rig/protocol/Catalogue.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/rig/dvr/UsageError.h"
#include "tests/support/TemporaryFolder.h"

// --defect and what goes with it, on the command line of the built program.
namespace {

using Arguments = std::vector<std::string>;

INSTANTIATE_TEST_SUITE_P(
    Defect, UsageErrorTest,
    testing::Values(
        UsageCase{"OtherDialect",
                  {"dvr", "--defect", "missing-hash"},
                  " dvr: --defect missing-hash: expected protocol 2.0, the only one that can show it, found "
                  "protocol 1.0"},
        UsageCase{"OtherMessage",
                  {"dvr", "--protocol", "2", "--defect", "missing-hash", "--on", "EVENT"},
                  " dvr: --defect missing-hash: expected one of FILE_COMPLETE with --on, found 'EVENT'"},
        UsageCase{"ValueWhereNoneIsTaken",
                  {"dvr", "--defect", "double=2"},
                  " dvr: --defect double: expected no value, found '2'"},
        UsageCase{"ValueThatIsNotACount",
                  {"dvr", "--defect", "garble=0"},
                  " dvr: --defect garble: expected a number of bytes above 0, found '0'"},
        UsageCase{"ValueThatIsNotAPlace",
                  {"dvr", "--defect", "close=soon"},
                  " dvr: --defect close: expected a number of bytes, 'all' or 'random', found 'soon'"},
        UsageCase{"OccurrenceZero",
                  {"dvr", "--defect", "close", "--on", "XML:0"},
                  " dvr: --on: expected MESSAGE or MESSAGE:N with N above 0, found 'XML:0'"},
        UsageCase{"OccurrenceNotANumber",
                  {"dvr", "--defect", "close", "--on", "XML:1x"},
                  " dvr: --on: expected MESSAGE or MESSAGE:N with N above 0, found 'XML:1x'"},
        UsageCase{"OccurrenceOfNothing",
                  {"dvr", "--defect", "close", "--on", ":1"},
                  " dvr: --on: expected MESSAGE or MESSAGE:N with N above 0, found ':1'"},
        UsageCase{"OccurrenceForgesALine",
                  {"dvr", "--defect", "close", "--on", "XML:\n"},
                  " dvr: --on: expected MESSAGE or MESSAGE:N with N above 0, found 'XML:\\n'"},
        UsageCase{"UnknownEvent",
                  {"dvr", "--defect", "close", "--at", "EVT-0004"},
                  " dvr: --at: expected EVENT or EVENT:FILE with an event in synthetic recordings, found "
                  "'EVT-0004'"},
        UsageCase{"UnknownEventOfAFile",
                  {"dvr", "--defect", "close", "--at", "EVT:a:b"},
                  " dvr: --at: expected EVENT or EVENT:FILE with an event in synthetic recordings, found "
                  "'EVT:a:b'"},
        UsageCase{"MessageWithoutDefect",
                  {"dvr", "--on", "XML", "--defect", "close"},
                  " dvr: --on: expected a --defect before it, found none" + kMoreDvrHelp},
        UsageCase{"PlaceWithoutDefect",
                  {"dvr", "--at", "EVT-0001"},
                  " dvr: --at: expected a --defect before it, found none" + kMoreDvrHelp},
        UsageCase{"SeedNotANumber",
                  {"dvr", "--seed", "0x1"},
                  " dvr: --seed: expected a number from 0 to 4294967295, found '0x1'" + kMoreDvrHelp},
        UsageCase{"SeedTooHigh",
                  {"dvr", "--seed", "4294967296"},
                  " dvr: --seed: expected a number from 0 to 4294967295, found '4294967296'" + kMoreDvrHelp}),
    NameOf);

TEST(DefectCommand, NamesTheChoicesForAnUnknownDefect) {
    const ProgramResult result = RunRig({"dvr", "--defect", "nonsense"});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
    const std::string start = "velloran-rig dvr: --defect: expected one of wrong-reid, missing-reid, ";
    EXPECT_EQ(result.errors.substr(0, start.size()), start);
    EXPECT_NE(result.errors.find("; found 'nonsense'\n"), std::string::npos) << result.errors;
    EXPECT_EQ(result.output, "");
}

void ExpectListed(const std::string& option, const rig::Listing& listing) {
    const ProgramResult result = RunRig({"dvr", option});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, rig::AsText(listing, 80));
    EXPECT_EQ(result.errors, "");
    const ProgramResult table = RunRig({"dvr", option, "--format", "markdown"});
    EXPECT_EQ(table.status, 0);
    EXPECT_EQ(table.output, rig::AsMarkdown(listing));
    EXPECT_EQ(table.errors, "");
}

TEST(DefectCommand, ListsTheDefects) {
    ExpectListed("--list-defects", rig::dvr::ListDefects());
}

TEST(DefectCommand, ListsTheMessagesThatDefectsMayActOn) {
    ExpectListed("--list-messages", rig::protocol::ListMessages());
}

/// Runs the DVR against a backend that reads `OK`, asks for the descriptions and reads them.
ProgramResult PlayToXml(const Arguments& options, std::string* descriptions = nullptr) {
    return PlayDvr(options, [descriptions](BackendConnection& backend) {
        backend.Read();
        const std::string text = RequestOf(backend, kGetXml);
        if (descriptions != nullptr) {
            *descriptions = text;
        }
    });
}

TEST(DefectCommand, PrintsTheSeedThatRepeatsTheRun) {
    std::string first;
    std::string second;
    const ProgramResult result = PlayToXml({"--defect", "garble=20", "--on", "XML"}, &first);
    const std::size_t start = result.output.find("seed ") + 5;
    const std::string seed = result.output.substr(start, result.output.find('\n', start) - start);
    PlayToXml({"--defect", "garble=20", "--on", "XML", "--seed", seed}, &second);
    EXPECT_EQ(first, second);
    EXPECT_NE(first.size(), 0U);
}

TEST(DefectCommand, ReadsASeedWithALeadingZeroAsDecimal) {
    EXPECT_NE(
        PlayToXml({"--defect", "double", "--on", "XML:0009", "--seed", "010"}).output.find(" seed 10\n"),
        std::string::npos);
}

TEST(DefectCommand, MarksWhatADefectHasDone) {
    const ProgramResult result = PlayToXml({"--defect", "description-other-reid=X", "--defect", "double"});
    EXPECT_NE(result.output.find("-> OK  [double]\n"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("-> XML (xmlFile: 3)  [description-other-reid]\n"), std::string::npos)
        << result.output;
}

TEST(DefectCommand, AcceptsColonsInTheNameOfAnEvent) {
    const TemporaryFolder folder;
    folder.Write("21:05:00/a.ts", "a");
    folder.Write("21/b.ts", "b");
    for (const char* place : {"21:05:00", "21:05:00:a.ts", "21:b.ts", "21"}) {
        const ProgramResult result =
            PlayToXml({"--recordings", folder.Path().string(), "--defect", "no-answer", "--at", place});
        EXPECT_EQ(result.status, 1) << "the backend leaves early";
        EXPECT_EQ(result.errors.find("--at"), std::string::npos) << result.errors;
    }
}

}  // namespace
