#pragma once

#include <chrono>
#include <string>

#include "rig/campaign/evidence/Records.h"

namespace rig::campaign {

/// Tells people how the campaign is going: a line for each case. On a terminal the line of the case that runs
/// is rewritten in place; elsewhere only what matters is printed, line by line.
class Display {
 public:
    Display();

    void Begin(const CampaignRecord& campaign, const std::string& folder);
    void CaseBegins(const CaseRecord& record, std::size_t number, std::size_t count);

    /// Shows what the case is doing: on a terminal at once, elsewhere when there is a `detail` and the phase
    /// is new, and every 10 s after that.
    void Show(const std::string& phase, const std::string& detail);

    /// Shows how far a search is. @param most  0 if it ends with a time
    void ShowTry(std::size_t number, std::size_t most, std::size_t findings);

    /// Prints what must not be missed: a line of its own on standard error.
    void Warn(const std::string& text);

    void CaseEnds(const CaseRecord& record);

    /// A later case has shown more about this one.
    void CaseChanges(const CaseRecord& record);
    void End(const CampaignRecord& campaign, const std::string& folder);

    /// @param findings  in words, with all line ends
    void EndSearch(const std::string& findings, Outcome outcome, const std::string& folder);

 private:
    using Clock = std::chrono::steady_clock;

    std::string Head(const CaseRecord& record) const;
    std::string Left() const;
    void Rewrite(const std::string& line);
    void Print(const std::string& line);

    bool isTerminal_;
    bool hasColour_;
    std::size_t nameColumns_ = 0;
    std::size_t switchColumns_ = 0;
    std::size_t left_ = 0;  // cases after the one that runs
    std::size_t done_ = 0;
    Clock::duration spent_{0};  // on those that are done
    std::string number_;
    std::string head_;  // number, name and switches
    std::string name_;
    std::string phase_;
    Clock::time_point shown_;
    Clock::time_point begin_;
};

}  // namespace rig::campaign
