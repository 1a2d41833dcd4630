#include "tests/rig/judge/FindingsTable.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>

#include "rig/base/Hash.h"
#include "rig/base/OptionChecks.h"
#include "rig/log/RequestText.h"
#include "rig/proxy/ProxyLog.h"
#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kIndent = "    ";
constexpr const char* kFinding = "= ";

Lines LinesOfTable() {
    std::ifstream file(VELLORAN_FINDINGS);
    if (!file) {
        throw std::runtime_error(std::string(VELLORAN_FINDINGS) + ": expected to read it");
    }
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool IsIndented(const std::string& line) {
    return line.rfind(kIndent, 0) == 0;
}

std::string Content(const std::string& line) {
    return line.substr(std::string(kIndent).size());
}

/// A log, and what its requests depend on.
struct Play {
    std::int64_t start = MadeUpLog::kStart;
    MadeUpLog log = MadeUpLog(start);
    std::optional<TemporaryFolder> delivered;
    rig::log::Switches switches;
    bool isSizeWrong = false;
    std::optional<TemporaryFolder> proxy;
    std::string proxyLog;
    rig::judge::Limits limits;
};

std::filesystem::path FolderOf(std::optional<TemporaryFolder>& folder) {
    return (folder ? *folder : folder.emplace()).Path();
}

void Say(Play& play, const std::string& text) {
    const rig::log::Statement statement = rig::log::StatementOf(text);
    if (statement.sign == rig::log::Sign::ProtocolSwitch) {
        play.switches.protocol = static_cast<int>(statement.Number());
    } else if (statement.sign == rig::log::Sign::DurationSwitch) {
        play.switches.doneDuration = statement.Number();
    }
    play.isSizeWrong = play.isSizeWrong || statement.sign == rig::log::Sign::SizeSwitch;
    play.log.Say(text);
}

/// Takes "NAME EVENT FILE rehash", as much of it as the request has; "-" is an event without a name.
void Ask(Play& play, const std::string& words) {
    std::istringstream stream(words);
    rig::log::Request request;
    std::string fault;
    stream >> request.name >> request.reid >> request.file >> fault;
    request.reid = request.reid == "-" ? "" : rig::log::Unescaped(request.reid);
    request.fault = fault.empty() ? rig::log::Fault::None : rig::log::Fault::Rehash;
    const std::size_t size = rig::log::SizeOf(request, play.switches);
    play.log.Ask(std::string(rig::log::AnnouncedFor(size, play.isSizeWrong), 'x'));
}

/// Takes "SECONDS PATH CONTENT", a delivered file by its time since the start of the log; "-> PATH" makes a
/// link.
void Deliver(Play& play, const std::string& words) {
    std::istringstream stream(words);
    std::int64_t seconds = 0;
    std::string path;
    std::string content;
    stream >> seconds >> path >> std::ws;
    std::getline(stream, content);
    const std::filesystem::path whole = FolderOf(play.delivered) / path;
    if (content.rfind("-> ", 0) == 0) {
        std::filesystem::create_directories(whole.parent_path());
        std::filesystem::create_symlink(content.substr(3), whole);
        return;
    }
    play.delivered->Write(path, content);
    const timespec time = {play.start / 1'000'000 + seconds, 0};
    const std::array<timespec, 2> times = {time, time};
    utimensat(AT_FDCWD, whole.c_str(), times.data(), 0);
}

/// Takes what "@@" says: "gone", the name of a hash, or from now the seconds to the start of the log.
void LookAtFolder(Play& play, const std::string& word) {
    play.limits.delivered.emplace();
    play.limits.delivered->folder = (FolderOf(play.delivered) / (word == "gone" ? "gone" : "")).string();
    play.limits.delivered->hash = rig::HashKindNamed(word);
    if (const auto shift = rig::ParseNumber<std::int64_t>(word)) {
        play.start = (std::time(nullptr) + *shift) * 1'000'000;
        play.log = MadeUpLog(play.start);
    }
}

/// Takes "SECONDS CONNECTION EVENT MEMBERS", an event of the proxy by its time since the start of the log;
/// the event "< MESSAGE" or "> MESSAGE" is a frame. Connection 0 is none. "cut" cuts the last line.
void AddEvent(Play& play, const std::string& words) {
    std::istringstream stream(words);
    double seconds = 0;
    int connection = 0;
    std::string event;
    std::string message;
    std::string members;
    if (words == "cut") {
        play.proxyLog += "{\"time\":\"2026";
        return;
    }
    stream >> seconds >> connection >> event >> std::ws;
    const bool isFrame = event == "<" || event == ">";
    if (isFrame) {
        stream >> message >> std::ws;
    }
    std::getline(stream, members);
    const auto time = play.start + static_cast<std::int64_t>(seconds * 1e6);
    play.proxyLog += fmt::format("{{\"time\":\"{}\"", rig::proxy::TimeText(time));
    play.proxyLog += connection == 0 ? "" : fmt::format(",\"connection\":{}", connection);
    play.proxyLog += fmt::format(",\"event\":\"{}\"", isFrame ? "frame" : event);
    if (isFrame) {
        play.proxyLog += fmt::format(",\"direction\":\"{}\",\"message\":\"{}\"",
                                     event == "<" ? "dvr->harness" : "harness->dvr", message);
        play.proxyLog +=
            members.find("textBytes") == std::string::npos ? ",\"prefixBytes\":1,\"textBytes\":20" : "";
    }
    play.proxyLog += (members.empty() ? "" : ",") + members + "}\n";
}

void Take(Play& play, const std::string& line) {
    const std::string rest = line.size() > 2 ? line.substr(2) : "";
    switch (line.front()) {
        case '.':
            Say(play, rest);
            break;
        case '<':
            play.log.Dvr(rest);
            break;
        case '>':
            Ask(play, rest);
            break;
        case '+':
            play.log.After(std::stod(rest));
            break;
        case '!':
            play.log.Error(rest);
            break;
        case '@':
            line[1] == '@' ? LookAtFolder(play, rest.substr(std::min<std::size_t>(1, rest.size())))
                           : Deliver(play, rest);
            break;
        case '~':
            play.limits.isStrict = true;
            break;
        case '&':
            AddEvent(play, rest);
            break;
        case '%':
            play.limits.maxReaction = std::stod(rest);
            break;
        default:
            throw std::runtime_error(std::string(VELLORAN_FINDINGS) +
                                     ": expected . < > + ! % ~ @ &, found \"" + line + "\"");
    }
}

}  // namespace

