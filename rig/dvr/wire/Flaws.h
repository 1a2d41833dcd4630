#pragma once

#include <cstddef>

namespace rig::dvr {

/// What a weak recorder does wrong with the bytes that come.
enum class Flaw {
    TwoBytePrefix,   // takes the second byte of a prefix for its last
    EndlessPrefix,   // does not end a prefix after its fifth byte
    SignedLength,    // takes a length for a signed number
    TrustsLength,    // provides for as much as is announced
    TakesPiece,      // takes the first piece of a text for all of it
    ShortQueue,      // has room for few messages of one piece
    Impatient,       // gives a message a second
    NoFrameTimeout,  // waits for the rest of a message for ever
    MissesEnd,       // does not see that the connection ends inside a message
};

/// The flaws of one recorder.
class Flaws {
 public:
    virtual ~Flaws() = default;

    /// To be called where a flaw would act. It is noted if it does; some end the process, and some wait until
    /// the run is interrupted.
    /// @param measure  of what came; a flaw that has a limit acts above it
    /// @return whether it does
    virtual bool Show(Flaw flaw, std::size_t measure) = 0;
};

}  // namespace rig::dvr
