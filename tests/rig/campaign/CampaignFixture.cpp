#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/rig/campaign/CampaignTest.h"
#include "tests/support/Dvr.h"

namespace {

void Write(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << content;
}

}  // namespace

void ExpectHolds(const std::string& text, const std::string& part) {
    EXPECT_NE(text.find(part), std::string::npos) << "no \"" << part << "\" in:\n" << text;
}

bool IsDirect() {
    return std::getenv("VELLORAN_DIRECT") != nullptr;
}

CampaignTest::CampaignTest() {
    Write("/mnt/recordings/E1/E1.xml", "<recording/>");
    Write("/mnt/recordings/E1/E1_1", "video");
}

std::string CampaignTest::Dvr(const std::string& options) {
    return RigCommand().Line() +
           " dvr --protocol {protocol} --seed {seed} --recordings /mnt/recordings --transfer-time 100 " +
           options;
}

ProgramResult CampaignTest::RunCampaign(std::vector<std::string> arguments,
                                        ProgramSurroundings surroundings) const {
    arguments.insert(arguments.begin(), {"run", "--out", out_});
    if (IsDirect()) {
        arguments.emplace_back("--direct");
    }
    const auto prepare = surroundings.prepare;
    surroundings.prepare = [prepare] {
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_CORE, &none);
        if (prepare) {
            prepare();
        }
    };
    return RunRig(arguments, surroundings);
}

Json CampaignTest::RunCase(const std::string& name, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--bare", "--cases", name});
    result_ = RunCampaign(arguments);
    return Evidence()["cases"][0];
}

Json CampaignTest::Evidence(const std::string& file) const {
    Json json = Json::parse(EvidenceText(file), nullptr, false);
    EXPECT_FALSE(json.is_discarded()) << file << " is not JSON";
    return json;
}

std::string CampaignTest::EvidenceText(const std::string& file) const {
    return ReadFile(out_ + "/" + file);
}
