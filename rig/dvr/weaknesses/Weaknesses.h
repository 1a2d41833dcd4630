#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "rig/dvr/weaknesses/Weakness.h"
#include "rig/dvr/wire/Transcript.h"

namespace rig::dvr {

/// The weaknesses of one recorder. Each function is called in its place, and does what the first weakness
/// that shows there does: notes it and ends the process, waits until the run is interrupted, throws Breach to
/// hang up, or returns what the recorder does.
class Weaknesses : public Flaws {
 public:
    explicit Weaknesses(int dialect) : dialect_(dialect) {}

    /// Adds the weakness of that name, with its limit if there is one ("NAME=LIMIT"), or for "all" each of
    /// the dialect. Throws Failure (Unusable) if there is none in the dialect, or no such limit.
    void Add(const std::string& option);

    /// To be called before any other function but Add and AreNone.
    /// @param transcript  must outlive this object
    /// @param stop        readable when the run is to end
    void Attach(Transcript& transcript, int stop);

    bool AreNone() const { return weaknesses_.empty(); }

    bool Show(Flaw flaw, std::size_t measure) override;

    /// A text or a message has come. @return whether the recorder ignores it
    bool Ignore(const std::string& text);
    bool Ignore(const Message& message);

    /// A good recorder refuses this. @return the answer of this one if it does not
    std::optional<Message> Answer(const Message& request, const Recordings& recordings);

    /// A call has ended without DONE.
    void HearOf(const CallEnd& end);

    /// @return whether the recorder calls no more
    bool HaveGivenUp() const { return gaveUp_; }

 private:
    struct Weakness {
        const WeaknessKind* kind;
        std::size_t limit;
        std::size_t count = 0;  // how often it could show
    };

    void Adopt(const WeaknessKind& kind, const std::string& option);
    bool React(const WeaknessKind& kind);
    void Note(const WeaknessKind& kind);

    int dialect_;
    std::vector<Weakness> weaknesses_;
    Transcript* transcript_ = nullptr;
    int stop_ = -1;
    bool gaveUp_ = false;
};

}  // namespace rig::dvr
