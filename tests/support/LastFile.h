#pragma once

#include "tests/support/Dialogue.h"

/// An export of the event EVENT1 with the files meta.xml and video1, where the first has been delivered and
/// the last is next: that is where the faults of files act.
class FaultsOfTheLastFile : public Dialect20 {
 protected:
    /// Goes there. The test then handles the last file.
    void ReachLastFile(const std::vector<std::string>& switches, const Launch& launch = {});

    /// The last file is requested without a fault; with rehash="true" or not.
    void RequestsTheLastFile(bool rehash = false, Here here = Here::current());

    /// The last file is delivered, which completes the event.
    void CompletesTheLastFile(Here here = Here::current());

    /// A second event is exported as if there were no faults, and the dialogue ends.
    void ExportsASecondEventWithoutAFault(Here here = Here::current());
};
