#include "rig/campaign/execution/Export.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "rig/base/Complaint.h"
#include "rig/base/Port.h"
#include "rig/base/Printable.h"
#include "rig/campaign/execution/FreePort.h"

namespace rig::campaign {
namespace {

constexpr std::uint64_t kMegabyte = 1'000'000;
constexpr std::uint64_t kLargeFile = 100 * kMegabyte;  // which takes a while to read
constexpr double kPortPatience = 150;  // seconds: the system holds a port for a minute, at worst twice
constexpr double kTimeToClose = 5;     // seconds for the DVR to close what the harness has left
constexpr double kReady = 0.5;         // seconds from a remote harness's first line until it listens
constexpr double kPortPause = 3;  // seconds until a remote harness that found its port taken is started again

std::string Replaced(std::string text, const std::string& name, const std::string& value) {
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos; at += value.size()) {
        text.replace(at, name.size(), value);
    }
    return text;
}

}  // namespace

Export::Export(const Rig& rig, const CaseFolder& folder, CaseRecord& record, Interrupts& interrupts,
               Display& display, Manner manner)
    : rig_(rig),
      folder_(folder),
      record_(record),
      interrupts_(interrupts),
      display_(display),
      manner_(std::move(manner)) {}

Export::~Export() {
    TakePackets();
}

result::Result Export::Run() {
    StartCapture();
    result::Result result;
    do {
        if (!AwaitPort()) {
            return result;
        }
        StartHarness();
        const Clock::time_point begin = Clock::now();
        Follow();
        Settle();
        StopHarness();
        StopDvr();
        result = harness_->Finish();
        TakeEnd(begin);
    } while (MayStartAgain());
    return result;
}

/// Without the privilege, the rest of the evidence is still worth having.
void Export::StartCapture() try {
    if (rig_.capture) {
        capture_ = std::make_unique<Capture>(folder_.PathOf("capture.pcap"));
    }
} catch (const std::exception& error) {
    display_.Warn(record_.id + ": no capture: " + error.what());
}

bool Export::IsPortFree(double waited) {
    if (IsProxied() && MayBeReused(kHarnessPort)) {
        return true;
    }
    FreePort(LookAtPort(kHarnessPort), waited >= kTimeToClose);
    return LookAtPort(kHarnessPort).connections.empty();
}

/// The system holds the port for a while if the harness closed a connection first, and the harness cannot
/// bind to a held port.
bool Export::AwaitPort() {
    const Clock::time_point begin = Clock::now();
    bool isFree = IsPortFree(0);
    if (!isFree) {
        const auto isOver = [&] {
            const double left = kPortPatience - Since(begin);
            const double held = LookAtPort(kHarnessPort).SecondsHeld().value_or(left);
            display_.Show("waiting for port 5001, which the last connection still holds",
                          fmt::format("at most {:.0f} s left", std::ceil(std::min(held, left))));
            isFree = IsPortFree(Since(begin));
            return interrupts_.Came() || isFree;
        };
        Until(kPortPatience, isOver, kSlowTick);
        record_.times.waited += Since(begin);
    }
    wasListening_ = LookAtPort(kHarnessPort).isListening;
    if (interrupts_.Came()) {
        facts_.end = End::Interrupted;
        facts_.words = "before the harness could start";
    } else if (!isFree) {
        facts_.end = End::PortTaken;
        facts_.words = fmt::format("port 5001 was still held after {:g} s", kPortPatience);
    }
    return isFree && !interrupts_.Came();
}

void Export::StartHarness() {
    ++record_.attempts;
    record_.harness.command =
        manner_.harness.empty() ? rig_.harness + " " + record_.plan.switches : manner_.harness;
    record_.harness.stoppedBy.clear();
    facts_ = {};
    dvr_ = std::move(manner_.dvr);
    if (dvr_ == nullptr) {
        record_.dvr.reset();
    }
    firstLine_.reset();
    isReady_ = false;
    watch_.emplace(record_.plan, rig_.patience, Clock::now());
    harness_ = std::make_unique<Harness>(record_.harness.command, rig_.log, folder_, Limits(),
                                         [this](const judge::ReadLine& read, bool isOver) {
                                             firstLine_ = firstLine_.value_or(Clock::now());
                                             watch_->Add(read, isOver, Clock::now());
                                         });
}

/// @return the judge's limits; reading what was delivered may take long
judge::Limits Export::Limits() {
    judge::Limits limits = rig_.limits;
    if (limits.delivered) {
        limits.delivered->progress = [this](const std::string& file, std::uint64_t done,
                                            std::uint64_t total) {
            if (total >= kLargeFile) {
                display_.Show(
                    "looking at what was delivered",
                    fmt::format("{} of {} MB of {}", done / kMegabyte, total / kMegabyte, Printable(file)));
            }
            if (interrupts_.Came()) {
                TakeInterrupt();
            }
            return facts_.end != End::Interrupted;
        };
    }
    return limits;
}

/// A port held on another machine shows only in the harness's status.
bool Export::MayStartAgain() {
    const bool isTaken = facts_.end == End::HarnessEnded && facts_.harness &&
                         facts_.harness->IsStatus(kPortTaken) && !wasListening_;
    if (!isTaken || record_.times.waited >= kPortPatience) {
        return false;
    }
    const Clock::time_point begin = Clock::now();
    const double waited = record_.times.waited;
    display_.Show("waiting for port 5001, which the harness found taken",
                  waited < kTimeWait ? fmt::format("usually at most {:.0f} s left", kTimeWait - waited)
                                     : fmt::format("at most {:.0f} s left", kPortPatience - waited));
    const bool isInterrupted = Until(kPortPause, [this] { return interrupts_.Came(); });
    record_.times.waited += Since(begin);
    if (isInterrupted) {
        TakeInterrupt();
    }
    return !isInterrupted;
}

