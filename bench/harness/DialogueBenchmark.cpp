#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <tinyxml.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "LogClient.h"
#include "bench/harness/MemoryPeer.h"
#include "bench/harness/Messages.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

namespace {

constexpr int kFiles = 8;

/// What a DVR sends in the export of one event, and what the harness sends.
struct Export {
    std::vector<std::string> received;  // texts
    std::vector<std::string> embedded;
    std::vector<std::string> sent;
};

Export OneEvent() {
    const std::string reid = "EV1000000";
    Export whole;
    whole.received = {"<msg req=\"OK\" protocolVersion=\"2.0\"/>", EventListMessage(1),
                      EventMessage(reid, kFiles)};
    whole.embedded = {Description(reid, kFiles)};
    whole.sent = {"<msg req=\"GET_EVENT_LIST\" protocolVersion=\"2.0\"/>",
                  "<msg req=\"NEXT_EVENT\" reid=\"EV1000000\" protocolVersion=\"2.0\"/>"};
    std::vector<std::string> files = {reid + ".xml"};
    for (int file = 1; file <= kFiles; ++file) {
        files.push_back(reid + "_" + std::to_string(file) + ".mp4");
    }
    for (const std::string& file : files) {
        whole.received.push_back(FileCompleteMessage(reid, file));
        whole.sent.push_back("<msg req=\"GET_FILE\" reid=\"EV1000000\" path=\"EV1000000\" file=\"" + file +
                             "\" protocolVersion=\"2.0\"/>");
    }
    whole.received.push_back("<msg req=\"EVENT_XFER_ACK\" reid=\"EV1000000\" protocolVersion=\"2.0\"/>");
    whole.sent.push_back("<msg req=\"EVENT_XFER_COMPLETE\" reid=\"EV1000000\" protocolVersion=\"2.0\"/>");
    whole.sent.push_back("<msg req=\"DONE\" protocolVersion=\"2.0\"/>");
    return whole;
}

void Handle(benchmark::State& state, unsigned int mask) {
    LogClient::Instance()->ProcessName("velloran");
    LogClient::Instance()->Level(mask);
    std::vector<std::string> frames;
    for (const std::string& text : OneEvent().received) {
        frames.push_back(Framed(text));
    }
    for (auto _ : state) {
        VelProtocol_2_0 protocol({}, kMemorySocket);
        for (const std::string& frame : frames) {
            PeerSends(frame);
            benchmark::DoNotOptimize(protocol.HandleMessage());
        }
    }
    LogClient::Instance()->Level(0);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(frames.size()));
}

void HandleMessages(benchmark::State& state) {
    Handle(state, 0);
}

void HandleMessagesLoggingAll(benchmark::State& state) {
    const int saved = dup(STDOUT_FILENO);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    Handle(state, 127);
    dup2(saved, STDOUT_FILENO);
    close(null);
    close(saved);
}

/// The same documents, parsed and printed, and nothing else.
void ParseAndPrint(benchmark::State& state) {
    const Export whole = OneEvent();
    std::vector<std::unique_ptr<TiXmlDocument>> sent;
    for (const std::string& text : whole.sent) {
        sent.push_back(std::make_unique<TiXmlDocument>());
        sent.back()->Parse(text.c_str());
    }
    for (auto _ : state) {
        for (const auto* texts : {&whole.received, &whole.embedded}) {
            for (const std::string& text : *texts) {
                TiXmlDocument document;
                benchmark::DoNotOptimize(document.Parse(text.c_str()));
            }
        }
        for (const auto& document : sent) {
            std::string text;
            text << *document;
            benchmark::DoNotOptimize(text.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(whole.received.size()));
}

BENCHMARK(HandleMessages);
BENCHMARK(ParseAndPrint);
BENCHMARK(HandleMessagesLoggingAll);

}  // namespace

BENCHMARK_MAIN();
