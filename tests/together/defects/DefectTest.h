#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/Dvr.h"
#include "tests/support/Harness.h"
#include "tests/support/World.h"

inline constexpr const char* kNoMatch = "'reid' attribute does not match expected: '";

// The assertion on a message that is not a document.
constexpr const char* kHandleMessage10 =
    "virtual VelProtocolBase::e_MsgReturn VelProtocol_1_0::HandleMessage()";
constexpr const char* kHandleMessage20 =
    "virtual VelProtocolBase::e_MsgReturn VelProtocol_2_0::HandleMessage()";
constexpr const char* kNoError = "not incomingMessage.Error()";

/// The hashes of the two files that the DVR of these tests has recorded.
extern const char* const kMetadataHash;
extern const char* const kVideoHash;

/// Functions of the harness, as an assertion that fails in them names them.
extern const char* const kMain;
extern const char* const kGetMessage;
extern const char* const kSendMessage;

/// A DVR with one defect, and the harness that meets it.
///
/// A suite is named after the defect that its tests play and the dialect: MissingReid20 plays missing-reid in
/// a 2.0 dialogue. The DVR has one event, Event1, with the files Meta.xml (4 bytes) and Video.ts (5 bytes).
class DefectTest : public testing::Test {
 protected:
    explicit DefectTest(int dialect);
    void SetUp() override;

    /// Expects every line that this test shows, according to the table, in the harness's log.
    void TearDown() override;

    /// Starts the harness with these switches and the DVR with the suite's defect. Takes the log up to the
    /// line that the DVR is connected.
    /// @param place  where the defect acts, or further defects: {"--on", "EVENT"}
    /// @param value  of the defect, with its "="
    void Start(const std::vector<std::string>& switches, const std::vector<std::string>& place = {},
               const std::string& value = "", Here here = Here::current());

    /// The next line of the harness's log.
    void Logs(unsigned int level, const std::string& text, Here here = Here::current());

    /// Takes the next line, skipping the framing trace.
    LogLine NextLine(Here here = Here::current());

    /// The export runs to DONE: the DVR says so and ends with status 0; the harness stops on SIGINT.
    void Completes(const std::string& summary = "exported 1 of 1 event, 2 files, 9 bytes",
                   Here here = Here::current());

    /// The DVR waits in vain for what it expects, and ends with status 3; the harness stops on SIGINT.
    void Stalls(const std::string& expected, Here here = Here::current());

    /// The DVR ends by itself, as the defect tells it to, with status 0.
    void DvrHasEnded(Here here = Here::current());

    /// The harness is gone while the DVR waits for what it expects; the DVR ends with status 1.
    void DvrMissesTheHarness(const std::string& expected, Here here = Here::current());

    /// The harness fails an assertion, and the DVR, which waits for what it expects, ends with status 1.
    void Fails(const std::string& function, const std::string& assertion, const std::string& expected,
               Here here = Here::current());

    /// The messages that the defect acted on, as the DVR marks them.
    void Marks(const std::vector<std::string>& messages, Here here = Here::current());

    /// The transcript has this line.
    void Notes(const std::string& line, Here here = Here::current());

    const std::string dialect;
    std::string timeout = "1";        // seconds that the DVR waits for a message
    std::string transferTime = "20";  // milliseconds; longer with -x, so the second request is in time
    World world;
    std::optional<Harness> harness;
    std::optional<Dvr> dvr;

 private:
    std::string Defect() const;
};

/// A 1.0 dialogue, in steps that take the harness's lines.
class Defect10 : public DefectTest {
 protected:
    Defect10() : DefectTest(1) {}

    void Opens(Here here = Here::current());
    void Describes(const std::string& reid = "Event1", Here here = Here::current());
    void CompletesFile(const std::string& file, Here here = Here::current());

    /// The lines after the last FILE_COMPLETE.
    void IsDone(const std::vector<std::string>& events = {"Event1"}, Here here = Here::current());

    /// Everything after the description.
    void ExportsEvent(Here here = Here::current());

    /// The harness closes the connection, and everything ends as in Completes.
    void ClosesAndCompletes(Here here = Here::current());
};

/// A 2.0 dialogue, in steps that take the harness's lines.
class Defect20 : public DefectTest {
 protected:
    Defect20() : DefectTest(2) {}

    void Opens(Here here = Here::current());
    void Lists(Here here = Here::current());
    void Describes(const std::string& reid = "Event1", Here here = Here::current());

    /// Everything up to the request for the first file.
    void ReachesFirstFile(Here here = Here::current());

    /// FILE_COMPLETE for the awaited file, after which `left` are queued.
    void CompletesFile(const std::string& file, int left, Here here = Here::current());

    /// The same for Meta.xml, and the plain request for Video.ts, with a new hash or without.
    void CompletesMetadata(Here here = Here::current());
    void RequestsVideo(bool rehash = false, Here here = Here::current());

    /// The same for Video.ts, and the report that all files have arrived.
    void CompletesVideo(Here here = Here::current());

    void Acknowledges(Here here = Here::current());

    /// The lines after the plain request for Video.ts.
    void ExportsRest(Here here = Here::current());

    /// Everything after the request for the first file.
    void ExportsFiles(Here here = Here::current());
};

/// The text of a FILE_COMPLETE as the harness prints it, for one of the two files; `reid` and `file` as the
/// defect has them.
std::string FileComplete10(const std::string& reid, const std::string& file, bool ofVideo = false);
std::string FileComplete20(const std::string& reid, const std::string& file, bool ofVideo = false);
