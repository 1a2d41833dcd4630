#pragma once

#include "tests/support/Dialogue.h"

/// A dialogue whose log goes into a small pipe that is read only where a step takes lines from it.
class SmallPipe : public Dialect10 {
 protected:
    ~SmallPipe() override;

    /// Connects, and makes the pipe as small as the kernel allows.
    void ConnectWithASmallPipe();

    /// The DVR sends a message that makes more lines than the pipe holds, and the pipe is full.
    void IsFilled(Here here = Here::current());

    /// Takes the lines of that message.
    void LogsWhatFilledIt(Here here = Here::current());

 private:
    static std::string LongMessage();

    int writeEnd_ = -1;  // a copy of the harness's standard output
};
