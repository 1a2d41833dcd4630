#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

#include "tests/harness/syslog/SyslogDaemon.h"
#include "tests/support/Dialogue.h"

namespace {

using Lines = std::vector<std::string>;

/// The raw lines of a log, cut from the harness's output.
Lines Split(const std::string& output) {
    Lines lines;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = output.find('\n', start)) not_eq std::string::npos; start = end + 1) {
        lines.push_back(output.substr(start, end - start));
    }
    return lines;
}

/// "TIME velloran LEVEL TEXT", cut at the blanks.
struct Fields {
    std::string level;
    std::string text;
};

Fields Cut(const std::string& line) {
    const std::size_t process = line.find(' ');
    const std::size_t level = line.find(' ', process + 1);
    const std::size_t text = line.find(' ', level + 1);
    return {line.substr(level + 1, text - level - 1), line.substr(text + 1)};
}

std::string SeverityOf(const std::string& level) {
    if (level == "1") {
        return "err";
    }
    if (level == "2") {
        return "warning";
    }
    if (level == "4") {
        return "notice";
    }
    return level == "8" or level == "16" ? "info" : "debug";
}

bool EndsWith(const std::string& line, const std::string& end) {
    return line.size() >= end.size() and line.compare(line.size() - end.size(), end.size(), end) == 0;
}

bool Contains(const Lines& lines, const std::string& end) {
    return std::any_of(lines.begin(), lines.end(),
                       [&end](const std::string& line) { return EndsWith(line, end); });
}

/// What the harness wrote to standard output, as the syslog must have it.
Lines AsInSyslog(const Harness& harness) {
    const std::string process = " velloran[" + std::to_string(harness.GetProcess().Id()) + "]: ";
    Lines lines = Split(harness.GetProcess().output);
    for (std::string& line : lines) {
        const Fields fields = Cut(line);
        line = SeverityOf(fields.level) + process + fields.text;
    }
    return lines;
}

/// What the harness wrote, without what differs from run to run: the time and the DVR's port.
Lines Comparable(const Harness& harness) {
    Lines lines = Split(harness.GetProcess().output);
    for (std::string& line : lines) {
        const Fields fields = Cut(line);
        const std::size_t port = fields.text.find("Connected to: ") == std::string::npos
                                     ? std::string::npos
                                     : fields.text.rfind(':');
        line = fields.level + " " + fields.text.substr(0, port);
    }
    return lines;
}

class SyslogTakes20 : public Dialect20, public testing::WithParamInterface<SyslogDaemon::Kind> {
 protected:
    SyslogDaemon daemon{GetParam()};

    /// The kernel keeps some ten lines for a busy daemon, which is more than one message makes.
    void Passes(const std::function<void()>& step) {
        step();
        daemon.HasCaughtUp();
    }
};

TEST_P(SyslogTakes20, EveryLineOfAnExportWithTheSeverityOfItsLevel) {
    daemon.Starts();
    Passes([this] { Start({"-z"}); });
    Passes([this] {
        dvr->Sends("<msg req=\"EVENT_LIST\"/>");
        harness->LogsUpTo(4, "Got EVENT_LIST message with no events");
    });
    const std::pair<std::string, std::string> exchanges[] = {
        {EventList({"E1"}), v2::NextEvent("E1")},
        {Event("E1", Description("E1", {"m", "v"})), v2::GetFile("E1", "m")},
        {FileComplete("E1", "m"), v2::GetFile("E1", "v")},
        {FileComplete("E1", "v"), v2::EventXferComplete("E1")},
        {EventXferAck("E1"), v2::kDone}};
    for (const auto& [message, answer] : exchanges) {
        Passes([this, text = message, expected = answer] {
            dvr->Sends(text);
            const std::size_t announced = expected.size() * 3 / 2;
            dvr->ReceivesBytes(Prefix(static_cast<std::uint32_t>(announced)) + expected);
            const std::size_t prefixSize = Prefix(static_cast<std::uint32_t>(announced)).size();
            harness->LogsUpTo(8, "sent: size= " + std::to_string(prefixSize) + "/" +
                                     std::to_string(announced) + "/" + std::to_string(expected.size()) +
                                     "  '" + expected + "'");
        });
    }
    Passes([this] { harness->StopsOnInterrupt(); });

    EXPECT_EQ(AsInSyslog(*harness), daemon.Lines());
    std::set<std::string> levels;
    for (const std::string& line : Split(harness->GetProcess().output)) {
        levels.insert(Cut(line).level);
    }
    EXPECT_EQ((std::set<std::string>{"1", "2", "4", "8", "16", "32", "64"}), levels);
}

class SyslogTrouble : public Dialect10, public testing::WithParamInterface<SyslogDaemon::Kind> {
 protected:
    SyslogDaemon daemon{GetParam()};

