#include "rig/campaign/Search.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "rig/base/Counted.h"
#include "rig/base/ParseNumber.h"
#include "rig/base/Printable.h"

namespace rig::campaign {
namespace {

constexpr std::size_t kMostFaults = 4;

/// @return the fault's value, if it is one of which any number would do: where words are values as well, a
/// number may say something else
std::optional<long> NumberOf(const fault::FaultCase& one) {
    const std::vector<std::string>& values = one.fault->values;
    const bool areNumbers = std::all_of(values.begin(), values.end(), [](const std::string& value) {
        return ParseNumber<long>(value).has_value();
    });
    return areNumbers ? ParseNumber<long>(one.value) : std::nullopt;
}

bool ContainsAll(const Sequence& all, const Sequence& some) {
    return std::all_of(some.begin(), some.end(), [&all](const fault::FaultCase& one) {
        return std::any_of(all.begin(), all.end(),
                           [&one](const fault::FaultCase& other) { return other.fault == one.fault; });
    });
}

std::string Tries(std::size_t count) {
    return fmt::format("{} {}", count, count == 1 ? "try" : "tries");
}

std::string CommandFor(const SearchFinding& finding, std::uint32_t seed) {
    const bool isFirstDialect = finding.sequence.front().dialect == 1;
    return fmt::format("velloran-rig run --faults '{}' --protocol {} --bare --seed {}",
                       IdOf(finding.sequence), isFirstDialect ? 1 : 2, seed);
}

}  // namespace

std::size_t Sequences::Below(std::size_t end) {
    return random_() % end;  // the same with every library, unlike a distribution
}

Sequence Sequences::Next() {
    const int dialect = dialect_ != 0 ? dialect_ : static_cast<int>(1 + Below(2));
    Sequence sequence;
    do {
        sequence.push_back(Draw(dialect));
    } while (sequence.size() < kMostFaults && Below(2) == 0);
    return sequence;
}

/// From a deck, so that no fault and no value waits long for its turn.
fault::FaultCase Sequences::Draw(int dialect) {
    Sequence& deck = decks_[dialect];
    if (deck.empty()) {
        Shuffle(dialect);
    }
    fault::FaultCase one = deck.back();
    deck.pop_back();
    const std::vector<std::string> messages = fault::MessagesOf(*one.fault, dialect);
    one.message = messages[Below(messages.size())];
    if (const std::optional<long> number = NumberOf(one); number && *number > 1 && Below(2) == 0) {
        one.value = std::to_string(1 + Below(static_cast<std::size_t>(2 * *number)));
    }
    return one;
}

void Sequences::Shuffle(int dialect) {
    Sequence& deck = decks_[dialect];
    for (const fault::Fault& fault : fault::Faults()) {
        if (!fault::IsOf(fault, dialect)) {
            continue;
        }
        for (const std::string& value : fault.values.empty() ? std::vector<std::string>{""} : fault.values) {
            deck.push_back({&fault, value, "", dialect});
        }
    }
    for (std::size_t at = deck.size() - 1; at > 0; --at) {
        std::swap(deck[at], deck[Below(at + 1)]);
    }
}

Sequence Shrink(Sequence sequence, const std::function<bool(const Sequence&)>& fails) {
    for (std::size_t at = 0; at < sequence.size() && sequence.size() > 1;) {
        Sequence less = sequence;
        less.erase(less.begin() + static_cast<std::ptrdiff_t>(at));
        if (fails(less)) {
            sequence = std::move(less);
            at = 0;
        } else {
            ++at;
        }
    }
    for (std::size_t at = 0; at < sequence.size(); ++at) {
        for (std::optional<long> number = NumberOf(sequence[at]); number && *number > 1;) {
            Sequence less = sequence;
            number = *number / 2;
            less[at].value = std::to_string(*number);
            if (!fault::Takes(*less[at].fault, less[at].value) || !fails(less)) {
                break;
            }
            sequence = std::move(less);
        }
    }
    return sequence;
}

Case CaseOf(const Sequence& sequence) {
    Case plan = FaultCaseOf(sequence.front());
    plan.name = IdOf(sequence);
    plan.others.assign(sequence.begin() + 1, sequence.end());
    for (const fault::FaultCase& other : plan.others) {
        plan.sentence += " " + other.Sentence();
    }
    return plan;
}

std::string IdOf(const Sequence& sequence) {
    std::string id;
    for (const fault::FaultCase& one : sequence) {
        id += (id.empty() ? "" : "+") + one.Id();
    }
    return id;
}

Sequence SequenceOf(const std::string& id) {
    Sequence sequence;
    std::istringstream ids(id);
    for (std::string one; std::getline(ids, one, '+');) {
        const std::vector<fault::FaultCase> chosen = fault::Choose(one);
        if (chosen.size() != 1 || chosen.front().Id() != one) {
            throw std::runtime_error(
                fmt::format("--faults: expected ids of cases around \"+\", found {}", Quoted(one)));
        }
        sequence.push_back(chosen.front());
    }
    return sequence;
}

std::optional<SearchLimit> ParseSearchLimit(const std::string& text) {
    const std::size_t end = text.find_first_not_of("0123456789");
    const auto number = ParseNumber<std::size_t>(text.substr(0, end));
    const std::string unit = end == std::string::npos ? "" : text.substr(end);
    if (!number || *number == 0 || *number > 1'000'000 ||
        (!unit.empty() && unit != "s" && unit != "m" && unit != "h")) {
        return std::nullopt;
    }
    if (unit.empty()) {
        return SearchLimit{*number, 0};
    }
    const double seconds = unit == "s" ? 1 : unit == "m" ? 60 : 3600;
    return SearchLimit{0, static_cast<double>(*number) * seconds};
}

std::string FindingsText(const std::vector<SearchFinding>& findings, std::size_t tries, std::uint32_t seed) {
    std::string text = fmt::format("{}, {}\n", Tries(tries), Counted(findings.size(), "finding"));
    for (const SearchFinding& finding : findings) {
        text += fmt::format(
            "{}\n    {}\n    first at try {}, in {}; again in {} of 3 repetitions\n    repeat: {}\n",
            IdOf(finding.sequence), finding.reason, finding.atTry, Tries(finding.seen), finding.repeated,
            CommandFor(finding, seed));
    }
    return text;
}

std::string FindingsJson(const std::vector<SearchFinding>& findings, std::size_t tries, std::uint32_t seed) {
    nlohmann::ordered_json json = {
        {"tries", tries}, {"seed", seed}, {"findings", nlohmann::ordered_json::array()}};
    for (const SearchFinding& finding : findings) {
        json["findings"].push_back({{"faults", IdOf(finding.sequence)},
                                    {"reason", finding.reason},
                                    {"firstTry", finding.atTry},
                                    {"tries", finding.seen},
                                    {"repeated", finding.repeated},
                                    {"command", CommandFor(finding, seed)}});
    }
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool IsOneOf(const SearchFinding& finding, const Sequence& sequence) {
    return ContainsAll(sequence, finding.sequence);
}

}  // namespace rig::campaign
