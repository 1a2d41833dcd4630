#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rig/judge/Proof.h"
#include "rig/judge/delivery/Transfer.h"
#include "rig/log/RunReader.h"
#include "rig/result/Result.h"

namespace rig::judge {

/// How often something happened, and the first few lines that prove it: bounded, however long the log is.
class Tally {
 public:
    /// @param note  what the line itself does not say; the first one is kept
    void Add(const Place& place, std::string_view note = {});
    void Add(const result::Evidence& evidence, std::string_view note = {});
    std::uint64_t Count() const { return count_; }
    bool Any() const { return count_ > 0; }
    std::string Note() const { return note_ ? *note_ : ""; }
    const Proof& Shown() const { return proof_; }
    std::vector<result::Evidence> Lines() const { return proof_.Lines(); }

 private:
    bool Counts(std::string_view note);

    std::uint64_t count_ = 0;
    std::unique_ptr<const std::string> note_;  // few have one
    Proof proof_;
};

using log::Fault;

/// How the requests that carry one kind of fault went.
struct FaultRecord {
    Tally fired;
    Tally answered;     // correctly
    Tally wrong;        // as if there were no fault
    Tally otherReport;  // as another fault
    Tally genuine;      // no faults: the DVR lists what was asked for instead
};

/// A request of the harness that is waiting for its answer.
struct Request : log::Request {
    Request() = default;
    explicit Request(const log::Request& sent) : log::Request(sent) {}

    std::string_view expects = {};          // FILE_COMPLETE
    std::optional<std::int64_t> time = {};  // when it went out, microseconds
    bool isOvertaken = false;               // DONE went out while it waited
    std::string mistake = {};   // why the harness ignored what came as its answer; empty if it did not
    KeptLine line = {};         // with its first byte
    bool mayBeRefused = false;  // the log cannot tell whether the DVR has what it asks for
    std::optional<std::int64_t> heard = {};  // when the DVR last said that it is at it, microseconds

    /// @return name, event and file
    std::string Words() const;
};

/// The last message's announcement.
struct Announcement {
    bool isOpen = false;               // the text has not come
    std::int64_t length = 0;           // bytes
    std::optional<std::int64_t> time;  // when the prefix was in, microseconds
    KeptLine line;
};

/// Reaction times in bounded memory, each accurate to 3 %.
class ReactionTimes {
 public:
    void Add(std::int64_t microseconds, const Place& place);
    std::uint64_t Count() const { return count_; }
    /// @return the time in ms that this fraction (0 to 1) of all reactions did not exceed
    double Percentile(double fraction) const;
    double Longest() const { return static_cast<double>(longest_) / 1000; }
    result::Evidence LongestAt() const { return longestAt_.Proof(); }

 private:
    std::vector<std::pair<int, std::uint64_t>> buckets_;  // in order; few, as reactions are alike
    std::uint64_t count_ = 0;
    std::int64_t longest_ = 0;
    KeptLine longestAt_;
};

struct DeliveryFacts;
struct WireFacts;

/// What the log of one run says, gathered while reading it: facts, no verdicts.
struct Run {
    std::unique_ptr<KeptLines> lines = std::make_unique<KeptLines>();  // that prove something
    std::string file;                                                  // of its first line
    std::string name;                                                  // where that is: "run.log:1"
    std::optional<std::int64_t> beginTime;
    std::optional<std::int64_t> endTime;
    bool hasFractions = false;  // the log's times are finer than whole seconds

    log::Switches switches;

    bool hasStart = false;                 // the log holds the run's first lines
    bool openedByOk = false;               // the first message was OK
    bool isExporting = false;              // an OK came, and no DONE went out after it
    log::Sign last = log::Sign::None;      // of the last statement
    std::optional<std::int64_t> resumed;   // microseconds from the last DONE to the OK after it
    std::optional<std::int64_t> doneTime;  // of the last DONE, microseconds
    std::array<Tally, static_cast<std::size_t>(log::Sign::Count)> signs;
    std::array<FaultRecord, static_cast<std::size_t>(Fault::Count)> faults;
    std::map<std::string, Tally, std::less<>> received;  // by message; unknown ones under ""
    std::map<std::string, ReactionTimes> reactions;
    std::uint64_t hiddenReactions = 0;  // answers that arrived while the harness paused