std::vector<FindingsRow> ReadFindings() {
    std::vector<FindingsRow> rows;
    std::map<std::string, Lines> names;
    Lines* recipe = nullptr;
    for (const std::string& line : LinesOfTable()) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (line.front() == '$') {
            recipe = &names[line];
        } else if (!IsIndented(line)) {
            rows.push_back({line, {}, {}, ""});
            recipe = &rows.back().recipe;
        } else if (Content(line).front() == '*') {
            rows.back().shown = Content(line).substr(1) + " ";
        } else if (Content(line).rfind(kFinding, 0) == 0) {
            rows.back().findings.push_back(Content(line).substr(2));
        } else if (Content(line).front() == '$') {
            const Lines& named = names.at(Content(line));
            recipe->insert(recipe->end(), named.begin(), named.end());
        } else {
            recipe->push_back(Content(line));
        }
    }
    return rows;
}

rig::result::Result ResultOf(const FindingsRow& row) {
    Play play;
    for (const std::string& line : row.recipe) {
        Take(play, line);
    }
    if (!play.proxyLog.empty()) {
        play.limits.proxy = (FolderOf(play.proxy) / "proxy.jsonl").string();
        play.proxy->Write("proxy.jsonl", play.proxyLog);
    }
    return Judged(play.log.Text(), play.limits);
}

std::vector<std::string> FindingsOf(const FindingsRow& row) {
    Lines findings;
    for (const auto& run : ResultOf(row).runs) {
        for (const auto& check : run.checks) {
            findings.push_back(fmt::format("{} {} | {} | {}", rig::result::NameOf(check.verdict), check.id,
                                           check.expected, check.found));
        }
    }
    return findings;
}

namespace {

/// @return what the row's log shows that no earlier row has
Lines NewFindings(const FindingsRow& row, std::set<std::string>& known) {
    Lines findings;
    for (const std::string& finding : FindingsOf(row)) {
        const std::string id = finding.substr(0, finding.find(" | "));
        const std::string check = id.substr(id.rfind(' ')) + " ";
        const bool isShown = row.shown.find(check) != std::string::npos;
        if (known.emplace(rig::result::WithoutDetails(finding)).second || isShown) {
            findings.push_back(finding);
        }
    }
    return findings;
}

bool IsTitle(const std::string& line) {
    return !line.empty() && !IsIndented(line) && line.front() != '#' && line.front() != '$';
}

}  // namespace

std::string FindingsAnew() {
    std::set<std::string> known;
    std::map<std::string, Lines> findings;
    for (const FindingsRow& row : ReadFindings()) {
        findings[row.title] = NewFindings(row, known);
    }
    std::string table;
    std::string title;
    const auto endRow = [&] {
        for (const std::string& finding : findings[title]) {
            table += kIndent + (kFinding + finding) + "\n";
        }
        title.clear();
    };
    for (const std::string& line : LinesOfTable()) {
        if (!IsIndented(line)) {
            endRow();
            title = IsTitle(line) ? line : "";
        }
        if (!IsIndented(line) || Content(line).rfind(kFinding, 0) != 0) {
            table += line + "\n";
        }
    }
    endRow();
    return table;
}
