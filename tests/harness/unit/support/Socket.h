#pragma once

#include <cstdint>
#include <string>

#include "tests/harness/unit/support/Journal.h"

/// The DVR's end of the connection and the rest of the world, as the protocol objects see it. read, write,
/// usleep, sleep, system and TiXmlDocument::SaveFile are replaced at link time by recorders that keep a
/// journal and give scripted results. read and write on descriptors other than kSocket are the system's own.

constexpr int kSocket = 71;

/// @name What the harness will read from kSocket, in the order fed. A read gets at most what is left of one
/// piece. A read without anything fed throws std::logic_error.
/// @{
void Feed(const std::string& text);        // one frame: the prefix of the text's size, then the text
void FeedBytes(const std::string& bytes);  // one piece, as it is
void FeedError(int error);                 // read returns -1 and sets errno
void FeedEnd();                            // read returns 0
/// @}

/// @name Results of single calls to come, in order. Without them a write takes all, a command returns 0 and
/// saving succeeds.
/// @{
void NextWriteTakes(long count);
void NextWriteSucceeds();
void NextWriteFails(int error);
void NextSystemReturns(int status);
void NextSaveFails();
/// @}

/// Forgets everything that was fed and scripted.
void ResetSocket();
/// @return what was fed or scripted but not used, in words; empty if nothing
std::string UnusedScript();

/// @return the prefix that announces a size
std::string Prefix(std::uint32_t size);

/// What reading a frame leaves in the journal when it was given to Feed.
Entries Received(const std::string& text);
/// What writing a frame leaves in the journal.
Entries Sent(const std::string& text);
/// The same with `sizeError`.
Entries SentWithSizeError(const std::string& text);
