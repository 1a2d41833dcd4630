#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "rig/campaign/evidence/Records.h"
#include "tests/rig/campaign/CampaignTest.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

using rig::campaign::Outcome;

/// A case of a made-up campaign. Its one check, "xfer.answer", has the verdict that leads to the outcome.
struct MadeUpCase {
    std::string id;
    Outcome outcome = Outcome::Pass;
};

/// The clean exports around one case.
std::vector<MadeUpCase> Around(const MadeUpCase& one);

/// Writes a campaign as velloran-rig run leaves it, begun later than those before.
void WriteCampaign(const std::string& folder, const std::vector<MadeUpCase>& cases);

/// Made-up campaigns in a folder, and the program there.
class MergeTest : public testing::Test {
 protected:
    /// Writes one. @param change  of its campaign.json
    void Campaign(const std::string& name, const std::vector<MadeUpCase>& cases,
                  const std::function<void(Json&)>& change = nullptr) const;

    /// The same, as one of so many shards of a campaign of all these cases.
    void Shard(const std::string& name, const std::vector<MadeUpCase>& cases, int index, int total,
               const std::vector<std::string>& all) const;

    /// Changes a file that is JSON.
    void Change(const std::string& file, const std::function<void(Json&)>& change) const;

    /// @return what velloran-rig merge did, in the folder, with these arguments
    ProgramResult Merge(const std::vector<std::string>& arguments) const;

    /// Merges into "out", which must be refused, and leave nothing. @return standard error, without the name
    /// of the program
    std::string Refusal(int status, const std::vector<std::string>& parts) const;

    std::string PathOf(const std::string& file) const { return (folder_.Path() / file).string(); }
    std::string TextOf(const std::string& file) const;
    Json JsonOf(const std::string& file = "out/campaign.json") const;

    TemporaryFolder folder_;
};

/// @return a field of each case
std::vector<std::string> Each(const Json& cases, const char* field);

using Strings = std::vector<std::string>;
