// How the simulated DVR reads an earlier run from a log: any file is a run, or a usage error of one line.
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/replay/EarlierRun.h"
#include "rig/dvr/wire/Frame.h"
#include "tests/fuzz/Choices.h"
#include "tests/fuzz/Demand.h"
#include "tests/fuzz/Messages.h"

namespace {

constexpr const char* kTexts[] = {
    "Connected to: fam=2  127.0.0.1:40000",
    "'protocol' option set to 2",
    "'protocol' option set to 1",
    "doneDuration set to 30",
    "'rehash' flag set",
    "'sizeError' flag set",
    "got an OK, sending GET_XML",
    "got an OK, sending GET_EVENT_LIST",
    "got an OK, sending UPDATE_SOFTWARE",
    "got an OK, sending CONFIGURATION_UPDATE",
    "Found event EVT1",
    "'source' attribute = 'DVR'",
    "processing 'invalidEvent' option [event]",
    "'reid' attribute in EVENT msg = 'EVT1'",
    "Got FILE_COMPLETE for: reid=EVT1  file=m.xml",
    "filesToReceive size = 1",
    "processing 'invalidFile' option, cnt=0",
    "processing 'transportException' option",
    "processing 'rehash' option",
    "processing 'xferInProgress' option",
    "calling SendFileRequest(EVT1/a.ts, true)",
    "Sending EVENT_XFER_COMPLETE",
    "HandleMessage: event = 'EVT1'",
    "Got EVENT_XFER_ACK for: reid='EVT1'",
    "Sending DONE",
    "Closing client socket...",
    "shutting down",
    "sent: size= 1/60/40  '<msg req=\"DONE\" />'",
    "read success:40",
    "UNSUPPORTED MSG RECEIVED: x",
};

constexpr const char* kPrefixes[] = {
    "2026-11-20T14:03:07.123456Z velloran 1 ",    "2026-11-20T14:03:08.000000Z velloran 64 ",
    "Nov 20 14:03:07 rig velloran[7]: ",          "Nov 20 14:03:09 rig velloran[8]: ",
    "2026-11-20T14:03:07+0100 rig velloran[7]: ", "",
};

/// Writes a log line by line, like a harness that may do anything.
class LogMaker {
 public:
    explicit LogMaker(fuzz::Choices& choices) : choices_(choices), prefix_(choices.Pick(kPrefixes)) {}

    std::string Make() {
        while (choices_.AreLeft() && log_.size() < 50'000) {
            Step();
        }
        return choices_.Hit(8) ? fuzz::Damaged(choices_, log_) : log_;
    }

 private:
    void Step() {
        switch (choices_.Roll(10)) {
            case 0:
            case 1:
            case 2:
                return Received();
            case 3:
            case 4:
                return Sent();
            case 5:
                return Line(rig::Printable(choices_.Bytes(choices_.Roll(40))));
            case 6:
                log_ += choices_.Bytes(choices_.Roll(40)) + "\n";
                return;
            case 7:
                prefix_ = choices_.Pick(kPrefixes);
                return;
            default:
                return Line(choices_.Pick(kTexts));
        }
    }

    void Line(const std::string& text) {
        if (!choices_.Hit(50)) {
            log_ += prefix_ + "velloran:7 " + text + "\n";
        }
    }

    void Received() {
        constexpr fuzz::Sender kSenders[] = {fuzz::Sender::Dvr_1_0, fuzz::Sender::Dvr_2_0};
        std::string text =
            fuzz::MakeMessage(choices_, choices_.Pick(kSenders), {"EVT1", {"EVT1", "m.xml"}, ""});
        if (choices_.Hit(6)) {
            text += std::string(choices_.Word() % 2000, 'x');
        }
        Line("expecting a message of " + std::to_string(text.size()) + " bytes");
        Line("read success:" + std::to_string(text.size()));
        const std::size_t slice = text.size() < 800 ? text.size() : 800;
        for (std::size_t start = 0; start == 0 || start < text.size(); start += 800) {
            Line("GetMessage:incoming message, bytes " + std::to_string(start + 1) + " to " +
                 std::to_string(start + slice) + ":" + rig::Printable(text.substr(start, slice)));
        }
    }

    void Sent() {
        const std::string prefix =
            rig::dvr::EncodePrefix(choices_.Hit(4) ? choices_.Word() : choices_.Byte());
        for (std::size_t index = 0; index < prefix.size(); ++index) {
            constexpr char kDigits[] = "0123456789abcdef";
            const auto byte = static_cast<unsigned char>(prefix[index]);
            const std::string low(1, kDigits[byte & 0xf]);
            Line("hdr[" + std::to_string(index) +
                 "]= " + (byte < 16 ? low : std::string(1, kDigits[byte >> 4]) + low));
        }
    }

    fuzz::Choices& choices_;
    std::string prefix_;
    std::string log_;
};

/// A file in memory.
class File {
 public:
    explicit File(const std::string& content) : descriptor_(memfd_create("log", 0)) {
        const auto size = static_cast<ssize_t>(content.size());
        fuzz::Demand(write(descriptor_, content.data(), content.size()) == size, "a file in memory");
    }
    ~File() { close(descriptor_); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
    int descriptor_;
};

void CheckRun(const rig::dvr::EarlierRun& run) {
    fuzz::Demand(!run.messages.empty(), "a run with a message");
    std::size_t line = 0;
    for (const rig::dvr::EarlierMessage& message : run.messages) {
        fuzz::Demand(message.line > line && message.line <= run.lastLine, "messages in the order of the log");
        line = message.line;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    const File file(choices.Hit(4) ? choices.Rest() : LogMaker(choices).Make());
    try {
        CheckRun(rig::dvr::ReadEarlierRun(file.Path()));
    } catch (const rig::dvr::Failure& failure) {
        const std::string text = failure.what();
        fuzz::Demand(
            failure.Status() == rig::dvr::ExitStatus::Unusable && text.find('\n') == std::string::npos,
            "a usage error in one line, found '" + text + "'");
    }
    return 0;
}
