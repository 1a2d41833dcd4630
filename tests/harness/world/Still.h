#pragma once

#include <string>

#include "tests/support/Harness.h"

/// The state of the process as the kernel names it: 'R' runs, 'S' waits, 'T' is stopped.
char StateOf(const Harness& harness);

/// Whether the process handles the signal, or takes the default.
bool Handles(const Process& process, int signal);

/// Suspends the process and waits until it has stopped. SIGCONT lets it go on.
void StandsStill(Harness& harness, Here here = Here::current());
