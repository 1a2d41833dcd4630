#pragma once

#include <map>
#include <string>

#include "rig/judge/delivery/DeliveredFile.h"
#include "rig/judge/delivery/DeliveryFacts.h"

namespace rig::judge {

/// The files of all runs, in words, by the hash that was announced for them, in lower case.
using Announced = std::map<std::string, std::string>;

/// @return the file in words: "Event1/Front.ts"
std::string WordsOf(const FileName& name);

/// @return the hash in lower case
std::string InLowerCase(std::string hash);

/// Holds a file against what FILE_COMPLETE announced of it.
void Compare(const DeliveryPlace& place, const FileName& name, const Transfer& transfer,
             const DeliveredFile& file, const Announced& announced, DeliveryFacts& facts);

}  // namespace rig::judge