    using Step = std::function<void()>;

    /// Two DVRs, one after the other, export an event each; then the harness is stopped. The steps happen
    /// during the exports; after the second the daemon must be running. If it should have every line, the
    /// test waits for it, as the kernel keeps only some ten for it.
    /// @return the part of the harness's output that is the same in every such run
    Lines ExportsTwice(const Step& inTheFirst, const Step& inTheSecond) {
        Connect();
        const std::vector<int> descriptors = harness->GetProcess().Descriptors();
        Opens();
        Describes("E1", {"m1", "v1", "v2"});
        daemon.HasCaughtUp();
        inTheFirst();
        Completes("E1", "m1");
        dvr->Receives(v1::GetFile("E1", "v1"));
        Completes("E1", "v1");
        dvr->Receives(v1::GetFile("E1", "v2"));
        Completes("E1", "v2");
        IsDone({"E1"});

        dvr->Resets();  // so that the port is free at once for the next run
        Reconnect();
        Opens();
        EXPECT_EQ(descriptors, harness->GetProcess().Descriptors());
        inTheSecond();
        daemon.HasCaughtUp();
        Describes("E2", {"m2"});
        daemon.HasCaughtUp();
        Completes("E2", "m2");
        IsDone({"E1", "E2"});
        harness->StopsOnInterrupt();
        dvr->Resets();
        return Comparable(*harness);
    }

    /// The same lines arrive as when the daemon is left alone.
    void CostsNoLine(const Step& inTheFirst, const Step& inTheSecond) {
        const auto nothing = [] {};
        const Lines undisturbed = ExportsTwice(nothing, nothing);
        EXPECT_EQ(undisturbed, ExportsTwice(inTheFirst, inTheSecond));
        daemon.HasCaughtUp();
    }

    /// The daemon's lines of this run. It must lack some, in a single gap.
    Lines LinesButForOneGap() {
        const Lines written = AsInSyslog(*harness);
        const std::string process = "velloran[" + std::to_string(harness->GetProcess().Id()) + "]: ";
        Lines arrived = daemon.Lines();
        arrived.erase(std::remove_if(arrived.begin(), arrived.end(),
                                     [&process](const std::string& line) {
                                         return line.find(process) == std::string::npos;
                                     }),
                      arrived.end());
        const auto gap = std::mismatch(arrived.begin(), arrived.end(), written.begin(), written.end()).first;
        const auto behind = arrived.end() - gap;
        EXPECT_LT(arrived.size(), written.size()) << "no line was lost: the trouble was none";
        EXPECT_EQ(Lines(written.end() - behind, written.end()), Lines(gap, arrived.end()));
        return arrived;
    }
};

TEST_P(SyslogTrouble, OfADaemonThatIsKilledAndStartedAgainCostsNoLineOnStandardOutput) {
    daemon.Starts();
    CostsNoLine([this] { daemon.IsKilled(); }, [this] { daemon.Starts(); });
    const Lines arrived = LinesButForOneGap();
    EXPECT_TRUE(Contains(arrived, " Found event E1"));
    EXPECT_FALSE(Contains(arrived, " Got FILE_COMPLETE for: reid=E1  file=m1")) << "nobody was there";
    EXPECT_FALSE(Contains(arrived, " Got FILE_COMPLETE for: reid=E1  file=v2")) << "nobody was there";
    EXPECT_TRUE(Contains(arrived, " Found event E2"));
    EXPECT_TRUE(Contains(arrived, " shutting down"));
}

TEST_P(SyslogTrouble, OfADaemonThatStopsAndGoesOnCostsNoLineOnStandardOutput) {
    daemon.Starts();
    CostsNoLine([this] { daemon.IsStopped(); }, [this] { daemon.GoesOn(); });
    const Lines arrived = LinesButForOneGap();
    EXPECT_TRUE(Contains(arrived, " Got FILE_COMPLETE for: reid=E1  file=m1")) << "kept for the daemon";
    EXPECT_FALSE(Contains(arrived, " Got FILE_COMPLETE for: reid=E1  file=v2")) << "its queue is full";
    EXPECT_TRUE(Contains(arrived, " Found event E2"));
    EXPECT_TRUE(Contains(arrived, " shutting down"));
}

const auto kDaemons = testing::Values(SyslogDaemon::Busybox(), SyslogDaemon::Rsyslog());
const auto nameOfDaemon = [](const auto& row) { return row.param.name; };

INSTANTIATE_TEST_SUITE_P(With, SyslogTakes20, kDaemons, nameOfDaemon);
INSTANTIATE_TEST_SUITE_P(With, SyslogTrouble, kDaemons, nameOfDaemon);

}  // namespace
