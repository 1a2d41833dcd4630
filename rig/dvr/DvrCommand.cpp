#include "rig/dvr/DvrCommand.h"

#include <fmt/format.h>

#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>

#include "rig/base/Complaint.h"
#include "rig/base/Counted.h"
#include "rig/base/ParseNumber.h"
#include "rig/base/Printable.h"
#include "rig/base/Terminal.h"
#include "rig/dvr/Calls.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/defects/Injector.h"
#include "rig/dvr/dialogue/Habits.h"
#include "rig/dvr/recordings/Delivery.h"
#include "rig/dvr/recordings/EventKinds.h"
#include "rig/dvr/recordings/FolderRecordings.h"
#include "rig/dvr/recordings/SyntheticRecordings.h"
#include "rig/dvr/replay/ReplayCommand.h"
#include "rig/dvr/weaknesses/Weaknesses.h"
#include "rig/dvr/wire/Connection.h"
#include "rig/dvr/wire/Transcript.h"
#include "rig/dvr/wire/WireCheck.h"

namespace rig::dvr {
namespace {

std::unique_ptr<Recordings> OpenRecordings(const DvrOptions& options) {
    std::unique_ptr<Recordings> recordings;
    if (options.recordings) {
        recordings = std::make_unique<FolderRecordings>(*options.recordings);
    } else if (!options.events.empty()) {
        recordings = std::make_unique<SyntheticRecordings>(MakeUpEvents(options.events, DialectOf(options)),
                                                           "made-up recordings");
    } else {
        recordings = std::make_unique<SyntheticRecordings>();
    }
    recordings->HashBy(HashKindNamed(options.hash).value_or(HashKind::Sha256));
    return recordings;
}

/// @return the folder for copies, null if none is wanted. It must not be inside the recordings, as that would
/// change what is exported.
std::unique_ptr<DeliveryFolder> OpenDelivery(const DvrOptions& options, const Recordings& recordings) {
    if (!options.deliver) {
        return nullptr;
    }
    if (options.recordings) {
        const auto from = std::filesystem::weakly_canonical(*options.recordings);
        const auto way = std::filesystem::weakly_canonical(*options.deliver).lexically_relative(from);
        if (!way.empty() && *way.begin() != "..") {
            throw Failure(ExitStatus::Unusable, "--deliver: expected a folder outside --recordings, found " +
                                                    Quoted(*options.deliver));
        }
    }
    return std::make_unique<DeliveryFolder>(*options.deliver, recordings);
}

/// @return the site that --on and --at name. Throws Failure (Unusable) when they name none.
DefectSite SiteOf(const DefectOption& option, const Recordings& recordings) {
    DefectSite site;
    const std::size_t colon = option.on.find(':');
    site.message = option.on.substr(0, colon);
    if (colon != std::string::npos) {
        const std::string number = option.on.substr(colon + 1);
        site.occurrence = ParseNumber<std::size_t>(number).value_or(0);
        if (site.occurrence == 0 || site.message.empty()) {
            throw Failure(ExitStatus::Unusable,
                          "--on: expected MESSAGE or MESSAGE:N with N above 0, found " + Quoted(option.on));
        }
    }
    if (option.at.empty() || recordings.Has(option.at)) {
        site.event = option.at;
        return site;
    }
    // Identifiers may contain colons: the first one after an existing event counts.
    for (std::size_t end = option.at.find(':'); end != std::string::npos;
         end = option.at.find(':', end + 1)) {
        site.event = option.at.substr(0, end);
        site.file = option.at.substr(end + 1);
        if (recordings.Has(site.event)) {
            return site;
        }
    }
    throw Failure(ExitStatus::Unusable,
                  fmt::format("--at: expected EVENT or EVENT:FILE with an event in {}, found {}",
                              recordings.Origin(), Quoted(option.at)));
}

Injector NewInjector(const DvrOptions& options, const Recordings& recordings, std::uint32_t seed) {
    Injector injector(recordings, DialectOf(options), seed);
    for (const DefectOption& option : options.defects) {
        injector.AddDefect(option.defect, SiteOf(option, recordings));
    }
    if (!injector.SpoilsCopies().empty() && !options.deliver) {
        throw Failure(ExitStatus::Unusable, "--defect " + injector.SpoilsCopies() +
                                                ": expected --deliver, whose copies it spoils, found none");
    }
    return injector;
}

void PlayRecordings(const DvrOptions& options) {
    Style style;
    for (const std::string& manner : options.styles) {
        style.AddManner(manner);
    }
    Habits habits;
    for (const std::string& habit : options.habits) {
        habits.Add(habit);
    }
    Weaknesses weaknesses(DialectOf(options));
    for (const std::string& weakness : options.weaknesses) {
        weaknesses.Add(weakness);
    }
    const std::unique_ptr<Recordings> recordings = OpenRecordings(options);
    const std::uint32_t seed = options.seed.value_or(std::random_device()());
    Injector injector = NewInjector(options, *recordings, seed);
    const Endpoint endpoint(options.host, options.port);
    const std::unique_ptr<DeliveryFolder> delivery = OpenDelivery(options, *recordings);
    Transcript transcript(std::cout, WantsColour());
    transcript.Note(fmt::format("protocol {}.0, {} in {}, waiting for the harness at {}", DialectOf(options),
                                Counted(recordings->Events().size(), "event"), recordings->Origin(),
                                endpoint.Name()));
    if (injector.HasDefects()) {
        transcript.Note("seed " + std::to_string(seed));
    }
    WireCheck wireCheck(DialectOf(options), injector.HasDefects());
    const Scene scene = {options, *recordings, endpoint,   delivery.get(), style,
                         habits,  injector,    weaknesses, wireCheck,      transcript};
    if (options.recorder) {
        CallForEver(scene);
        return;
    }
    PlayAll(scene);
    if (!injector.Idle().empty()) {
        transcript.Note("had nothing to act on: " + injector.Idle());
    }
}

/// Connects and plays; throws Failure unless all goes well.
void Play(const DvrOptions& options) {
    if (options.replay) {
        Transcript transcript(std::cout, WantsColour());
        PlayReplay(options, transcript);
    } else {
        PlayRecordings(options);
    }
    if (IsOutputLost()) {
        throw Failure(ExitStatus::Unusable, LossOf("transcript"));
    }
}

int Report(ExitStatus status, const std::string& text) {
    return Complain("dvr", static_cast<int>(status), text);
}

}  // namespace

int RunDvr(const DvrOptions& options) {
    try {
        Play(options);
        return static_cast<int>(ExitStatus::Complete);
    } catch (const Failure& failure) {
        return Report(failure.Status(), failure.what());
    } catch (const std::exception& error) {  // of the system or a library: not the harness's doing
        return Report(ExitStatus::Unusable, Printable(error.what()));
    }
}

}  // namespace rig::dvr
