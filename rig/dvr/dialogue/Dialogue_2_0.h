#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "rig/dvr/dialogue/Dialogue.h"

namespace rig::dvr {

/// Protocol 2.0: a list of events, then event by event its description, its files and an acknowledgement,
/// then DONE.
class Dialogue_2_0 : public Dialogue {
 public:
    /// @param recordings     must outlive the dialogue
    /// @param failureMarker  while this file exists, every transfer fails; checked at each request
    Dialogue_2_0(const Recordings& recordings, const std::filesystem::path& failureMarker);

    std::string Situation() const override;
    bool HasBegun() const override { return phase_ == Phase::BetweenEvents || phase_ == Phase::Exporting; }
    std::optional<Message> ReportProgress() const override;

 protected:
    std::vector<std::string> AllowedMessages() const override;
    std::vector<Message> React(const Message& message) override;
    std::vector<Message> Refuse(const Message& message) override;

 private:
    enum class Phase { Opening, UpdatingSoftware, BetweenEvents, Exporting };

    Message ListEvents();
    Message DescribeEvent(const std::string& reid);
    Message RefuseEvent(const std::string& reid) const;
    std::vector<Message> RequestFile(const Message& request);
    Message AcknowledgeEvent(const std::string& reid);
    void HandleDone(const Message& done);

    Message ReportFile(const char* name, const FileId& file) const;
    bool IsFileInProgress(const FileId& file) const;
    bool IsFailureWanted() const;

    std::filesystem::path failureMarker_;
    Phase phase_ = Phase::Opening;
    Event event_;                         // the event in progress, while exporting
    std::set<std::string> files_;         // of that event
    std::set<std::string> acknowledged_;  // events
};

}  // namespace rig::dvr
