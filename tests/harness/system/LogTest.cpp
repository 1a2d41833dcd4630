#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <optional>

#include "tests/support/Dialogue.h"

namespace {

/// A syslog daemon: takes the datagrams that come to /dev/log.
class Syslog {
 public:
    Syslog() : fd_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        const sockaddr_un address = {AF_UNIX, "/dev/log"};
        unlink(address.sun_path);
        EXPECT_EQ(0, bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address));
        const timeval patience = {std::chrono::seconds(kPatience).count(), 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    ~Syslog() { close(fd_); }
    Syslog(const Syslog&) = delete;
    Syslog& operator=(const Syslog&) = delete;

    /// The next datagram; empty if none comes.
    std::string Receives() const {
        std::string datagram(1 << 16, '\0');
        const ssize_t size = recv(fd_, datagram.data(), datagram.size(), 0);
        datagram.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return datagram;
    }

    /// The next datagram carries this priority and ends with this text.
    void Receives(const Harness& harness, const std::string& priority, const std::string& text) const {
        const std::string datagram = Receives();
        const std::string head =
            "<" + priority + ">velloran[" + std::to_string(harness.GetProcess().Id()) + "]: velloran:";
        EXPECT_EQ(head, datagram.substr(0, head.size()));
        const std::size_t blank = datagram.find(' ', head.size());
        EXPECT_EQ(text, blank == std::string::npos ? "" : datagram.substr(blank + 1)) << datagram;
    }

 private:
    int fd_;
};

using Log = Dialect10;

TEST_F(Log, LineHoldsTimeProcessLevelAndSource) {
    const std::time_t before = std::time(nullptr);
    Connect();
    dvr->Sends(Message("NONE"));
    harness->LogsUpTo(32, "GetMessage:incoming message, bytes 1 to 17:<msg req=\"NONE\"/>");
    const std::string line = harness->TakesRawLine();
    std::tm utc = {};
    const char* const end = strptime(line.c_str(), "%Y-%m-%dT%H:%M:%S.", &utc);
    ASSERT_EQ(line.c_str() + 20, end) << line;
    EXPECT_EQ("Z velloran 1 velloran:", line.substr(26, 22));
    const std::string text = " UNSUPPORTED MSG RECEIVED: NONE";
    EXPECT_EQ(line.size() - text.size(), line.find(text));
    const std::time_t time = timegm(&utc);
    EXPECT_LE(before, time);
    EXPECT_GE(std::time(nullptr), time);
    Ends();
}

TEST_F(Log, LineIsOneWhateverThePeerSends) {
    Connect();
    dvr->Sends("<msg req=\"A\nB\r\tC\\n\x01\x1f\x7f\xc3\xbc\xff\"/>");
    harness->LogsUpTo(1, "read success:27");
    const std::string escaped = R"(A\nB\r\tC\\n\x01\x1f\x7f)" + std::string("\xc3\xbc\xff");
    const std::string trace = harness->TakesRawLine();
    EXPECT_NE(std::string::npos, trace.find(":<msg req=\"" + escaped + "\"/>")) << trace;
    const std::string unsupported = harness->TakesRawLine();
    EXPECT_NE(std::string::npos, unsupported.find(" UNSUPPORTED MSG RECEIVED: ")) << unsupported;
    Ends();
}

TEST_F(Log, LineCannotBeForged) {
    Connect();
    const std::string forged = "X\n2026-01-01T00:00:00.000000Z velloran 16 velloran:1 Sending DONE\n";
    dvr->Sends("<msg req=\"NONE\"><!--" + forged + "--></msg>");
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: NONE");
    Ends();
}

TEST_F(Log, GoesToSyslogToo) {
    const Syslog syslog;
    Connect({"-z", "-e"});
    syslog.Receives(*harness, "31", "'sizeError' flag set");
    syslog.Receives(*harness, "31", "'invalidEvent' flag set");
    syslog.Receives(*harness, "30", "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    dvr->Sends(Ok());
    syslog.Receives(*harness, "27", "expecting a message of 15 bytes");
    syslog.Receives(*harness, "27", "read success:15");
    syslog.Receives(*harness, "31", "GetMessage:incoming message, bytes 1 to 15:<msg req=\"OK\"/>");
    syslog.Receives(*harness, "27", "got an OK, sending GET_XML");
    syslog.Receives(*harness, "31", "hdr[0]= 1f");
    syslog.Receives(*harness, "30", "sent: size= 1/31/21  '<msg req=\"GET_XML\" />'");
    harness->GetsSignal(SIGINT);
    syslog.Receives(*harness, "27", "shutting down");
    harness->LogsUpTo(1, "shutting down");
    harness->EndsWithStatus(44);
}

TEST_F(Log, GoesToSyslogWithTheSeverityOfItsLevel) {
    const Syslog syslog;
    Connect({"-p", "2"});
    dvr->Sends("<msg req=\"EVENT_LIST\"/>");
    for (int passed = 0; passed < 5; ++passed) {
        syslog.Receives();
    }
    syslog.Receives(*harness, "28", "'source' attribute missing from EVENT_LIST message");
    syslog.Receives(*harness, "28", "could not find 'event' tag in EVENT_LIST message");
    syslog.Receives(*harness, "29", "Got EVENT_LIST message with no events");
}

TEST_F(Log, ReachesASyslogDaemonThatStartsLater) {
    Connect();
    Opens();
    const Syslog syslog;
    dvr->Sends(Ok());
    syslog.Receives(*harness, "27", "expecting a message of 15 bytes");
    harness->Logs(1, "got an OK, sending GET_XML");
    dvr->Receives(v1::kGetXml);
    Ends();
}

TEST_F(Log, SurvivesTheSyslogDaemonAndReachesItsSuccessor) {
    std::optional<Syslog> syslog(std::in_place);
    Connect();
    const std::vector<int> descriptors = harness->GetProcess().Descriptors();
    syslog->Receives(*harness, "30", "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    syslog.reset();
    Opens();
    syslog.emplace();
    dvr->Sends(Ok());
    syslog->Receives(*harness, "27", "expecting a message of 15 bytes");
    harness->Logs(1, "got an OK, sending GET_XML");
    dvr->Receives(v1::kGetXml);
    EXPECT_EQ(descriptors, harness->GetProcess().Descriptors());
    Ends();
}

TEST_F(Log, DoesNotWaitForASyslogDaemonThatHangs) {
    const Syslog syslog;  // takes as many datagrams as the kernel keeps for it, and reads none
    Connect();
    const Clock::time_point start = Clock::now();
    for (int round = 0; round < 5; ++round) {
        Opens();
    }
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(5 * 250) + std::chrono::seconds(3));
    Ends();
}

}  // namespace
