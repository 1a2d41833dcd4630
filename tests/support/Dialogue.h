#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/Harness.h"
#include "tests/support/Messages.h"
#include "tests/support/ScriptedDvr.h"
#include "tests/support/World.h"

/// The signature that an assertion in `main` prints.
inline constexpr const char* kMain = "int main(int, char**)";

/// A test in a world of its own.
class SystemTest : public testing::Test {
 protected:
    World world;
};

/// A test in which one DVR talks with the harness.
class Dialogue : public SystemTest {
 protected:
    /// Starts the harness and connects the DVR. Takes the log up to the line that says so.
    void Connect(const std::vector<std::string>& switches = {}, const Launch& launch = {});

    /// Another DVR connects, after the harness has closed the last one's connection.
    void Reconnect();

    /// The harness closes the connection.
    void Closes(Here here = Here::current());

    /// The harness has nothing more to say, on the connection or in the log, and stops on SIGINT.
    void Ends(Here here = Here::current());

    /// The process aborts at a failed assertion, having sent nothing more.
    void Dies(const std::string& function, const std::string& expression, Here here = Here::current());

    std::optional<Harness> harness;
    std::optional<ScriptedDvr> dvr;
};

/// A 1.0 dialogue, in steps that take their log lines and replies.
class Dialect10 : public Dialogue {
 protected:
    /// An export of E1 and its one file, up to the FILE_COMPLETE that ends it.
    void ExportsE1(Here here = Here::current());

    /// OK, answered by GET_XML.
    void Opens(Here here = Here::current());

    /// OK and its answer, in steps that see no log.
    void OpensUnseen();

    /// An export of E1 up to the end of the connection, in steps that see no log.
    void ExportsE1Unseen();

    /// XML with this one event, answered by the request for its first file.
    void Describes(const std::string& reid, const std::vector<std::string>& files,
                   Here here = Here::current());

    /// FILE_COMPLETE for the awaited file. The test must receive its answer.
    void Completes(const std::string& reid, const std::string& file, Here here = Here::current());

    /// The end of the export: EVENT_XFER_COMPLETE for these events and DONE.
    void ReportsDone(const std::vector<std::string>& ids, Here here = Here::current());

    /// The same, and the connection is closed.
    void IsDone(const std::vector<std::string>& ids, Here here = Here::current());
};

/// A 2.0 dialogue, in steps that take their log lines and replies.
class Dialect20 : public Dialogue {
 protected:
    /// Starts the harness with -p 2 and these switches.
    void Start(std::vector<std::string> switches = {}, const Launch& launch = {});

    /// OK, answered by GET_EVENT_LIST.
    void Opens(Here here = Here::current());

    /// EVENT_LIST. The test must receive its answer.
    void Lists(const std::vector<std::string>& ids, Here here = Here::current());

    /// EVENT with this description. The test must receive its answer.
    void Describes(const std::string& reid, const std::string& description, Here here = Here::current());

    /// OK, EVENT_LIST with this event and EVENT with these files, up to the request for the first file.
    void ReachesFirstFile(const std::string& reid, const std::vector<std::string>& files,
                          Here here = Here::current());

    /// FILE_COMPLETE for the awaited file, after which `left` are queued. The test must receive its answer.
    void Completes(const std::string& reid, const std::string& file, int left,
                   const std::string& attributes = "", Here here = Here::current());

    /// What follows the last file: EVENT_XFER_COMPLETE.
    void ReceivesEventXferComplete(const std::string& reid, Here here = Here::current());

    /// EVENT_XFER_ACK for the event in progress. The test must receive its answer.
    void Acknowledges(const std::string& reid, Here here = Here::current());

    /// What follows the last event: DONE, with further attributes if given.
    void ReceivesDone(const std::string& done = v2::kDone, Here here = Here::current());
};
