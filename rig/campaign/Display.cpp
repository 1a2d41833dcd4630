#include "rig/campaign/Display.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iostream>

#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/base/Terminal.h"

namespace rig::campaign {
namespace {

constexpr std::chrono::seconds kNews(10);         // until a phase is printed again when not on a terminal
constexpr std::chrono::milliseconds kBlink(100);  // until a terminal's line changes again
constexpr double kSecondsOfMinute = 60;

Colour ColourOf(Outcome outcome) {
    switch (ExitStatusOf(outcome)) {
        case 0:
            return Colour::Green;
        case 1:
        case 3:
            return Colour::Red;
        default:
            return Colour::Yellow;
    }
}

std::string CountsOf(const CampaignRecord& campaign) {
    std::vector<std::string> counts;
    for (const auto& [name, count] : campaign.Counts()) {
        counts.push_back(fmt::format("{} {}", count, name));
    }
    return counts.empty() ? "no case" : fmt::format("{}", fmt::join(counts, ", "));
}

/// @return seconds, without those in which a campaign that was gone on with lay still
double SecondsIn(const std::vector<CaseRecord>& cases) {
    std::int64_t microseconds = 0;
    for (const CaseRecord& record : cases) {
        microseconds += record.begin && record.end ? *record.end - *record.begin : 0;
    }
    return static_cast<double>(microseconds) / 1e6;
}

std::string TimesOf(const CampaignRecord& campaign) {
    const CaseTimes times = campaign.Times();
    const double total = SecondsIn(campaign.cases);
    const double rest = total - times.pauses - times.dvr - times.lingered - times.waited - times.hooks;
    return fmt::format(
        "took {:.1f} s: {:.1f} s the harness's own pauses, {:.1f} s waiting for the DVR, {:.1f} s watching "
        "whether it stays away, {:.1f} s for port 5001, {:.1f} s in hooks, {:.1f} s overhead",
        total, times.pauses, times.dvr, times.lingered, times.waited, times.hooks, rest);
}

/// @return how long the campaign will watch whether the DVR stays away; empty if it will not
std::string WatchOf(const CampaignRecord& campaign) {
    std::size_t cases = 0;
    double seconds = 0;
    for (const CaseRecord& record : campaign.cases) {
        cases += SecondsAway(record.plan) > 0 ? 1U : 0U;
        seconds += SecondsAway(record.plan);
    }
    return cases == 0 || campaign.linger
               ? ""
               : fmt::format(
                     "{} after DONE whether the DVR stays away, which takes {:g} s (--linger shortens it)",
                     Counted(cases, "case") + (cases == 1 ? " watches" : " watch"), seconds);
}

/// @return how long cases of the proxy's faults take; empty if there are none
std::string LengthOf(const CampaignRecord& campaign) {
    double seconds = 0;
    for (const CaseRecord& record : campaign.cases) {
        seconds += record.plan.fault && record.outcome == Outcome::NotRun ? ExpectedSeconds(record.plan) : 0;
    }
    return seconds == 0 ? ""
                        : fmt::format("takes about {:.0f} min with a DVR that answers at once",
                                      std::ceil(seconds / kSecondsOfMinute));
}

/// @return which part it is of what; empty if it is none
std::string PartOf(const CampaignRecord& campaign) {
    if (!campaign.shard) {
        return "";
    }
    const ShardRecord& shard = *campaign.shard;
    return fmt::format("{} ({}), with {} of {}{}", shard.part.Words(), shard.part.from, campaign.cases.size(),
                       Counted(shard.cases.size(), "case"),
                       shard.part.from == kShardOption ? "" : "; --no-shard runs all");
}

template <typename TextOf>
std::size_t WidestOf(const CampaignRecord& campaign, TextOf textOf) {
    std::size_t widest = 0;
    for (const CaseRecord& record : campaign.cases) {
        widest = std::max(widest, textOf(record).size());
    }
    return widest;
}

void PrintSpreads(const CampaignRecord& campaign) {
    for (const Spread& spread : campaign.Spreads()) {
        std::cout << fmt::format("spread of {}: {:.2f} to {:.2f} s", spread.name, spread.durations.front(),
                                 spread.durations.back());
        for (const auto& [outcome, count] : spread.outcomes) {
            std::cout << fmt::format(", {} {}", count, outcome);
        }
        for (const Spread::Reaction& reaction : spread.reactions) {
            std::cout << fmt::format("; {} {:.1f} to {:.1f} ms", reaction.request, reaction.least,
                                     reaction.most);
        }
        std::cout << "\n";
    }
}

}  // namespace

Display::Display() : isTerminal_(isatty(STDOUT_FILENO) == 1), hasColour_(WantsColour()) {}

void Display::Begin(const CampaignRecord& campaign, const std::string& folder) {
    nameColumns_ = WidestOf(campaign, [](const CaseRecord& record) { return record.id; });
    switchColumns_ = WidestOf(campaign, [](const CaseRecord& record) { return record.plan.switches; });
    const auto done =
        std::count_if(campaign.cases.begin(), campaign.cases.end(),
                      [](const CaseRecord& record) { return record.outcome != Outcome::NotRun; });
    Print(fmt::format(
        "velloran-rig run: {}{}, seed {}, evidence in {}", Counted(campaign.cases.size(), "case"),
        done == 0 ? "" : fmt::format(", {} of them done", done), campaign.seed, Printable(folder)));
    for (const std::string& line : {PartOf(campaign), LengthOf(campaign), WatchOf(campaign)}) {
        if (!line.empty()) {
            Print(line);
        }
    }
    for (const auto& [name, command] : campaign.commands) {
        Print(fmt::format("{:>12}: {}", name, Printable(command)));
    }
}

void Display::CaseBegins(const CaseRecord& record, std::size_t number, std::size_t count) {
    number_ = fmt::format("{:>{}}/{}", number, std::to_string(count).size(), count);
    head_ = Head(record);
    name_ = record.id;
    phase_.clear();
    begin_ = Clock::now();
    shown_ = {};
    left_ = count - number;
}

std::string Display::Head(const CaseRecord& record) const {
    return fmt::format("{} {:<{}}  {:<{}}", number_, record.id, nameColumns_, record.plan.switches,
                       switchColumns_);
}

/// @return the time that the other cases take if they take as long as those before; empty while it is unknown
std::string Display::Left() const {
    if (done_ == 0 || left_ == 0) {
        return "";
    }
    const std::chrono::duration<double> each = spent_ / done_;
    return fmt::format("about {:.0f} min left, ",
                       std::ceil(each.count() * static_cast<double>(left_) / kSecondsOfMinute));
}

void Display::Show(const std::string& phase, const std::string& detail) {
    const Clock::time_point now = Clock::now();
    const bool isNew = phase != phase_;
    if (isTerminal_ && (isNew || now - shown_ >= kBlink)) {
        const double seconds = std::chrono::duration<double>(now - begin_).count();
        // What changes comes first: the rest may not fit on the line.
        Rewrite(fmt::format("{} {} {:5.1f} s  {}{}{}", number_, name_, seconds, Left(),
                            detail.empty() ? "" : detail + ", ", phase));
        shown_ = now;
    } else if (!isTerminal_ && (isNew || now - shown_ >= kNews) && !detail.empty()) {
        Print(fmt::format("{} {}, {}", head_, phase, detail));
        shown_ = now;
    }
    phase_ = phase;
}

void Display::Warn(const std::string& text) {
    if (isTerminal_) {
        Rewrite("");
    }
    std::cerr << "velloran-rig run: " << text << std::endl;
}

void Display::ShowTry(std::size_t number, std::size_t most, std::size_t findings) {
    number_ = most == 0 ? std::to_string(number) : fmt::format("{}/{}", number, most);
    head_ = fmt::format("try {}, {}", number_, Counted(findings, "finding"));
    phase_.clear();
    shown_ = {};
    begin_ = Clock::now();
}

void Display::CaseEnds(const CaseRecord& record) {
    spent_ += Clock::now() - begin_;
    ++done_;
    if (isTerminal_) {
        Rewrite("");
    }
    const std::string name = fmt::format("{:<14}", NameOf(record.outcome));
    Print(fmt::format("{} {} {:6.1f} s", Head(record),
                      Coloured(name, hasColour_ ? ColourOf(record.outcome) : Colour::Plain),
                      record.times.duration));
    if (!record.reason.empty()) {
        Print("    " + Printable(record.reason));
    }
}

void Display::CaseChanges(const CaseRecord& record) {
    Print(fmt::format("{} after all: {}", record.id, NameOf(record.outcome)));
    if (!record.reason.empty()) {
        Print("    " + Printable(record.reason));
    }
}

void Display::EndSearch(const std::string& findings, Outcome outcome, const std::string& folder) {
    if (isTerminal_) {
        Rewrite("");
    }
    std::cout << findings;
    Print(fmt::format("{}; see {}/search.json", NameOf(outcome), Printable(folder)));
}

void Display::End(const CampaignRecord& campaign, const std::string& folder) {
    PrintSpreads(campaign);
    std::cout << campaign.coverage.Text();
    for (const std::string& known : campaign.knownUnseen) {
        std::cout << "known failure that did not occur: " << known
                  << ": the list of known failures must be fixed\n";
    }
    Print(TimesOf(campaign));
    Print(fmt::format("{}: {}; see {}/index.html", NameOf(campaign.Whole()), CountsOf(campaign),
                      Printable(folder)));
}

void Display::Rewrite(const std::string& line) {
    std::cout << "\r\033[K" << line.substr(0, TerminalColumns() - 1) << std::flush;
}

void Display::Print(const std::string& line) {
    std::cout << line << std::endl;
}

}  // namespace rig::campaign
