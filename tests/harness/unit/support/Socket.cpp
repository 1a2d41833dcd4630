#include "tests/harness/unit/support/Socket.h"

#include <tinyxml.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <stdexcept>

namespace {

struct WriteResult {
    long value;
    int error = 0;
};

struct Piece {
    std::string bytes;
    int error = 0;  // 0 and no bytes: end of stream
};

constexpr long kAll = -2;

struct Traffic {
    std::deque<Piece> pieces;
    std::deque<WriteResult> writes;
    std::deque<int> commands;
    std::size_t failingSaves = 0;
};

Traffic& TheTraffic() {
    static Traffic traffic;
    return traffic;
}

std::vector<Entry> SentAnnouncing(std::uint32_t announced, const std::string& text) {
    const std::string prefix = Prefix(announced);
    std::vector<Entry> entries;
    for (std::size_t index = 0; index < prefix.size(); ++index) {
        char hex[3];
        snprintf(hex, sizeof hex, "%x", static_cast<unsigned char>(prefix[index]));
        entries.push_back(Logged(64, "hdr[" + std::to_string(index) + "]= " + hex));
    }
    entries.push_back(Wrote(prefix));
    entries.push_back(Wrote(text));
    return entries;
}

}  // namespace

void Feed(const std::string& text) {
    FeedBytes(Prefix(static_cast<std::uint32_t>(text.size())));
    FeedBytes(text);
}

void FeedBytes(const std::string& bytes) {
    if (not bytes.empty()) {
        TheTraffic().pieces.push_back({bytes});
    }
}

void FeedError(int error) {
    TheTraffic().pieces.push_back({"", error});
}

void FeedEnd() {
    TheTraffic().pieces.push_back({""});
}

void NextWriteTakes(long count) {
    TheTraffic().writes.push_back({count});
}

void NextWriteSucceeds() {
    NextWriteTakes(kAll);
}

void NextWriteFails(int error) {
    TheTraffic().writes.push_back({-1, error});
}

void NextSystemReturns(int status) {
    TheTraffic().commands.push_back(status);
}

void NextSaveFails() {
    ++TheTraffic().failingSaves;
}

void ResetSocket() {
    TheTraffic() = Traffic();
}

std::string UnusedScript() {
    const Traffic& traffic = TheTraffic();
    std::string unused;
    for (const Piece& piece : traffic.pieces) {
        unused += "to read: '" + Shown(piece.bytes) + "' error " + std::to_string(piece.error) + "\n";
    }
    if (not traffic.writes.empty() or not traffic.commands.empty() or traffic.failingSaves not_eq 0) {
        unused += "results of writes, commands or saves\n";
    }
    return unused;
}

std::string Prefix(std::uint32_t size) {
    std::string prefix;
    for (std::uint32_t rest = size; prefix.empty() or rest not_eq 0; rest /= 128) {
        prefix += static_cast<char>(rest % 128 + (rest >= 128 ? 128 : 0));
    }
    return prefix;
}

Entries Received(const std::string& text) {
    const std::string size = std::to_string(text.size());
    std::vector<Entry> entries(Prefix(static_cast<std::uint32_t>(text.size())).size(), Read(1, 1));
    entries.push_back(Logged(1, "expecting a message of " + size + " bytes"));
    if (not text.empty()) {
        entries.push_back(Read(text.size(), text.size()));
        entries.push_back(Paused(250000));
    }
    entries.push_back(Logged(1, "read success:" + size));
    const std::size_t step = std::min<std::size_t>(text.size(), 800);
    std::size_t first = 0;
    do {
        const std::string range = std::to_string(first + 1) + " to " + std::to_string(first + step);
        entries.push_back(
            Logged(32, "GetMessage:incoming message, bytes " + range + ":" + std::string(text, first, step)));
        first += 800;
    } while (first < text.size());
    return entries;
}

Entries Sent(const std::string& text) {
    return SentAnnouncing(static_cast<std::uint32_t>(text.size()), text);
}

Entries SentWithSizeError(const std::string& text) {
    const auto announced = static_cast<std::uint32_t>(text.size() * 3 / 2);
    std::vector<Entry> entries = SentAnnouncing(announced, text);
    entries.push_back(Logged(8, "sent: size= " + std::to_string(Prefix(announced).size()) + "/" +
                                    std::to_string(announced) + "/" + std::to_string(text.size()) + "  '" +
                                    text + "'"));
    return entries;
}

extern "C" {

ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
ssize_t __real_write(int descriptor, const void* bytes, std::size_t size);
bool __real__ZNK13TiXmlDocument8SaveFileEPKc(const TiXmlDocument* document, const char* path);

ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
    if (descriptor not_eq kSocket) {
        return __real_read(descriptor, buffer, size);
    }
    std::deque<Piece>& pieces = TheTraffic().pieces;
    if (pieces.empty()) {
        AddToJournal("read " + std::to_string(size) + ": nothing was fed");
        throw std::logic_error("read with nothing fed");
    }
    Piece& piece = pieces.front();
    if (piece.error not_eq 0) {
        AddToJournal(ReadFailed(size, piece.error).text);
        const int error = piece.error;
        pieces.pop_front();
        errno = error;
        return -1;
    }
    const std::size_t count = std::min(size, piece.bytes.size());
    memcpy(buffer, piece.bytes.data(), count);
    piece.bytes.erase(0, count);
    if (piece.bytes.empty()) {
        pieces.pop_front();
    }
    AddToJournal(Read(size, count).text);
    return static_cast<ssize_t>(count);
}

ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t size) {
    if (descriptor not_eq kSocket) {
        return __real_write(descriptor, bytes, size);
    }
    std::deque<WriteResult>& writes = TheTraffic().writes;
    WriteResult result = {kAll};
    if (not writes.empty()) {
        result = writes.front();
        writes.pop_front();
    }
    if (result.value == kAll) {
        result.value = static_cast<long>(size);
    }
    AddToJournal(WroteOnly(std::string(static_cast<const char*>(bytes), size), result.value).text);
    if (result.value == -1) {
        errno = result.error;
    }
    return result.value;
}

int __wrap_usleep(useconds_t microseconds) {
    AddToJournal(Paused(microseconds).text);
    return 0;
}

unsigned int __wrap_sleep(unsigned int seconds) {
    AddToJournal(Slept(seconds).text);
    return 0;
}

int __wrap_system(const char* command) {
    AddToJournal(Ran(command).text);
    std::deque<int>& commands = TheTraffic().commands;
    if (commands.empty()) {
        return 0;
    }
    const int status = commands.front();
    commands.pop_front();
    return status;
}

/// TiXmlDocument::SaveFile(const char*) const
bool __wrap__ZNK13TiXmlDocument8SaveFileEPKc(const TiXmlDocument* document, const char* path) {
    char* bytes = nullptr;
    std::size_t size = 0;
    FILE* const file = open_memstream(&bytes, &size);
    document->SaveFile(file);
    fclose(file);
    AddToJournal(Saved(path, std::string(bytes, size)).text);
    free(bytes);
    std::size_t& failing = TheTraffic().failingSaves;
    if (failing == 0) {
        return true;
    }
    --failing;
    return false;
}
}
