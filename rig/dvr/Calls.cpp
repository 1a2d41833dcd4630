#include "rig/dvr/Calls.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "rig/base/Complaint.h"
#include "rig/base/Interrupts.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/dialogue/Dialogue_1_0.h"
#include "rig/dvr/dialogue/Dialogue_2_0.h"
#include "rig/dvr/dialogue/Session.h"

namespace rig::dvr {
namespace {

/// The harness creates this file to make transfers fail, and then removes it.
constexpr const char* kFailureMarker = "/mnt/hd/velloranFail";

/// What a recorder accepts of any backend: more than a harness sends.
constexpr std::size_t kMostTextBytes = std::size_t{2} * 1024 * 1024;

constexpr Milliseconds kPauseBetweenCalls(500);
constexpr Milliseconds kFirstRetry(50);
constexpr Milliseconds kLastRetry(1000);
constexpr std::chrono::hours kForEver(24 * 365);

std::unique_ptr<Dialogue> NewDialogue(const Scene& scene) {
    if (DialectOf(scene.options) == 2) {
        return std::make_unique<Dialogue_2_0>(scene.recordings, kFailureMarker);
    }
    return std::make_unique<Dialogue_1_0>(scene.recordings);
}

void Prepare(Session& session, const Scene& scene) {
    if (scene.delivery != nullptr) {
        session.Deliver(*scene.delivery);
    }
    session.WriteAs(scene.style);
    session.Adopt(scene.habits);
    if (scene.injector.HasDefects()) {
        session.Misbehave(scene.injector, scene.endpoint);
    }
    if (scene.options.onSizeError == "continue") {
        session.AcceptSizeErrors();
    }
    if (scene.options.wireCheck) {
        session.Check(scene.wireCheck);
    }
}

/// What comes after a dialogue.
struct Sequel {
    bool reconnects;                              // as a defect asks for
    std::optional<std::chrono::minutes> absence;  // that DONE asked for; nothing: there was no DONE
};

/// What a weakness may make of the end of a call.
CallEnd EndOf(Connection& connection, const Dialogue& dialogue, const Session& session,
              Clock::time_point start) {
    CallEnd end;
    end.byBackend = connection.HasEnded();
    end.byReset = connection.WasReset();
    end.insideFrame = connection.Decoder().InsideFrame();
    end.inExport = dialogue.HasBegun();
    end.unheard = !session.HasHeard();
    end.lasted = std::chrono::duration_cast<Milliseconds>(Clock::now() - start);
    return end;
}

/// Holds one dialogue on a new connection.
/// @param end  is set if it ends without DONE
Sequel Play(const Scene& scene, Connection connection, CallEnd* end = nullptr) {
    const DvrOptions& options = scene.options;
    Transcript& transcript = scene.transcript;
    const std::unique_ptr<Dialogue> dialogue = NewDialogue(scene);
    if (options.segment) {
        connection.SendInPieces(*options.segment, Milliseconds(options.gap));
    }
    transcript.Note("connected; -> is sent by the DVR, <- by the harness");
    Session session(connection, *dialogue, transcript,
                    {FromSeconds(options.timeout),
                     FromSeconds(options.frameTimeout),
                     {Milliseconds(options.transferTime), options.rate}});
    Prepare(session, scene);
    if (options.recorder) {
        dialogue->Distrust();
        if (!scene.weaknesses.AreNone()) {
            session.Weaken(scene.weaknesses, scene.recordings);
        }
    }
    const auto start = Clock::now();
    const auto noteEnd = [&](bool isDone) {
        transcript.Note((isDone ? "" : "not finished: ") + dialogue->Summary() + session.WireSummary());
    };
    try {
        session.Run();
    } catch (const Failure&) {
        noteEnd(false);
        if (end != nullptr) {
            *end = EndOf(connection, *dialogue, session, start);
        }
        throw;
    }
    noteEnd(dialogue->IsDone());
    return {session.Reconnects(), dialogue->Absence()};
}

/// Connects, however long it takes until someone listens.
/// @param last  how the call before ended
Connection Connect(const Scene& scene, int stop, CallEnd last) {
    for (Milliseconds pause = kFirstRetry;; pause = std::min(2 * pause, kLastRetry)) {
        try {
            return Connection::Open(scene.endpoint, Milliseconds(0), stop);
        } catch (const Failure&) {
            if (pause == kFirstRetry) {
                scene.transcript.Note("nobody takes the call; trying again until someone does");
            }
        }
        last.thenRefused = true;
        scene.weaknesses.HearOf(last);
        Pause(scene.weaknesses.HaveGivenUp() ? kForEver : pause, stop);
    }
}

/// Calls once. @return how long the backend asked to be left alone; nothing if it did not
/// @param end  how the call before ended; becomes how this one does
std::optional<std::chrono::minutes> Call(const Scene& scene, int stop, CallEnd& end) {
    const auto noteHangUp = [&](const char* why) {
        scene.transcript.Note(std::string("hung up: ") + why);
        scene.weaknesses.HearOf(end);
    };
    try {
        Connection connection = Connect(scene, stop, end);
        end = CallEnd();
        connection.LimitFrames(FromSeconds(scene.options.timeout));
        connection.Decoder().Limit(kMostTextBytes);
        return Play(scene, std::move(connection), &end).absence;
    } catch (const Failure& failure) {
        if (failure.Status() == ExitStatus::Unusable) {
            throw;
        }
        noteHangUp(failure.what());
    } catch (const std::system_error& error) {  // of the network
        noteHangUp(error.what());
    }
    return std::nullopt;
}

}  // namespace

void PlayAll(const Scene& scene) {
    int calls = scene.habits.callsAgain;
    for (;;) {
        const Sequel sequel = Play(scene, Connection::Open(scene.endpoint, FromSeconds(scene.options.wait)));
        if (sequel.reconnects) {
            scene.transcript.Note("connecting again, as told");
        } else if (sequel.absence && calls-- > 0) {
            scene.transcript.Note(fmt::format("calling again in {} min", sequel.absence->count()));
            std::this_thread::sleep_for(*sequel.absence);
        } else {
            return;
        }
    }
}

void CallForEver(const Scene& scene) {
    Interrupts interrupts;
    scene.weaknesses.Attach(scene.transcript, interrupts.Number());
    CallEnd end;
    try {
        while (!IsOutputLost()) {
            const auto absence = Call(scene, interrupts.Number(), end).value_or(std::chrono::minutes(0));
            if (scene.weaknesses.HaveGivenUp()) {
                Pause(kForEver, interrupts.Number());
            }
            if (absence.count() > 0) {
                scene.transcript.Note(fmt::format("calling again in {} min", absence.count()));
            }
            Pause(std::max<Milliseconds>(absence, kPauseBetweenCalls), interrupts.Number());
        }
    } catch (const Interrupted&) {
        interrupts.Came();
        scene.transcript.Note("ended by " + interrupts.Words());
    }
}

}  // namespace rig::dvr
