#pragma once

#include <string>

#include "tests/support/Harness.h"

/// The state of the process as the kernel names it: 'R' runs, 'S' waits, 'T' is stopped.
char StateOf(const Harness& harness);

/// Whether the process handles the signal, or takes the default.
bool Handles(const Process& process, int signal);

/// Stops the process in its tracks and waits until it stands still. SIGCONT lets it go on.
void StandsStill(Harness& harness, Here here = Here::current());
