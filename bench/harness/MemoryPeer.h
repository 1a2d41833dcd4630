#pragma once

#include <string>

/// The other end of kMemorySocket. What it is told to send, read gives whole; what is written to it vanishes.
/// usleep, sleep, system and saving do nothing.
constexpr int kMemorySocket = 1 << 20;

/// @param frame  a whole frame; what was not read of the last one is forgotten
void PeerSends(const std::string& frame);

/// @return the frame of a text
std::string Framed(const std::string& text);
