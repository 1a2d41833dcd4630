#include "rig/dvr/weaknesses/Weaknesses.h"

#include <fmt/format.h>
#include <sys/prctl.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "rig/base/ParseNumber.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Choice.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

bool IsOf(const WeaknessKind& kind, int dialect) {
    return std::strchr(kind.dialects, '0' + dialect) != nullptr;
}

/// Without a core: the process means it.
[[noreturn]] void Abort(const WeaknessKind& kind) {
    prctl(PR_SET_DUMPABLE, 0);
    std::cerr << "velloran-rig dvr: weakness " << kind.name << ": " << kind.does << std::endl;
    std::abort();
}

/// Throws Failure (Unusable) unless the option ends with a limit where the kind has one, if it ends with any.
std::size_t LimitOf(const WeaknessKind& kind, const std::string& option) {
    const std::size_t equals = option.find('=');
    if (equals == std::string::npos) {
        return kind.limit;
    }
    const auto limit = ParseNumber<std::size_t>(option.substr(equals + 1));
    if (kind.limit == 0) {
        throw Failure(ExitStatus::Unusable, fmt::format("--weakness: expected {} without a value, found {}",
                                                        kind.name, Quoted(option)));
    }
    if (!limit || *limit == 0) {
        throw Failure(ExitStatus::Unusable,
                      fmt::format("--weakness: expected {}={} with {} above 0, found {}", kind.name,
                                  kind.value, kind.value, Quoted(option)));
    }
    return *limit;
}

}  // namespace

void Weaknesses::Add(const std::string& option) {
    const std::string name = option.substr(0, option.find('='));
    const auto named = Choose("--weakness", ListWeaknesses(), name == "all" ? option : name);
    const std::vector<WeaknessKind>& kinds = WeaknessKinds();
    if (named) {
        Adopt(kinds[*named], option);
        return;
    }
    for (const WeaknessKind& kind : kinds) {
        if (IsOf(kind, dialect_)) {
            Adopt(kind, kind.name);
        }
    }
}

void Weaknesses::Adopt(const WeaknessKind& kind, const std::string& option) {
    if (!IsOf(kind, dialect_)) {
        throw Failure(
            ExitStatus::Unusable,
            fmt::format("--weakness {}: expected protocol {}.0, the only one that can show it, found "
                        "protocol {}.0",
                        kind.name, kind.dialects, dialect_));
    }
    weaknesses_.push_back({&kind, LimitOf(kind, option)});
}

void Weaknesses::Attach(Transcript& transcript, int stop) {
    transcript_ = &transcript;
    stop_ = stop;
}

void Weaknesses::Note(const WeaknessKind& kind) {
    transcript_->Note(fmt::format("weakness {} shows: {}", kind.name, kind.does));
}

/// @return true
bool Weaknesses::React(const WeaknessKind& kind) {
    Note(kind);
    switch (kind.reaction) {
        case Reaction::Abort:
            Abort(kind);
        case Reaction::Hang:
            for (;;) {
                Pause(std::chrono::hours(1), stop_);
            }
        case Reaction::GiveUp:
            gaveUp_ = true;
            throw Breach("what its weakness does not take");
        case Reaction::HangUp:
            throw Breach("what its weakness does not take");
        case Reaction::Ignore:
        case Reaction::Answer:
        case Reaction::Flaw:
            break;
    }
    return true;
}

bool Weaknesses::Show(Flaw flaw, std::size_t measure) {
    for (const Weakness& one : weaknesses_) {
        if (one.kind->flaw == flaw && (one.limit == 0 || measure > one.limit)) {
            return React(*one.kind);
        }
    }
    return false;
}

bool Weaknesses::Ignore(const std::string& text) {
    for (const Weakness& one : weaknesses_) {
        if (one.kind->inText != nullptr && one.kind->inText(text, one.limit)) {
            return React(*one.kind);
        }
    }
    return false;
}

bool Weaknesses::Ignore(const Message& message) {
    for (const Weakness& one : weaknesses_) {
        if (one.kind->inMessage != nullptr && one.kind->inMessage(message)) {
            return React(*one.kind);
        }
    }
    return false;
}

std::optional<Message> Weaknesses::Answer(const Message& request, const Recordings& recordings) {
    for (const Weakness& one : weaknesses_) {
        if (one.kind->inRefused != nullptr && one.kind->inRefused(request, recordings)) {
            React(*one.kind);
            return one.kind->answer(request, recordings);  // the other reactions do not come back
        }
    }
    return std::nullopt;
}

void Weaknesses::HearOf(const CallEnd& end) {
    for (Weakness& one : weaknesses_) {
        if (one.kind->atEnd == nullptr || !one.kind->atEnd(end) || ++one.count < one.limit) {
            continue;
        }
        Note(*one.kind);
        gaveUp_ = true;
        return;
    }
}

}  // namespace rig::dvr
