#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "rig/dvr/recordings/Recordings.h"
#include "rig/dvr/wire/Message.h"

namespace rig::dvr {

/// What an honest DVR answers, as pure logic: messages in, messages out, no socket and no clock. What both
/// dialects share.
///
/// A transfer takes time: Handle only starts it, and whoever drives the dialogue calls FinishTransfer when
/// that time is over. Requests that come in the meantime are handled like all others.
class Dialogue {
 public:
    /// How much was exported.
    struct Tally {
        std::size_t events = 0;
        std::size_t files = 0;
        std::uint64_t bytes = 0;
    };

    virtual ~Dialogue() = default;
    Dialogue(const Dialogue&) = delete;
    Dialogue& operator=(const Dialogue&) = delete;

    /// @return the message that opens the dialogue, OK. The DVR speaks first.
    Message Open() const;

    /// From now on notes a well-formed message that is out of place and answers it as well as possible: what
    /// a defect of ours provokes is not the harness's fault.
    void Tolerate() { tolerant_ = true; }

    /// From now on expects anything of the backend. Refuses what is out of place with a report of the
    /// dialect, or leaves it unanswered where there is none for it; throws Breach where nothing is left but
    /// to hang up. A refused configuration update does not end the dialogue.
    void Distrust() { distrusts_ = true; }

    /// Handles one message of the harness. @return the answers that are due at once, often none
    /// Throws Breach when the message is not one of the dialect, not well formed or out of place, and
    /// Failure (Unusable) when a recording cannot be read.
    std::vector<Message> Handle(const Message& message);

    /// @return what was out of place since the last call, for people
    std::vector<std::string> TakeRemarks();
    bool HasRemarks() const { return !remarks_.empty(); }

    using FileId = std::pair<std::string, std::string>;  // event and file name

    bool IsTransferring() const { return transfer_.has_value(); }

    /// @return the file in transfer; nothing if there is none
    const std::optional<FileId>& InTransfer() const { return transfer_; }

    /// @return the length of the file in transfer, in bytes; call only during a transfer
    std::uint64_t TransferLength() const { return digest_.length; }

    /// @return the message that the transfer still runs; nothing where the dialect has none. Call only during
    /// a transfer.
    virtual std::optional<Message> ReportProgress() const { return std::nullopt; }

    /// Ends the transfer that Handle started. @return its FILE_COMPLETE
    Message FinishTransfer();

    /// @return whether nothing more is due from either side
    bool IsDone() const { return done_; }

    /// @return whether the list has been given
    virtual bool HasBegun() const = 0;

    /// @return how long DONE tells the DVR to stay away; nothing before DONE
    std::optional<std::chrono::minutes> Absence() const { return absence_; }

    /// @return the messages that may come now, for people: "NEXT_EVENT or DONE"
    std::string Expected() const;

    /// @return where the dialogue is, for people: "while 2 files are still to be transferred"
    virtual std::string Situation() const = 0;

    /// @return what was exported, for people, in one line
    std::string Summary() const;

    const Tally& Exported() const { return tally_; }

 protected:
    /// @param recordings  must outlive the dialogue
    /// @param dialect     1 or 2
    Dialogue(const Recordings& recordings, int dialect);

    /// @return the names of the messages that may come now
    virtual std::vector<std::string> AllowedMessages() const = 0;

    /// Answers a message that follows the dialect's rules and may come now.
    virtual std::vector<Message> React(const Message& message) = 0;

    /// Refuses a message that follows the dialect's rules and is out of place.
    virtual std::vector<Message> Refuse(const Message& message);

    /// @return a message of ours, with what every message of the dialect carries
    Message NewMessage(const std::string& name) const;

    /// Throws Breach or, if the dialogue is tolerant, keeps the text as a remark.
    void Object(const std::string& text);

    /// Keeps the text as a remark.
    void Remark(const std::string& text) { remarks_.push_back(text); }

    /// Ends the dialogue after DONE.
    void End(std::chrono::minutes absence);

    /// Starts the transfer of a file that exists. Its digest is kept; `rehash` recomputes it anyway.
    void StartTransfer(const FileId& file, bool rehash);

    /// Answers an UPDATE_CONFIGURATION, which no DVR accepts, and ends the dialogue: the harness asks for
    /// nothing more.
    /// @param configuration  the attribute that carries it; throws Breach unless its value is an XML document
    Message RefuseConfiguration(const Message& message, const char* configuration);

    /// @return "while 'E1'/'a.ts' is in transfer"; call only during a transfer
    std::string TransferSituation() const;

    const Recordings& recordings_;
    std::set<FileId> outstanding_;    // described to the harness and not yet transferred
    std::optional<FileId> transfer_;  // the file in transfer
    Tally tally_;
    bool done_ = false;
    bool distrusts_ = false;

 private:
    int dialect_;
    Digest digest_;                   // of the last requested file
    std::optional<FileId> digested_;  // that file
    bool configurationRefused_ = false;
    std::optional<std::chrono::minutes> absence_;
    bool tolerant_ = false;
    std::vector<std::string> remarks_;
};

/// @return a file for people: 'event'/'file'
std::string FileName(const std::pair<std::string, std::string>& file);

/// @return "while 1 file is still to be transferred", "while 2 files are still to be transferred"
std::string FilesLeft(std::size_t files);

}  // namespace rig::dvr
