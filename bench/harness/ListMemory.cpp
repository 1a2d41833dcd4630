#include <tinyxml.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "LogClient.h"
#include "bench/harness/MemoryPeer.h"
#include "bench/harness/Messages.h"
#include "protocol/v1_0/VelProtocol_1_0.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

namespace {

/// @return a figure of this process's memory, in kB: "VmRSS:", "VmHWM:"
long Kilobytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == name) {
            long kilobytes = 0;
            status >> kilobytes;
            return kilobytes;
        }
    }
    return 0;
}

/// Lets the peak begin anew at what is in use now.
void ResetPeak() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

void HandleByHarness(int dialect, const std::string& frame) {
    std::unique_ptr<VelProtocolBase> protocol;
    if (dialect == 2) {
        protocol = std::make_unique<VelProtocol_2_0>(TestOptions{}, kMemorySocket);
    } else {
        protocol = std::make_unique<VelProtocol_1_0>(TestOptions{}, kMemorySocket);
    }
    PeerSends(frame);
    protocol->HandleMessage();
}

void ParseByTinyXml(const std::string& text) {
    TiXmlDocument document;
    document.Parse(text.c_str());
}

}  // namespace

/// Takes one message that lists many events, and prints what it cost: seconds, bytes of the message, bytes of
/// memory at the peak beyond the message itself.
int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: velloran_bench_list harness|tinyxml 1|2 EVENTS\n");
        return 2;
    }
    LogClient::Instance()->Level(0);
    const bool isHarness = std::string(argv[1]) == "harness";
    const int dialect = std::atoi(argv[2]);
    const int events = std::atoi(argv[3]);
    const std::string frame = Framed(dialect == 2 ? EventListMessage(events) : XmlMessage(events, 2));
    const std::string text = frame.substr(frame.find('<'));
    ResetPeak();
    const long before = Kilobytes("VmRSS:");

    const auto start = std::chrono::steady_clock::now();
    if (isHarness) {
        HandleByHarness(dialect, frame);
    } else {
        ParseByTinyXml(text);
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::printf("%.9f %zu %ld\n", time.count(), text.size(), (Kilobytes("VmHWM:") - before) * 1024);
    return 0;
}
