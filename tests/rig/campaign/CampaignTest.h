#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Program.h"
#include "tests/support/World.h"

using Json = nlohmann::json;

/// Whether campaigns run with --direct: VELLORAN_DIRECT is in the environment.
bool IsDirect();

/// Campaigns of the real programs in a world of their own, on one recording of two files; the evidence goes
/// to the world's disk.
class CampaignTest : public testing::Test {
 protected:
    CampaignTest();

    /// @return the command of a simulated DVR with these options added to the usual ones
    static std::string Dvr(const std::string& options = "");

    /// Runs a campaign with --out and these arguments. @return how it ended; its core is not dumped
    ProgramResult RunCampaign(std::vector<std::string> arguments,
                              ProgramSurroundings surroundings = {}) const;

    /// Runs one case bare. @return what campaign.json says of it
    Json RunCase(const std::string& name, std::vector<std::string> arguments);

    /// @return a file of evidence as JSON; fails the test if it is not JSON
    Json Evidence(const std::string& file = "campaign.json") const;

    /// @return its text
    std::string EvidenceText(const std::string& file) const;

    std::string out_ = "/mnt/campaign";
    ProgramResult result_;  // of RunCase

 private:
    World world_;
};

/// Fails unless the text contains the part.
void ExpectHolds(const std::string& text, const std::string& part);
