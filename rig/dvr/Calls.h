#pragma once

#include "rig/dvr/DvrCommand.h"
#include "rig/dvr/defects/Injector.h"
#include "rig/dvr/dialogue/Habits.h"
#include "rig/dvr/recordings/Delivery.h"
#include "rig/dvr/recordings/Recordings.h"
#include "rig/dvr/weaknesses/Weaknesses.h"
#include "rig/dvr/wire/Connection.h"
#include "rig/dvr/wire/Style.h"
#include "rig/dvr/wire/Transcript.h"
#include "rig/dvr/wire/WireCheck.h"

namespace rig::dvr {

/// What all dialogues of a run share.
struct Scene {
    const DvrOptions& options;
    const Recordings& recordings;
    const Endpoint& endpoint;
    const DeliveryFolder* delivery;  // null: no copies
    const Style& style;
    const Habits& habits;
    Injector& injector;
    Weaknesses& weaknesses;
    WireCheck& wireCheck;
    Transcript& transcript;
};

/// Holds one dialogue, and another as long as a defect or a habit asks for it. Throws Failure unless all goes
/// well.
void PlayAll(const Scene& scene);

/// Does as a recorder in the field: calls again after each end of a connection, whatever the backend does,
/// and notes why it hung up, until SIGINT, SIGTERM or SIGHUP. Throws Failure (Unusable) when the recordings
/// or the copies fail, or the transcript is lost.
void CallForEver(const Scene& scene);

}  // namespace rig::dvr
