#pragma once

#include <functional>

#include "tests/support/Dialogue.h"

enum class Wait { kFirstDvr, kMessage, kRestOfPrefix, kRestOfText, kPauseBeforeClosing, kNextDvr };

/// A test in which the same happens during each wait of the harness.
class EachWait : public Dialect10 {
 protected:
    /// An export and the beginning of the next one, as if nothing happened.
    void Survives(const std::function<void(Wait)>& event);
};
