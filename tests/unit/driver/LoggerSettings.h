#pragma once

#include <string>

#include "support/Journal.h"

/// The platform logger as the driver sets it up: its settings leave lines in the journal. Every log line
/// spoils errno, as a logger that opens or writes something may.

Entry NamedTheProcess(const std::string& name);
Entry SetTheLevelMask(unsigned int mask);
