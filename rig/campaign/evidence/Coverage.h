#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "rig/campaign/Cases.h"
#include "rig/campaign/evidence/DvrMessages.h"
#include "rig/result/Result.h"

namespace rig::campaign {

/// A message of the protocol, or one of its fields.
struct ProtocolItem {
    int protocol;            // 1 or 2
    const char* from;        // "DVR", "harness"
    const char* message;     // `req`
    std::string_view field;  // attribute or path of children; empty for the message itself
};

/// @return every message of both dialects, each followed by its fields; for the harness, only the fields that
/// some messages lack
const std::vector<ProtocolItem>& ProtocolItems();

/// A switch of the harness, and the checks that pass when it has taken effect.
struct SwitchItem {
    char letter;
    bool isFirstDialect;  // it has an effect in 1.0
    std::vector<std::string> checks;
};

const std::vector<SwitchItem>& SwitchItems();

/// How much of the protocol a campaign has exercised.
class Coverage {
 public:
    /// Takes what one case has shown.
    /// @param messages  of the DVR, in order of arrival
    void Add(const Case& plan, const result::RunResult& run, const std::vector<DvrMessage>& messages);

    /// How often a message or a field occurred; 0 for what no case reached. Only for dialects that had a
    /// case.
    struct ItemCount {
        ProtocolItem item;
        std::uint64_t count = 0;
    };
    std::vector<ItemCount> Items() const;

    /// The cases in which a switch took effect, or a rule (a check of the judge) was decided.
    struct Use {
        std::string name;  // "-x", "xfer.answer"
        std::vector<std::string> cases;
    };
    std::vector<Use> Switches() const;
    std::vector<Use> Rules() const;

    /// The cases in which a fault of the proxy acted at a message.
    struct FaultUse {
        int protocol;  // 1 or 2
        std::string message;
        std::string fault;
        std::vector<std::string> cases;
    };

    /// @return those that have acted, in the order of the table of faults
    std::vector<FaultUse> Faults() const;

    /// @return everything that no case reached, in words; after cases of the proxy's faults, which need none
    /// of the harness's switches, only messages of a plain export and rules that concerned a case
    std::vector<std::string> Unreached() const;

    /// @return a few lines for people; empty when no case has run
    std::string Text() const;

 private:
    void Count(int protocol, const std::string& from, const std::string& message, const std::string& field);
    void CountRequests(const Case& plan, const result::RunResult& run);
    std::vector<std::string> UnreachedInShort() const;
    void AddSwitches(std::vector<std::string>& unreached) const;
    bool IsMissed(const ItemCount& item) const;
    std::vector<Use> Missed() const;
    bool HasFaults() const { return !faults_.empty(); }

    std::set<int> protocols_;
    std::map<std::string, std::uint64_t> counts_;            // by the item's text
    std::map<std::string, std::vector<std::string>> fired_;  // cases by switch
    std::map<std::string, std::vector<std::string>> rules_;  // cases by check
    std::set<std::string> met_;                              // checks that concerned a case
    std::map<std::string, std::vector<std::string>>
        faults_;  // cases by fault, message and dialect; without a case if the fault did not act
};

}  // namespace rig::campaign
