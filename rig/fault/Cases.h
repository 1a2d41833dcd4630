#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rig/fault/Fault.h"

namespace rig::fault {

/// A fault at one message of one dialect, with one of its values.
struct FaultCase {
    const Fault* fault;
    std::string value;    // empty if the fault takes none
    std::string message;  // of the harness, or CALL
    int dialect;

    /// @return what names the case for ever: "stall-in-text=3000@GET_FILE-2.0"
    std::string Id() const;

    /// @return the same as --fault takes it: "stall-in-text=3000"
    std::string Named() const;

    /// @return what the backend does, in a sentence
    std::string Sentence() const;
};

/// @return every case, in the order of the faults
const std::vector<FaultCase>& Cases();

/// @param selection  "all"; "quick", one case of each fault; or groups of faults, names of faults and ids of
///                   cases, separated by commas
/// @param dialect    whose cases alone to take: 1, 2, or 0 for both
/// @return the cases, each once, in the order of the faults, and then those with numbers of the user's own.
/// Throws std::runtime_error for a name that nothing has.
std::vector<FaultCase> Choose(const std::string& selection, int dialect = 0);

/// @return the case of that id, also with a number for a value that no case has; nothing if there is none
std::optional<FaultCase> CaseNamed(const std::string& id);

}  // namespace rig::fault
