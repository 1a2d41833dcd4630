#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "rig/dvr/defects/Defect.h"
#include "rig/dvr/dialogue/Habits.h"
#include "rig/dvr/recordings/EventKinds.h"
#include "rig/dvr/weaknesses/Weakness.h"
#include "rig/dvr/wire/Style.h"
#include "rig/protocol/Catalogue.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/TemporaryFolder.h"

// --defect and what goes with it, on the command line of the built program.
namespace {

using Arguments = std::vector<std::string>;

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

/// @return the table in that document, which scripts/rig-doc makes
std::string Documented(const std::string& name) {
    std::ostringstream page;
    page << std::ifstream(VELLORAN_TABLES "/" + name).rdbuf();
    return page.str().substr(page.str().find("\n| ") + 1);
}

TEST(DefectCommand, ListsTheDefects) {
    ExpectListed("--list-defects", rig::dvr::ListDefects());
    EXPECT_EQ(rig::AsMarkdown(rig::dvr::ListDefects()), Documented("defects.md"));
}

TEST(DefectCommand, ListsTheManners) {
    ExpectListed("--list-styles", rig::dvr::ListStyles());
    ExpectListed("--list-events", rig::dvr::ListEvents());
    ExpectListed("--list-habits", rig::dvr::ListHabits());
}

TEST(DefectCommand, ListsTheWeaknesses) {
    ExpectListed("--list-weaknesses", rig::dvr::ListWeaknesses());
    EXPECT_EQ(rig::AsMarkdown(rig::dvr::ListWeaknesses()), Documented("weaknesses.md"));
}

TEST(DefectCommand, ListsTheMessagesThatDefectsMayActOn) {
    ExpectListed("--list-messages", rig::protocol::ListMessages());
    EXPECT_EQ(rig::AsMarkdown(rig::protocol::ListMessages()), Documented("messages.md"));
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
