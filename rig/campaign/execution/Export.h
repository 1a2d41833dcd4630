#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "rig/base/Child.h"
#include "rig/base/Interrupts.h"
#include "rig/campaign/Display.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/evidence/Records.h"
#include "rig/campaign/execution/Capture.h"
#include "rig/campaign/execution/Harness.h"
#include "rig/campaign/execution/Rig.h"
#include "rig/campaign/execution/Watch.h"

namespace rig::campaign {

constexpr int kTick = 20;       // milliseconds between looks at what sends no event
constexpr int kSlowTick = 200;  // when waiting for a minute, or for a connection to be seen closed

/// @return seconds since then
inline double Since(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// How an export differs from that of a case of the harness alone.
struct Manner {
    std::string harness = {};   // its whole command; empty: the rig's, with the case's switches
    bool endsByItself = false;  // after one export
    bool playsOn = false;       // the DVR is a recorder: it calls again and again until it is stopped
    bool keepsDvr = false;      // and is left to the next export
    std::unique_ptr<Child> dvr = nullptr;  // that an export has left to this one
};

/// Harness and DVR of one case, from the wait for the port until both have ended. Their output goes to the
/// case's folder as it arrives.
class Export {
 public:
    /// @param record  of the case; commands, attempts, ends and times are filled in
    Export(const Rig& rig, const CaseFolder& folder, CaseRecord& record, Interrupts& interrupts,
           Display& display, Manner manner = {});
    ~Export();
    Export(const Export&) = delete;
    Export& operator=(const Export&) = delete;

    /// Runs it to its end, or until it is interrupted. Throws std::runtime_error when evidence cannot be
    /// written. @return what the judge says of the runs in the log
    result::Result Run();

    /// @return everything known except the judge's result
    const CaseFacts& Facts() const { return facts_; }

    /// @return the run as it was watched; null if it could not start
    const Watch* Watched() const { return watch_ ? &*watch_ : nullptr; }

    /// @return the DVR that it has not stopped, as its manner says; null if there is none
    std::unique_ptr<Child> TakeDvr() { return std::move(dvr_); }

    /// @return what the DVR sent
    const std::vector<DvrMessage>* Messages() const {
        return harness_ == nullptr ? nullptr : &harness_->Messages();
    }

 private:
    void StartCapture();
    bool AwaitPort();
    bool IsProxied() const { return !manner_.harness.empty(); }
    bool IsPortFree(double waited);
    void StartHarness();
    std::optional<Ending> EndOfHarness() const;
    judge::Limits Limits();
    bool MayStartAgain();
    bool IsReady();
    void StartDvr();
    void LookAtDvr();
    void LookAtConnection();
    void TakeInterrupt();
    void Follow();
    void ShowProgress();
    void Settle();
    void Linger();
    void StopHarness();
    void StopDvr();
    void TakePackets();
    void TakeEnd(Clock::time_point begin);
    bool Until(double seconds, const std::function<bool()>& fact, int tick = kTick);
    void WaitAndRead(int milliseconds);

    const Rig& rig_;
    const CaseFolder& folder_;
    CaseRecord& record_;
    Interrupts& interrupts_;
    Display& display_;
    Manner manner_;

    CaseFacts facts_;
    std::unique_ptr<Capture> capture_;
    std::unique_ptr<Harness> harness_;
    std::unique_ptr<Child> dvr_;
    std::optional<Watch> watch_;
    std::optional<Clock::time_point> firstLine_;
    Clock::time_point lookedAtConnection_;
    bool isReady_ = false;       // a DVR can connect
    bool wasListening_ = false;  // someone on this machine was, before the harness started
    double quiet_ = 0;           // seconds that the DVR was silent before we stopped watching
};

}  // namespace rig::campaign
