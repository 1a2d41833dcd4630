#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rig/result/Result.h"

namespace rig::judge {

/// Files of which something is true: how many, the first few of them in words, and the log's lines about
/// them.
class Files {
 public:
    void Add(const std::string& words);

    /// @param line  of the log, which gets the words as its note
    void Add(const std::string& words, const result::Evidence& line);

    bool Any() const { return count_ > 0; }
    std::uint64_t Count() const { return count_; }

    /// @return "Event1/a.ts, Event1/b.ts and 3 more"
    std::string Words() const;

    const std::vector<result::Evidence>& Lines() const { return lines_; }

 private:
    std::uint64_t count_ = 0;
    std::vector<std::string> words_;
    std::vector<result::Evidence> lines_;
};

/// What a look at the folder shows of what one run has delivered.
struct DeliveryFacts {
    std::string unreadable;  // why the folder cannot be read; empty if it can

    Files complete;   // reported by FILE_COMPLETE
    Files lengths;    // of these, with an announced length
    Files hashes;     // with an announced hash
    Files newHashes;  // with a new one that was asked for
    Files outside;    // names that lead out of the folder
    Files missing;
    Files notFile;              // folders, pipes
    Files noAccess;             // that may not be read
    Files overwritten;          // delivered again, and announced otherwise, by a later FILE_COMPLETE
    Files older;                // not written since before the run
    Files empty;                // of which neither length nor hash was announced
    Files otherLength;          // than announced
    Files notLength;            // announced, but not a number
    Files otherHash;            // than announced
    Files notHash;              // announced, but not one of the kind that is asked for
    Files unknownHash;          // announced, but of no known kind
    Files otherNewHash;         // than announced as new
    Files failed;               // whose transfer failed at some time
    Files half;                 // what is left of these
    Files unasked;              // that nobody asked for
    Files undated;              // the same, perhaps not of this run
    Files unseen;               // folders that cannot be read
    Files timed;                // whose times can be compared
    Files late;                 // written after FILE_COMPLETE
    std::uint64_t leftOut = 0;  // files that nobody asked for, and that are older than the run
};

}  // namespace rig::judge
