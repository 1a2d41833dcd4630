#pragma once

#include <map>

#include "rig/dvr/defects/Defect.h"
#include "rig/dvr/wire/Style.h"

namespace rig::dvr {

/// Where a defect acts. If nothing is set: on the first message that it can change, or on each if its kind
/// says so.
struct DefectSite {
    std::string message;         // --on: only on messages of this name; empty: any
    std::size_t occurrence = 0;  // --on: only on the Nth of them, from 1; 0: each
    std::string event;           // --at: only on messages about this event; empty: any
    std::string file;            // --at: and this file; empty: any
};

/// Lets defects act on the messages of an otherwise honest DVR.
class Injector {
 public:
    /// @param recordings  must outlive the injector
    /// @param dialect     1 or 2
    /// @param seed        of everything random
    Injector(const Recordings& recordings, int dialect, std::uint32_t seed);

    /// Adds a defect, written "NAME" or "NAME=VALUE". Throws Failure (Unusable) if it does not exist, the
    /// dialect cannot show it, it cannot act on the site's message or it does not take the value.
    void AddDefect(const std::string& defect, const DefectSite& site);

    bool HasDefects() const { return !defects_.empty(); }

    /// @return the names of the defects that have not acted yet, for people; empty if all have acted
    std::string Idle() const;

    /// @return the name of a defect that shows only in delivered copies, for people; empty if there is none
    std::string SpoilsCopies() const;

    /// Lets each defect act, in the order in which they were added.
    Outgoing Prepare(Message message);

    /// @return the bytes of the message that are to be sent
    std::string Frame(const Outgoing& outgoing, const Style& style = {});

 private:
    struct Defect {
        const DefectKind* kind;
        std::string value;
        DefectSite site;
        bool acted = false;
    };
    bool IsDue(const Defect& defect, const Message& message) const;

    const Recordings& recordings_;
    int dialect_;
    std::mt19937 random_;
    std::vector<Defect> defects_;
    std::map<std::string, std::size_t> occurrences_;  // of each message so far
};

}  // namespace rig::dvr
