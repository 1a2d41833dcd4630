#include "tests/harness/world/Trial.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <thread>
#include <vector>

#include "tests/harness/world/Still.h"
#include "tests/support/LogLine.h"
#include "tests/support/Messages.h"
#include "tests/support/Process.h"
#include "tests/support/ScriptedDvr.h"
#include "tests/support/Sockets.h"
#include "tests/support/World.h"

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

enum class Peer {
    kNone,    // does not connect
    kSilent,  // connects and says nothing
    kGone,    // connects and hangs up
    kTalks    // sends all of its messages at once, and again on each new connection
};

struct Situation {
    std::string name;
    std::vector<std::string> switches;
    Peer peer;
    std::vector<std::string> messages;
    microseconds earliest;  // of the interrupt, counted from the connection, or from the start without one
    microseconds latest;
};

/// Messages in frames, one after another.
std::string Frames(const std::vector<std::string>& messages) {
    std::string frames;
    for (const std::string& message : messages) {
        frames += Frame(message);
    }
    return frames;
}

/// A harness handles a message 250 ms after it has read it, so most of the time it waits. The situations keep
/// it busy for much of the time between their moments.
const std::vector<Situation>& Situations() {
    static const std::vector<Situation> situations = {
        {"start", {"-p", "2", "-z"}, Peer::kNone, {}, milliseconds(0), milliseconds(3)},
        {"silence", {}, Peer::kSilent, {}, milliseconds(0), milliseconds(3)},
        {"hang-up", {}, Peer::kGone, {}, milliseconds(0), milliseconds(5)},
        {"warning without end",
         {},
         Peer::kTalks,
         {Xml({"<recording-event/>"})},
         microseconds(249500),
         milliseconds(255)},
        {"many descriptions",
         {},
         Peer::kTalks,
         {Xml(std::vector<std::string>(1000, Description("E1", {})))},
         milliseconds(250),
         milliseconds(257)},
        {"long list",
         {"-p", "2", "-e"},
         Peer::kTalks,
         {EventList(std::vector<std::string>(3000, "E1"))},
         milliseconds(250),
         milliseconds(253)},
        {"export in 1.0",
         {"-z"},
         Peer::kTalks,
         {Ok(), Xml({Description("E1", {"m", "v"})}), FileComplete("E1", "m"), FileComplete("E1", "v")},
         milliseconds(0),
         milliseconds(2600)},
        {"export in 2.0",
         {"-p", "2", "-x", "-c", "1"},
         Peer::kTalks,
         {Ok(), EventList({"E1", "E2"}), Event("E1", Description("E1", {"m", "v"})), FileComplete("E1", "m"),
          FileComplete("E1", "v"), EventXferAck("E1")},
         milliseconds(0),
         milliseconds(3100)}};
    return situations;
}

microseconds Between(microseconds from, microseconds to, std::mt19937& random) {
    return microseconds(std::uniform_int_distribution<long>(from.count(), to.count())(random));
}

/// Any moment of the situation, but in long ones half of the time a moment when a message is handled.
microseconds Moment(const Situation& situation, std::mt19937& random) {
    const microseconds any = Between(situation.earliest, situation.latest, random);
    const microseconds pause = milliseconds(250);
    if (situation.latest < 2 * pause or random() % 2 == 0) {
        return any;
    }
    return any / pause * pause + Between(microseconds(0), milliseconds(5), random);
}

/// Does what the DVR of this situation does, on as many connections as the harness accepts, until it is time.
void ActUntil(Clock::time_point moment, const Situation& situation, std::optional<ScriptedDvr>& dvr) {
    if (situation.peer == Peer::kGone) {
        dvr->HangsUp();
        return;
    }
    dvr->SendsBytes(Frames(situation.messages));
    while (dvr->IsClosedBefore(moment)) {
        dvr.emplace();
        dvr->SendsBytes(Frames(situation.messages));
    }
}

/// @return empty if the log is whole and ends with the line of the interrupt
std::string FaultOf(const std::string& path) {
    std::ifstream log(path);
    std::string raw;
    LogLine line;
    while (std::getline(log, raw)) {
        line = ParseLogLine(raw);
        if (line.level == 0 or log.eof()) {
            return "a line is not whole: " + raw;
        }
    }
    return line == LogLine{1, "shutting down"} ? "" : "its last line is " + Printed(line);
}

/// Waits until the harness handles SIGINT and listens, lets the DVR act, then interrupts.
void Play(const Situation& situation, microseconds moment, Process& harness) {
    Until([&harness] { return Handles(harness, SIGINT); });
    std::optional<ScriptedDvr> dvr;
    if (situation.peer not_eq Peer::kNone) {
        Until([] { return sockets::IsListening(5001); });
        dvr.emplace();
    }
    const Clock::time_point end = Clock::now() + moment;
    if (dvr) {
        ActUntil(end, situation, dvr);
    }
    // A random moment is not a fact that one could wait for.
    std::this_thread::sleep_until(end);
    kill(harness.Id(), SIGINT);
    harness.Await([&harness] { return harness.HasEnded(); });
}

}  // namespace

std::string InterruptAtRandom(std::mt19937& random) {
    const std::vector<Situation>& situations = Situations();
    const Situation& situation = situations[random() % situations.size()];
    const microseconds moment = Moment(situation, random);

    const World world;
    const std::string path = "/mnt/log";
    const int log = open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0644);
    Launch launch;
    launch.output = log;
    Process harness(situation.switches, launch);
    close(log);
    Play(situation, moment, harness);

    std::string fault = harness.HasEnded() ? FaultOf(path) : "";
    if (harness.ExitStatus() not_eq 44 or not harness.error.empty()) {
        fault = harness.Ending() + "; " + fault + "\n" + harness.error;
    }
    return fault.empty() ? "" : situation.name + ", " + std::to_string(moment.count()) + " us: " + fault;
}
