// Stands in for the system's header when the harness is compiled for fuzzing: a failed assertion throws, so
// that the run is unwound cleanly and the next can follow in the same process.
#include "world/Ends.h"

#undef assert
#define assert(expression) (static_cast<bool>(expression) ? void(0) : fuzz::AssertionFailed(#expression))
