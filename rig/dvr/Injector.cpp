#include "rig/dvr/Injector.h"

#include <algorithm>

#include "rig/dvr/Failure.h"
#include "rig/dvr/Frame.h"
#include "rig/dvr/Printable.h"

namespace rig {
namespace {

bool CanActOn(const DefectKind& kind, const std::string& message) {
    return kind.messages.empty() ||
           std::find(kind.messages.begin(), kind.messages.end(), message) != kind.messages.end();
}

std::string Names(const std::vector<const char*>& messages) {
    std::string names;
    for (const char* message : messages) {
        names += (names.empty() ? "" : ", ") + std::string(message);
    }
    return names;
}

}  // namespace

Injector::Injector(const Recordings& recordings, int dialect, std::uint32_t seed)
    : recordings_(recordings), dialect_(dialect), random_(seed) {}

void Injector::Add(const std::string& defect, const DefectSite& site) {
    const std::size_t equals = defect.find('=');
    const DefectKind& kind = FindDefectKind(defect.substr(0, equals));
    const std::string value = equals == std::string::npos ? kind.standard : defect.substr(equals + 1);
    CheckDefectValue(kind, value);
    const std::string option = "--defect " + std::string(kind.name) + ": expected ";
    if (std::string(kind.dialects).find(std::to_string(dialect_)) == std::string::npos) {
        throw Failure(ExitStatus::UsageError, option + "protocol " + kind.dialects +
                                                  ".0, which alone can show it, found protocol " +
                                                  std::to_string(dialect_) + ".0");
    }
    if (!site.message.empty() && !CanActOn(kind, site.message)) {
        throw Failure(ExitStatus::UsageError, option + "one of " + Names(kind.messages) +
                                                  " with --on, found " + Quoted(site.message));
    }
    defects_.push_back({&kind, value, site});
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

std::string Injector::Frame(const Outgoing& outgoing) {
    const std::string text = outgoing.text.value_or(outgoing.message.Text());
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

}  // namespace rig