    // What the model found beyond the harness's own lines.
    Tally notAsked;            // messages of the DVR that answer nothing
    Tally progress;            // XFER_IN_PROGRESS about a file that is awaited but not asked for again
    Tally doubledProgress;     // the same at once once more: news, or an answer sent twice
    Tally refused;             // events that the DVR lists, and refuses all the same
    Tally refusedFiles;        // the same for files that it describes
    Tally doubledFiles;        // files that one description names twice
    Tally noMessage;           // documents without `msg`
    Tally empty;               // messages without text
    Tally brokenOff;           // documents that are cut off
    Tally notWellFormed;       // documents that are not XML, whether or not the harness takes them
    Tally otherEncoding;       // documents that would be, in another encoding
    Tally emptySource;         // EVENT_LIST with an empty `source`
    Tally doubledEvents;       // identifiers listed twice
    Tally noDescriptions;      // XML without `xmlFile`
    Tally noEvent;             // descriptions that are empty, or not of an event
    Tally namelessFiles;       // files without `name` in a description
    Tally emptyReids;          // descriptions with an empty `reid`
    Tally emptyNames;          // files with an empty `name` in a description
    Tally notFiles;            // comments and text in a stream
    Tally notEvents;           // comments and text in a list of events
    Tally secondLists;         // another `events` in EVENT_LIST
    Tally secondDescriptions;  // another `xmlFile` in EVENT or XML
    Tally emptyList;           // XML that lists nothing
    Tally terminated;          // messages whose length counts NULs after the text
    Tally deadlyDescriptions;  // after which an exception ended the harness, for no other reason known here
    Tally deadlyMessages;      // the same for other messages
    Tally noFiles;             // descriptions (1.0: lists) that name no file
    Tally reportWithoutReid;   // fault reports that name no event
    Tally otherReid;           // fault reports about an event other than the fault's
    Tally otherEvent;          // EVENT about an event other than the one asked for
    Tally otherAck;            // the same for EVENT_XFER_ACK
    Tally otherFile;           // FILE_COMPLETE about a file other than the one asked for
    Tally completedAgain;      // FILE_COMPLETE about the file completed last
    Tally answeredWrong;       // answers to a frame with a wrong prefix (-z), as if it were whole
    Tally openedAgain;         // an OK after such a frame, on the same connection
    Tally afterDone;           // messages of the DVR after DONE, other than the OK of the next export
    Tally resumedAt;           // that OK
    Tally badLength;           // announced lengths that no message has
    Tally wrongPrefix;         // prefixes that are not the length of the text, as the text proves
    Tally emptyHash;           // answers to the request for a new hash with an empty one
    Tally emptyLength;         // the same for the length
    Tally listedElsewhere;     // lists of events that the harness does not find
    Announcement announcement;
    std::string_view lastGood;  // message, of the catalogue
    std::uint64_t lastGoodLine = 0;
    std::string opening;           // the first message, as it came, unless it was OK
    Tally damaged;                 // messages that the log holds only in part
    Tally misread;                 // requests of another length than the judge believes
    Tally assertions;              // failed assertions, if the log includes standard error
    Tally exceptions;              // that ended the harness, if it does
    Tally markerFailures;          // failure markers that could not be made, if it does
    Tally doneSent;                // DONE
    std::uint64_t acksAtDone = 0;  // acknowledgements when the first DONE went out
    bool hasFiles = false;         // a description of some came
    bool hasLargeEvent = false;    // an event of at least two files came
    bool hasEmptyEvent = false;    // an event without identifier was listed
    std::list<Request> pending;    // still without an answer

    Transfers transfers;                            // only when asked for
    std::shared_ptr<const DeliveryFacts> delivery;  // of these; null if nobody looked
    std::shared_ptr<const WireFacts> wire;          // from the proxy's log; null if there is none

    std::vector<result::Step> steps;    // only when asked for
    std::vector<result::LogEntry> log;  // only when asked for

    const Tally& Of(log::Sign sign) const { return signs[static_cast<std::size_t>(sign)]; }
    bool Saw(log::Sign sign) const { return Of(sign).Any(); }
    const FaultRecord& Of(Fault fault) const { return faults[static_cast<std::size_t>(fault)]; }
    FaultRecord& Of(Fault fault) { return faults[static_cast<std::size_t>(fault)]; }
    std::uint64_t Received(std::string_view message) const;
    /// @return whether an exception ended the harness that only messages of the DVR bring about
    bool EndedByMessage() const;
    /// @return whether the DVR has sent something that makes the harness end itself
    bool HarnessEnded() const;
    /// @return the last thing that was right, to follow on something else: "; the last good message was OK"
    std::string AfterWhat() const;
    /// @return the switches as on the harness's command line
    std::string Switches() const;
};

}  // namespace rig::judge
