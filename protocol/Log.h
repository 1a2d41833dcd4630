#pragma once

#include "LogClient.h"
#include "SysLogMsg.h"

/// Starts a log statement; the text is streamed into it: VEL_LOG(16) << "Sending DONE";
///
/// Nothing of the statement is evaluated while the level's bit is off in the mask. Every line starts with
/// "velloran:", whichever source it comes from, and the statement's own line number; rigs cut their logs at
/// that word.
///
/// Levels: 1 errors and the main trace of each exchange, 2 warnings, 4 nothing to do, 8 size-error trace,
/// 16 milestones of the dialogue, 32 switches, incoming messages and faults, 64 fine trace.
#define VEL_LOG(level)                                      \
    if (not(LogClient::Instance()->Level() & (level))) {    \
    } else /* NOLINT(readability-misleading-indentation) */ \
        SysLogMsg().Log((level), LogClient::Instance()->ProcessName()) << "velloran:" << __LINE__ << " "
