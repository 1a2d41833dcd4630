#include <gtest/gtest.h>

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

INSTANTIATE_TEST_SUITE_P(With, SyslogTakes20,
                         testing::Values(SyslogDaemon::Busybox(), SyslogDaemon::Rsyslog()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
