#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "rig/dvr/Frame.h"
#include "rig/dvr/Transcript.h"

namespace rig {

/// Looks at each frame of the harness more closely than a DVR would: is the prefix the text's length in its
/// shortest form, the text one document and nothing else, printed compactly, and do the attributes stand in
/// the order that the protocol gives.
class WireCheck {
 public:
    /// @param dialect   1 or 2
    /// @param tolerant  what is wrong is noted and counted, and does not end the dialogue
    WireCheck(int dialect, bool tolerant);

    /// Takes the next frame. What is wrong with it ("expected ..., found ...") is noted where this check is
    /// tolerant, and a wrong announced length in any case: the decoder only hands out such a text when it was
    /// told to. Throws Failure (ProtocolBroken) else.
    void Inspect(const ReceivedFrame& frame, const std::string& text, Transcript& transcript);

    /// @return how many frames were looked at, for people
    std::string Summary() const;

 private:
    int dialect_;
    bool tolerant_;
    std::size_t frames_ = 0;
    std::size_t wrong_ = 0;
};

/// @return what is wrong with the frame, each as "expected ..., found ...": a wrong announced length, and
/// then the first of all other faults
std::vector<std::string> FindWireFaults(const ReceivedFrame& frame, const std::string& text, int dialect);

}  // namespace rig
