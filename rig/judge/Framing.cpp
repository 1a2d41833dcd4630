#include "rig/judge/Framing.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <vector>

#include "rig/base/Affix.h"
#include "rig/base/Printable.h"
#include "rig/log/Xml.h"

namespace rig::judge {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kFirstOfText = '<';
constexpr unsigned char kGoesOn = 0x80;          // another byte of the prefix follows
constexpr std::size_t kLongestHeader = 8;        // bytes, of a length in some other notation
constexpr std::uint64_t kLongestSeen = 1 << 24;  // bytes; a longer message is not believed
constexpr std::size_t kShortest = sizeof("<msg req='OK'/>") - 1;
constexpr std::size_t kShownEnd = 60;  // bytes of a text

Bytes PrefixOf(std::uint32_t size) {
    Bytes prefix;
    for (; size >= kGoesOn; size >>= 7) {
        prefix.push_back(static_cast<unsigned char>(size | kGoesOn));
    }
    prefix.push_back(static_cast<unsigned char>(size));
    return prefix;
}

std::string Hex(const Bytes& bytes) {
    std::string hex;
    for (const unsigned char byte : bytes) {
        hex += fmt::format("{}{:02x}", hex.empty() ? "" : " ", byte);
    }
    return hex;
}

std::string Received(const Bytes& prefix, std::int64_t announced) {
    return fmt::format("prefix {}, which announces {} bytes", Hex(prefix), announced);
}

std::string Right(std::uint64_t size) {
    return fmt::format("right for {} bytes is {}", size, PrefixFor(static_cast<std::uint32_t>(size)));
}

/// @return the number that the prefix's groups of 7 bits make if the highest comes first
std::uint32_t HighestFirst(const Bytes& prefix) {
    std::uint32_t number = 0;
    for (const unsigned char byte : prefix) {
        number = number << 7 | (byte & 0x7fU);
    }
    return number;
}

/// @return a number that ends before the text in bytes of 8 bits, if it can be the text's length
std::optional<std::uint64_t> InWholeBytes(Bytes bytes, bool isLowestFirst) {
    if (isLowestFirst) {
        std::reverse(bytes.begin(), bytes.end());
    }
    std::uint64_t number = 0;
    for (const unsigned char byte : bytes) {
        number = number << 8 | byte;
    }
    return number >= kShortest && number <= kLongestSeen ? std::optional(number) : std::nullopt;
}

std::optional<std::uint64_t> InDigits(const Bytes& bytes) {
    std::uint64_t number = 0;
    std::size_t digits = 0;
    for (; digits < bytes.size() && bytes[digits] >= '0' && bytes[digits] <= '9'; ++digits) {
        number = number * 10 + (bytes[digits] - '0');
    }
    const bool isRestBlank =
        std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(digits), bytes.end(),
                    [](unsigned char byte) { return byte == '\r' || byte == '\n' || byte == ' '; });
    return digits > 0 && isRestBlank ? std::optional(number) : std::nullopt;
}

/// @return the length that the bytes give in some notation other than ours, if it is this one; any for 0
std::optional<std::uint64_t> InSomeNotation(const Bytes& bytes, std::uint64_t size) {
    for (const bool isLowestFirst : {true, false}) {
        const auto number = InWholeBytes(bytes, isLowestFirst);
        if (number && (size == 0 || *number == size)) {
            return number;
        }
    }
    return std::nullopt;
}

/// @return the bytes as they really came, where the harness took two for a length that no message has: 8a 00
/// says 10 as 0a does, but with zeros after it is the start of 138 in bytes of 8 bits
Bytes AsSent(Bytes header) {
    const bool isRestZero =
        std::all_of(header.begin() + 1, header.end(), [](unsigned char byte) { return byte == 0; });
    if (header.front() < kShortest && isRestZero) {
        header.front() |= kGoesOn;
        header.push_back(0);
    }
    return header;
}

/// @return what else such bytes may mean; nothing if there is nothing else
std::string InUnmarkedBytes(Bytes header, bool isLowestFirst) {
    if (isLowestFirst) {
        std::reverse(header.begin(), header.end());
    }
    const bool hasMark =
        std::any_of(header.begin(), header.end(), [](unsigned char byte) { return byte >= kGoesOn; });
    return hasMark || header.front() == 0
               ? ""
               : "; or 7 bits in each, and none marked as going on: " + Right(HighestFirst(header));
}

/// Explains a length in another notation, of which the harness took the first bytes for the prefix.
FramingFault ExplainHeader(const Bytes& header) {
    const std::string sent = fmt::format("{} came before the text", Hex(header));
    if (const auto number = InDigits(header)) {
        return {fmt::format("{}, the length in digits; {}", sent, Right(*number)), true};
    }
    const auto lowestFirst = InWholeBytes(header, true);
    const auto highestFirst = InWholeBytes(header, false);
    const bool isLowestFirst = lowestFirst && (!highestFirst || *lowestFirst <= *highestFirst);
    if (const auto number = isLowestFirst ? lowestFirst : highestFirst) {  // of two, the one more likely
        return {fmt::format("{}, as if the length had {} bytes of 8 bits, {} first; {}{}", sent,
                            header.size(), isLowestFirst ? "lowest" : "highest", Right(*number),
                            InUnmarkedBytes(header, isLowestFirst)),
                true};
    }
    return {fmt::format("{}; right is the length alone, 7 bits in each byte, lowest first", sent), true};
}

/// @return the place of the document in the text; nothing if it has none near its start
std::optional<std::size_t> StartOf(std::string_view text) {
    const std::size_t start = std::min(text.find("<msg"), text.find("<?xml"));
    return start <= kLongestHeader ? std::optional(start) : std::nullopt;
}

