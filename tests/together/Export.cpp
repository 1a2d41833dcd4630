#include "Export.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <thread>

#include "tests/support/Program.h"

namespace {

constexpr const char* kLog = "/mnt/judged.log";
constexpr const char* kProxyLog = "/mnt/proxy.jsonl";
constexpr const char* kReport = "/mnt/judged.json";
constexpr std::chrono::milliseconds kQuiet(1500);  // longer than any pause that the harness makes on its own
constexpr std::chrono::milliseconds kQuietAlready(300);  // where the DVR has waited in vain before
constexpr int kWaitedInVain = 3;                         // status of the DVR

std::vector<std::string> Arguments(const Recipe& recipe) {
    // The second request, and word of its progress, must come during the transfer.
    const bool isLong = recipe.switches.find("-x") not_eq std::string::npos or
                        recipe.manners.find("progress") not_eq std::string::npos;
    std::vector<std::string> all = {
        "--protocol", recipe.dialect,    "--timeout",          "5", "--frame-timeout", "1", "--seed",
        "1",          "--transfer-time", isLong ? "200" : "20"};
    if (not recipe.defect.empty()) {
        const std::vector<std::string> defect = WordsOf("--defect " + recipe.defect);
        all.insert(all.end(), defect.begin(), defect.end());
    }
    if (recipe.manners.find("--events") == std::string::npos) {
        all.insert(all.end(), {"--recordings", VELLORAN_TOGETHER "/recordings"});
    }
    const std::vector<std::string> manners = WordsOf(recipe.manners);
    all.insert(all.end(), manners.begin(), manners.end());
    if (manners.empty() and not StyleOfAll().empty()) {
        all.insert(all.end(), {"--style", StyleOfAll()});
    }
    return all;
}

/// "ID" for a check that failed, "ID?" for one that is open.
std::string Marked(const std::string& id, const std::string& verdict) {
    return id + (verdict == "FAIL" ? "" : verdict == "INCONCLUSIVE" ? "?" : "!");
}

}  // namespace

std::string StyleOfAll() {
    const char* style = std::getenv("VELLORAN_STYLE");
    return style == nullptr ? "" : style;
}

Export::Export(const Recipe& recipe, Here here)
    : delivers_((recipe.defect + recipe.manners).find(kDelivered) not_eq std::string::npos) {
    harness_.emplace(WordsOf("-p " + recipe.dialect + " " + recipe.switches));
    harness_->Listens(here);
    if (recipe.manners.find(kThroughProxy) not_eq std::string::npos) {
        proxy_.emplace(5001, 5002, WordsOf(recipe.faults), here);
    }
    dvr_.emplace(Arguments(recipe));
    if (recipe.manners.find(kRecorder) == std::string::npos) {
        FollowUntilTheDvrEnds();
    } else {
        FollowUntilNothingIsAsked();
        dvr_->GetsSignal(SIGTERM);
    }
    dvrStatus_ = dvr_->Ends(here);
    harness_->RunsOut(dvrStatus_ == kWaitedInVain ? kQuietAlready : kQuiet, here);
}

/// The harness waits where nobody reads its log.
void Export::FollowUntilTheDvrEnds() {
    constexpr std::chrono::milliseconds moment(20);
    while (dvr_->IsRunning()) {
        if (not harness_->LogsMore(moment)) {
            std::this_thread::sleep_for(moment);
        }
    }
}

/// A recorder calls again after the export.
void Export::FollowUntilNothingIsAsked() {
    const auto logs = [this](const char* text) {
        return harness_->GetProcess().output.find(text) not_eq std::string::npos;
    };
    while (not logs("Sending DONE") and not logs("Got CONFIGURATION_UPDATE_ERROR")) {
        if (not harness_->LogsMore(kQuiet)) {
            return;
        }
    }
}

Judged Export::Judge(WithProxy proxy) const {
    std::ofstream(kLog, std::ios::binary) << harness_->GetProcess().output << harness_->StandardError();
    std::vector<std::string> arguments = {"judge", "--patience", "1", "--json", kReport, kLog};
    if (delivers_) {
        arguments.insert(arguments.end(), {"--delivered", kDelivered});
    }
    if (proxy == WithProxy::Yes) {
        std::ofstream(kProxyLog, std::ios::binary) << proxy_->LogText();
        arguments.insert(arguments.end(), {"--proxy", kProxyLog});
    }
    const ProgramResult ended = RunRig(arguments);
    EXPECT_EQ(ended.errors, "");
    const nlohmann::json report = nlohmann::json::parse(ReadFile(kReport));
    Judged judged = {report.at("verdict"), {}, {}};
    for (const nlohmann::json& run : report.at("runs")) {
        for (const nlohmann::json& check : run.at("checks")) {
            const std::string verdict = check.at("verdict");
            if (verdict == "PASS") {
                judged.passed.insert(check.at("id"));
            } else if (verdict not_eq "NOT REACHED") {
                judged.found[Marked(check.at("id"), verdict)] = check.at("found");
            }
        }
    }
    return judged;
}

std::vector<std::string> Export::Log() const {
    return LinesOf(harness_->GetProcess().output);
}

std::string Export::Ending() const {
    const Process& process = harness_->GetProcess();
    if (process.ExitStatus() == 44) {
        return "";
    }
    const std::string error = process.error.substr(0, process.error.find('\n'));
    const std::string text = std::regex_replace(error, std::regex("^velloran: [^ ]+:[0-9]+: "), "");
    const int signal = process.EndingSignal();
    const std::string name = signal == SIGABRT ? "SIGABRT" : signal == SIGPIPE ? "SIGPIPE" : process.Ending();
    return name + (text.empty() ? "" : " ") + text + "\n";
}

std::vector<std::string> LinesOf(const std::string& log) {
    std::vector<std::string> lines;
    std::istringstream all(log);
    bool isConnected = false;
    for (std::string raw; std::getline(all, raw);) {
        const LogLine line = ParseLogLine(raw);
        if (StartsWith(line.text, "Connected to: ")) {
            isConnected = true;
        } else if (isConnected) {
            lines.push_back(std::to_string(line.level) + " " + line.text);
        }
    }
    return lines;
}

std::vector<std::string> StoredLog(const std::string& name) {
    return LinesOf(ReadFile(std::string(VELLORAN_LOGS) + "/" + name + ".log"));
}
