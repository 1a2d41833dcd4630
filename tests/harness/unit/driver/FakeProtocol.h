#pragma once

#include "protocol/VelProtocolBase.h"
#include "tests/harness/unit/support/Journal.h"

/// Protocol objects that handle no message: HandleMessage of both dialects adds a line to the journal and
/// returns what was scripted. Without a script it ends the process with a line that says so.
void NextHandleMessageReturns(int result);

/// Forgets everything that was scripted.
void ResetProtocol();

/// The line of one HandleMessage.
/// @param options  what the object was made with; options.protocol is its dialect
/// @param socket   what the object takes for its socket
/// @param message  how many messages the same object has handled, this one included
Entry Handled(const TestOptions& options, int socket, int message = 1);
