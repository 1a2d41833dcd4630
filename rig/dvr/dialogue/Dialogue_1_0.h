#pragma once

#include <string>
#include <vector>

#include "rig/dvr/dialogue/Dialogue.h"

namespace rig::dvr {

/// Protocol 1.0: all descriptions in one message, then every file, then the list of all events and DONE.
/// It has no fault reports: a request for a file that was not described is a breach.
class Dialogue_1_0 : public Dialogue {
 public:
    /// @param recordings  must outlive the dialogue
    explicit Dialogue_1_0(const Recordings& recordings);

    std::string Situation() const override;
    bool HasBegun() const override { return phase_ != Phase::Opening; }

 protected:
    std::vector<std::string> AllowedMessages() const override;
    std::vector<Message> React(const Message& message) override;
    std::vector<Message> Refuse(const Message& message) override;

 private:
    enum class Phase { Opening, Exporting, Completed };

    Message DescribeAll();
    void StartFile(const Message& request);
    void Complete(const Message& list);

    /// @return whether there is such a file
    bool Exists(const FileId& file) const;

    Phase phase_ = Phase::Opening;
};

}  // namespace rig::dvr
