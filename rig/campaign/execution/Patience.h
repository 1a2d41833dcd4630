#pragma once

namespace rig::campaign {

/// How long to wait for each thing, in seconds.
struct Patience {
    double connect = 60;  // for the DVR's connection
    double idle = 30;     // for the next line of the log
    double whole = 600;   // for the end of the case
    double answer = 3;    // for the answer to a request, as the judge counts it
};

}  // namespace rig::campaign
