#pragma once

#include <string>

#include "tests/harness/unit/support/Journal.h"

/// The platform logger as the driver sets it up: its settings add lines to the journal. Every log line
/// changes errno, as a logger that opens or writes something may.

Entry NamedTheProcess(const std::string& name);
Entry SetTheLevelMask(unsigned int mask);
