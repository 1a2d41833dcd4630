#include "rig/dvr/defects/Injector.h"

#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/wire/Frame.h"
#include "rig/protocol/Catalogue.h"

namespace rig::dvr {
namespace {

bool CanActOn(const DefectKind& kind, const std::string& message) {
    return kind.messages.empty() ||
           std::find(kind.messages.begin(), kind.messages.end(), message) != kind.messages.end();
}

/// Throws Failure (Unusable) unless the defect can act on a message of that name in the dialect.
void CheckMessageName(const DefectKind& kind, int dialect, const std::string& name) {
    std::string choices;
    for (const protocol::MessageKind& message : protocol::Catalogue()) {
        const bool isOfDvr = message.dialect == dialect && message.sender == protocol::Sender::Dvr;
        if (!isOfDvr || !CanActOn(kind, message.name)) {
            continue;
        }
        if (message.name == name) {
            return;
        }
        choices += (choices.empty() ? "" : ", ") + std::string(message.name);
    }
    throw Failure(ExitStatus::Unusable, fmt::format("--defect {}: expected one of {} with --on, found {}",
                                                    kind.name, choices, Quoted(name)));
}

}  // namespace

Injector::Injector(const Recordings& recordings, int dialect, std::uint32_t seed)
    : recordings_(recordings), dialect_(dialect), random_(seed) {}

void Injector::AddDefect(const std::string& defect, const DefectSite& site) {
    const std::size_t equals = defect.find('=');
    const DefectKind& kind = FindDefectKind(defect.substr(0, equals));
    const std::string value = equals == std::string::npos ? kind.standard : defect.substr(equals + 1);
    CheckDefectValue(kind, value);
    if (std::string(kind.dialects).find(std::to_string(dialect_)) == std::string::npos) {
        throw Failure(ExitStatus::Unusable,
                      fmt::format("--defect {}: expected protocol {}.0, the only one that can show it, found "
                                  "protocol {}.0",
                                  kind.name, kind.dialects, dialect_));
    }
    if (!site.message.empty()) {
        CheckMessageName(kind, dialect_, site.message);
    }
    defects_.push_back({&kind, value, site});
}

std::string Injector::Idle() const {
    std::string names;
    for (const Defect& defect : defects_) {
        if (!defect.acted) {
            names += (names.empty() ? "" : ", ") + std::string(defect.kind->name);
        }
    }
    return names;
}

std::string Injector::SpoilsCopies() const {
    for (const Defect& defect : defects_) {
        if (defect.kind->spoilsCopies) {
            return defect.kind->name;
        }
    }
    return "";
}

bool Injector::IsDue(const Defect& defect, const Message& message) const {
    const DefectSite& site = defect.site;
    if (!CanActOn(*defect.kind, message.Name()) ||
        (!site.event.empty() && site.event != message.Get("reid")) ||
        (!site.file.empty() && site.file != message.Get("file"))) {
        return false;
    }
    if (site.message.empty()) {
        return defect.kind->always || !defect.acted;
    }
    return site.message == message.Name() &&
           (site.occurrence == 0 || site.occurrence == occurrences_.at(message.Name()));
}

Outgoing Injector::Prepare(Message message) {
    ++occurrences_[message.Name()];
    std::vector<Defect*> due;
    for (Defect& defect : defects_) {
        if (IsDue(defect, message)) {
            due.push_back(&defect);
        }
    }
    Outgoing outgoing(std::move(message));
    for (Defect* defect : due) {
        if (defect->kind->change(outgoing, {defect->value, recordings_, random_})) {
            defect->acted = true;
            outgoing.defects.emplace_back(defect->kind->name);
        }
    }
    return outgoing;
}

std::string Injector::Frame(const Outgoing& outgoing, const Style& style) {
    const std::string text = outgoing.text.value_or(outgoing.message.Text(style));
    const auto announced =
        std::max<std::int64_t>(0, static_cast<std::int64_t>(text.size()) + outgoing.announcedTooMuch);
    std::string frame = outgoing.prefix.value_or(EncodePrefix(static_cast<std::uint32_t>(announced))) + text;
    if (outgoing.cutAtRandom) {
        frame.resize(std::uniform_int_distribution<std::size_t>(0, frame.size() - 1)(random_));
    } else if (outgoing.cut) {
        frame.resize(std::min(frame.size(), *outgoing.cut));
    }
    return frame;
}

}  // namespace rig::dvr
