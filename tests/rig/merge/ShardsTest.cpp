#include "tests/rig/merge/MadeUp.h"