/// @return whether a DVR can connect: the kernel says so or, if the harness runs elsewhere, the log has begun
/// and no line says that it could not listen
bool Export::IsReady() {
    isReady_ = isReady_ || (!wasListening_ && LookAtPort(kHarnessPort).isListening) ||
               (firstLine_ && Since(*firstLine_) >= kReady);
    return isReady_;
}

void Export::StartDvr() {
    if (dvr_ != nullptr || !rig_.dvr || !IsReady()) {
        return;
    }
    record_.dvr.emplace();
    record_.dvr->command = Replaced(Replaced(*rig_.dvr, "{protocol}", std::to_string(record_.plan.protocol)),
                                    "{seed}", std::to_string(rig_.seed));
    const GrowingFile output = folder_.Grow("dvr.log");
    Launch launch{record_.dvr->command, output.Number(), output.Number()};
    launch.environment = {"VELLORAN_CASE=" + record_.id};
    launch.mayLeaveOthers = true;  // a script that starts the DVR in the background
    dvr_ = std::make_unique<Child>(launch);
}

void Export::LookAtDvr() {
    if (dvr_ != nullptr && dvr_->End() && !dvr_->End()->IsStatus(0)) {
        watch_->DvrFailed(Clock::now());
    }
}

/// A connection that the DVR has closed or reset leaves no line in the log: the harness reads on and on.
void Export::LookAtConnection() {
    if (!watch_->IsConnected() || watch_->SilentFor(Clock::now()) < rig_.patience.answer ||
        1000 * Since(lookedAtConnection_) < kSlowTick) {
        return;
    }
    lookedAtConnection_ = Clock::now();
    const PortUse use = LookAtPort(kHarnessPort);
    if (use.IsClosedByPeer() || (use.isListening && !use.IsConnected())) {
        watch_->ConnectionClosed();
    }
}

void Export::TakeInterrupt() {
    facts_.end = End::Interrupted;
    facts_.words = "by " + interrupts_.Words();
}

/// Watches until there is nothing more to see.
void Export::Follow() {
    while (facts_.end == End::None) {
        StartDvr();
        WaitAndRead(kTick);
        LookAtDvr();
        LookAtConnection();
        ShowProgress();
        watch_->LogHas(harness_->LogBytes());
        const bool hasEnded = harness_->Command().End().has_value();
        facts_.end = watch_->Look(Clock::now(), facts_.words);
        if (interrupts_.Came()) {
            TakeInterrupt();
        } else if (hasEnded && facts_.end != End::Done) {
            facts_.end = End::HarnessEnded;
        }
    }
    facts_.isConnected = watch_->IsConnected();
    facts_.isDone = watch_->IsDone();
    if (facts_.end == End::DvrFailed) {
        facts_.words = "the DVR's command " + dvr_->End()->Words();
    }
    quiet_ = facts_.isDone ? 0 : watch_->SilentFor(Clock::now());
}

void Export::ShowProgress() {
    if (watch_->IsConnected()) {
        display_.Show("the export runs", "");
    } else if (rig_.dvr || !IsReady()) {
        display_.Show("starting", "");
    } else {
        display_.Show("waiting for the DVR to connect to port 5001",
                      fmt::format("{:.0f} s left", std::ceil(watch_->LeftToConnect(Clock::now()))));
    }
}

/// Keeps reading until the fact is true. @return false if it does not become true within that time
bool Export::Until(double seconds, const std::function<bool()>& fact, int tick) {
    const Clock::time_point begin = Clock::now();
    while (!fact()) {
        if (Since(begin) >= seconds) {
            return false;
        }
        WaitAndRead(tick);
    }
    return true;
}

/// Waits at most that long for something to arrive, and takes the next piece of it.
void Export::WaitAndRead(int milliseconds) {
    std::vector<pollfd> waited;
    const auto add = [&waited](int descriptor) { waited.push_back({descriptor, POLLIN, 0}); };
    if (harness_ != nullptr) {
        for (const int descriptor : harness_->Descriptors()) {
            add(descriptor);
        }
    }
    add(capture_ == nullptr ? -1 : capture_->Number());
    add(interrupts_.Came() ? -1 : interrupts_.Number());
    poll(waited.data(), waited.size(), milliseconds);
    if (harness_ != nullptr) {
        harness_->Read();
    }
    TakePackets();
}

/// When a capture breaks off, the rest of the evidence is still worth having.
void Export::TakePackets() {
    if (capture_ != nullptr && !capture_->WritePackets()) {
        display_.Warn(record_.id + ": the capture broke off: " + capture_->Error());
        capture_.reset();
    }
}

/// The proxy tells of the signal that ended the harness as a shell does.
std::optional<Ending> Export::EndOfHarness() const {
    const std::optional<Ending> end = harness_->Command().End();
    const int status = end ? end->status.value_or(0) : 0;
    return !IsProxied() || status <= 128 ? end : Ending{{}, status - 128};
}

void Export::TakeEnd(Clock::time_point begin) {
    facts_.harness = record_.harness.end = EndOfHarness();
    facts_.isPortTaken =
        IsProxied() && wasListening_ && facts_.harness && facts_.harness->IsStatus(kUsageStatus);
    facts_.errors = harness_->LastError();
    facts_.isDone = watch_->IsDone();
    CaseTimes& times = record_.times;
    times.duration = Since(begin);
    times.pauses = harness_->Times().Pauses();
    times.dvr = harness_->Times().Waits() + quiet_;
    times.overhead = std::max(times.duration - times.pauses - times.dvr - times.lingered, 0.0);
}

}  // namespace rig::campaign
