#include "rig/judge/delivery/Comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <exception>

#include "rig/base/OptionChecks.h"
#include "rig/base/Printable.h"

namespace rig::judge {
namespace {

void CompareLength(const std::string& words, const Transfer& transfer, const DeliveredFile& file,
                   DeliveryFacts& facts) {
    if (!transfer.length) {
        return;
    }
    facts.lengths.Add(words);
    const auto length = ParseNumber<std::uint64_t>(*transfer.length);
    if (!length) {
        facts.notLength.Add(fmt::format("{}: announced {}", words, Excerpt(*transfer.length)),
                            transfer.evidence);
    } else if (*length != file.stamp.size) {
        facts.otherLength.Add(
            fmt::format("{}: announced {}, found {} bytes", words, *length, file.stamp.size),
            transfer.evidence);
    }
}

/// @return ", which is that of Event2/Front.ts"; empty if the hash is no other file's
std::string OwnerOf(const std::string& hash, const Announced& announced) {
    const auto owner = announced.find(hash);
    return owner == announced.end() ? "" : ", which is that of " + owner->second;
}

void CompareHash(const DeliveryPlace& place, const std::string& words, const Transfer& transfer,
                 const DeliveredFile& file, const Announced& announced, DeliveryFacts& facts) {
    const std::string expected = InLowerCase(transfer.hash.value_or(""));
    if (expected.empty()) {
        return;
    }
    (transfer.isNewHash ? facts.newHashes : facts.hashes).Add(words);
    const auto kind = HashKindOf(expected);
    if (!kind || (place.hash && kind != place.hash)) {
        Files& strange = place.hash ? facts.notHash : facts.unknownHash;
        strange.Add(fmt::format("{}: announced {}", words, Excerpt(*transfer.hash)), transfer.evidence);
        return;
    }
    const std::string found = HashOf(place, file, *kind);
    if (found != expected) {
        (transfer.isNewHash ? facts.otherNewHash : facts.otherHash)
            .Add(fmt::format("{}: announced {} {}, found {}{}", words, NameOf(*kind), expected, found,
                             OwnerOf(found, announced)),
                 transfer.evidence);
    }
}

}  // namespace

std::string WordsOf(const FileName& name) {
    return Printable(name.first) + "/" + Printable(name.second);
}

std::string InLowerCase(std::string hash) {
    std::transform(hash.begin(), hash.end(), hash.begin(),
                   [](unsigned char digit) { return static_cast<char>(std::tolower(digit)); });
    return hash;
}

void Compare(const DeliveryPlace& place, const FileName& name, const Transfer& transfer,
             const DeliveredFile& file, const Announced& announced, DeliveryFacts& facts) try {
    const std::string words = WordsOf(name);
    if (file.stamp.size == 0 && !transfer.length && transfer.hash.value_or("").empty()) {
        facts.empty.Add(words, transfer.evidence);
    }
    CompareLength(words, transfer, file, facts);
    CompareHash(place, words, transfer, file, announced, facts);
} catch (const std::exception& error) {
    facts.noAccess.Add(WordsOf(name) + ": " + error.what(), transfer.evidence);
}

}  // namespace rig::judge