/// @return what the text lacks, if that can only be the rest of its last tag
std::string RestOf(std::string_view text) {
    for (const char* const rest : {">", "g>", "sg>", "msg>", "/msg>", "</msg>"}) {
        if (!log::IsMalformed(std::string(text) + rest)) {
            return rest;
        }
    }
    return "";
}

std::size_t BytesBeyondCharacters(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xc0) == 0x80; }));
}

/// @return whether all is there, and only does not begin as XML must
bool IsDocumentAfterBlanks(std::string_view text, std::size_t start) {
    const bool isBlank = std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(start),
                                     [](unsigned char byte) { return std::isspace(byte) != 0; });
    return isBlank && !log::IsMalformed(std::string(text.substr(start)));
}

FramingFault ExplainEnd(const Bytes& prefix, std::string_view text) {
    const std::string received = Received(prefix, static_cast<std::int64_t>(text.size()));
    if (text.size() < kShortest) {
        return {received + ", fewer than any message has" +
                    (text.empty() ? "" : ": " + Printable(std::string(text))),
                false};
    }
    const std::string rest = RestOf(text);
    if (rest.empty()) {
        return {fmt::format("{}; {}", received, Where(text)), false};
    }
    const std::size_t whole = text.size() + rest.size();
    const bool countsCharacters = rest.size() == BytesBeyondCharacters(text);
    return {
        fmt::format("{}, {} too few if the text goes on: it breaks off before \"{}\"{}; {}", received,
                    rest.size(), rest,
                    countsCharacters ? ", as if characters were counted instead of bytes" : "", Right(whole)),
        countsCharacters};
}

/// Explains a prefix that takes in another message, with its prefix. @return nothing if it does not
std::optional<FramingFault> ExplainSecond(const Bytes& prefix, std::string_view text) {
    const auto fault = log::FaultIn(std::string(text));
    if (!fault) {
        return std::nullopt;
    }
    const std::size_t end = text.substr(0, fault->offset).rfind('>') + 1;
    const auto start = StartOf(text.substr(end));
    if (!start || *start == 0 || log::IsMalformed(std::string(text.substr(0, end)))) {
        return std::nullopt;
    }
    const std::string_view between = text.substr(end, *start);
    return FramingFault{fmt::format("{}: after {} of them {} comes, as a prefix, and another message; {}",
                                    Received(prefix, static_cast<std::int64_t>(text.size())), end,
                                    Hex(Bytes(between.begin(), between.end())), Right(end)),
                        true};
}

}  // namespace

std::string PrefixFor(std::uint32_t size) {
    return Hex(PrefixOf(size));
}

FramingFault ExplainMissing(std::int64_t announced, std::optional<std::int64_t> came) {
    const Bytes prefix = PrefixOf(static_cast<std::uint32_t>(announced));
    const std::string received = Received(prefix, announced);
    const std::string sent = came ? fmt::format("; {} came", *came) : "; they did not come";
    if (prefix.back() == kFirstOfText) {
        const Bytes meant(prefix.begin(), prefix.end() - 1);
        const auto size = InSomeNotation(meant, came ? static_cast<std::uint64_t>(*came) + 1 : 0);
        if (size) {
            return {
                fmt::format("{}{}: its last byte, 3c, {} the \"<\" that a text begins with, so that {} was "
                            "meant as the length; {}",
                            received, sent, came ? "is" : "may be", Hex(meant), Right(*size)),
                came.has_value()};
        }
    }
    if (!came) {
        return {received + sent, false};
    }
    const auto size = static_cast<std::uint64_t>(*came);
    if (HighestFirst(prefix) == size) {
        return {fmt::format("{}{}: that many it announces if the highest 7 bits come first; {}", received,
                            sent, Right(size)),
                true};
    }
    if (size + PrefixOf(static_cast<std::uint32_t>(size)).size() == static_cast<std::uint64_t>(announced)) {
        return {fmt::format("{}{}: as if it counted itself; {}", received, sent, Right(size)), false};
    }
    return {received + sent +
                (size == 0 ? ""
                           : fmt::format("; for {} it would be {}", size,
                                         PrefixFor(static_cast<std::uint32_t>(size)))),
            false};
}

FramingFault ExplainText(std::string_view text) {
    const Bytes prefix = PrefixOf(static_cast<std::uint32_t>(text.size()));
    if (prefix.front() == kFirstOfText && (StartsWith(text, "msg ") || StartsWith(text, "?xml "))) {
        return {
            fmt::format("no prefix came: the text's first byte, 3c, was taken for one, and the text is {}",
                        Excerpt(std::string(text), kShownEnd)),
            true};
    }
    const auto start = StartOf(text);
    if (start && *start > 0 && !IsDocumentAfterBlanks(text, *start)) {
        Bytes header = prefix;
        header.insert(header.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(*start));
        return ExplainHeader(AsSent(header));
    }
    const auto second = ExplainSecond(prefix, text);
    return second ? *second : ExplainEnd(prefix, text);
}

std::string Where(std::string_view text) {
    const auto fault = log::FaultIn(std::string(text));
    if (!fault) {
        return "the harness's parser alone refuses it: " + Excerpt(std::string(text), kShownEnd);
    }
    const std::size_t start = fault->offset - std::min(fault->offset, kShownEnd / 2);
    const std::string_view part = text.substr(start, kShownEnd);
    return fmt::format("{} at byte {}: {}{}{}", fault->words, fault->offset + 1, start == 0 ? "" : "...",
                       Printable(std::string(part)), start + part.size() < text.size() ? "..." : "");
}

}  // namespace rig::judge
