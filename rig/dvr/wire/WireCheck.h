#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "rig/dvr/wire/Frame.h"
#include "rig/dvr/wire/Transcript.h"

namespace rig::dvr {

/// Looks at each frame of the harness more closely than a DVR would: is the prefix the text's length in its
/// shortest form, is the text one document and nothing else, printed compactly, and are the attributes in the
/// protocol's order?
class WireCheck {
 public:
    /// @param dialect   1 or 2
    /// @param tolerant  faults are noted and counted, and do not end the dialogue
    WireCheck(int dialect, bool tolerant);

    /// Checks the next frame. Notes what is wrong with it ("expected ..., found ...") if this check is
    /// tolerant, and a wrong length in any case: the decoder hands out such a text only when told to.
    /// Otherwise throws Failure (ProtocolBroken).
    void Inspect(const ReceivedFrame& frame, const std::string& text, Transcript& transcript);

    /// @return how many frames were checked, for people
    std::string Summary() const;

 private:
    int dialect_;
    bool tolerant_;
    std::size_t frames_ = 0;
    std::size_t wrong_ = 0;
};

/// @return what is wrong with the frame, each as "expected ..., found ...": a wrong length, then the first of
/// all other faults
std::vector<std::string> FindWireFaults(const ReceivedFrame& frame, const std::string& text, int dialect);

}  // namespace rig::dvr
