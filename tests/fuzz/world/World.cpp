#include "tests/fuzz/world/World.h"

#include <sys/socket.h>
#include <tinyxml.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <deque>

#include "LogClient.h"
#include "tests/fuzz/Demand.h"
#include "tests/fuzz/world/Ends.h"

namespace fuzz {

struct World::State {
    struct Piece {
        std::string bytes;
        int error;
    };
    struct Line {
        unsigned int level;
        std::string text;
    };
    struct Limit {
        std::size_t write;
        long taken;
        int error;
    };

    std::deque<Piece> pieces;
    std::vector<std::string> writes;
    std::vector<Limit> limits;
    std::size_t writeCount = 0;
    std::vector<Line> lines;
    bool isPauseDue = false;  // a message's text came: 250 ms must follow
    int closedReads = 0;      // of a closed connection, in a row
    int linesWithoutReid = 0;
};

namespace {

World::State* g_world = nullptr;

constexpr int kReadsForEver = 3;

ssize_t ReadPiece(World::State& world, char* buffer, std::size_t size) {
    if (world.pieces.empty()) {
        if (++world.closedReads == kReadsForEver) {
            WouldNotEnd("reads a closed connection for ever");
        }
        return 0;
    }
    World::State::Piece& piece = world.pieces.front();
    if (piece.error != 0) {
        errno = piece.error;
        world.pieces.pop_front();
        return -1;
    }
    const std::size_t count = std::min(size, piece.bytes.size());
    memcpy(buffer, piece.bytes.data(), count);
    piece.bytes.erase(0, count);
    if (piece.bytes.empty()) {
        world.pieces.pop_front();
    }
    return static_cast<ssize_t>(count);
}

ssize_t TakeWrite(World::State& world, const std::string& bytes) {
    const std::size_t number = world.writeCount++;
    for (const World::State::Limit& limit : world.limits) {
        if (limit.write == number && limit.taken < static_cast<long>(bytes.size())) {
            errno = limit.error;
            return limit.taken;
        }
    }
    world.writes.push_back(bytes);
    return static_cast<ssize_t>(bytes.size());
}

bool IsPrintable(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte != 0x7f;
}

/// One write is one line, "TIMESTAMP velloran LEVEL velloran:N TEXT", without any byte that could split it in
/// two.
void TakeLogLine(World::State& world, const std::string& line) {
    constexpr std::size_t kTimestamp = 27;
    const std::string name = " velloran ";
    Demand(line.size() > kTimestamp + name.size() && line.compare(kTimestamp, name.size(), name) == 0 &&
               line.back() == '\n' && std::all_of(line.begin(), line.end() - 1, IsPrintable),
           "a log line, found '" + line + "'");
    char* end = nullptr;
    const auto level = strtoul(line.c_str() + kTimestamp + name.size(), &end, 10);
    Demand(strncmp(end, " velloran:", 10) == 0 && (level & (level - 1)) == 0 && level >= 1 && level <= 64,
           "a level and velloran:N, found '" + line + "'");
    strtoul(end + 10, &end, 10);
    Demand(*end == ' ', "a line number, found '" + line + "'");
    const std::string text(end + 1, line.size() - static_cast<std::size_t>(end + 1 - line.c_str()) - 1);
    world.linesWithoutReid = text == "Found event with no REID" ? world.linesWithoutReid + 1 : 0;
    world.lines.push_back({static_cast<unsigned int>(level), text});
}

}  // namespace

World::World() : state_(new State) {
    LogClient::Instance()->ProcessName("velloran");
    LogClient::Instance()->Level(127);
    g_world = state_;
}

World::~World() {
    g_world = nullptr;
    delete state_;
}

void World::Feed(const std::string& bytes) {
    state_->closedReads = 0;
    if (!bytes.empty()) {
        state_->pieces.push_back({bytes, 0});
    }
}

void World::FeedError(int error) {
    state_->pieces.push_back({"", error});
}

std::size_t World::Unread() const {
    std::size_t unread = 0;
    for (const State::Piece& piece : state_->pieces) {
        unread += piece.bytes.size();
    }
    return unread;
}

void World::LimitWrite(std::size_t writesFromNow, long taken, int error) {
    state_->limits.push_back({state_->writeCount + writesFromNow, taken, error});
}

std::vector<std::string> World::TakeWrites() {
    std::vector<std::string> writes;
    writes.swap(state_->writes);
    return writes;
}

std::vector<std::string> World::TakeLog(unsigned int level) {
    std::vector<std::string> texts;
    for (const State::Line& line : state_->lines) {
        if (line.level == level) {
            texts.push_back(line.text);
        }
    }
    state_->lines.clear();
    return texts;
}

std::int64_t Announced(const std::string& prefix) {
    std::int64_t length = 0;
    for (std::size_t index = 0; index < 5 && index < prefix.size(); ++index) {
        const auto byte = static_cast<unsigned char>(prefix[index]);
        length += static_cast<std::int64_t>(byte % 128) << (7 * index);
        if (byte < 128) {
            return length & 0xffffffff;
        }
    }
    return -1;
}

std::string Prefix(std::uint32_t length) {
    std::string prefix;
    for (; length >= 128; length /= 128) {
        prefix += static_cast<char>(length % 128 + 128);
    }
    return prefix + static_cast<char>(length);
}

extern "C" {

ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
ssize_t __real_write(int descriptor, const void* bytes, std::size_t size);
ssize_t __real_sendmsg(int descriptor, const msghdr* message, int flags);
int __real_usleep(useconds_t microseconds);
unsigned int __real_sleep(unsigned int seconds);
int __real_system(const char* command);
bool __real__ZNK13TiXmlDocument8SaveFileEPKc(const TiXmlDocument* document, const char* path);
unsigned int __real__ZNK9LogClient5LevelEv(const LogClient* client);

ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
    if (g_world == nullptr) {
        return __real_read(descriptor, buffer, size);
    }
    Demand(descriptor == World::kSocket && size > 0, "a read of the DVR's socket");
    Demand(!g_world->isPauseDue, "a pause after each piece of a text");
    const ssize_t count = ReadPiece(*g_world, static_cast<char*>(buffer), size);
    g_world->isPauseDue = size > 1 && count > 0;  // a text of one byte cannot be told from a prefix
    return count;
}

ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t size) {
    if (g_world == nullptr) {
        return __real_write(descriptor, bytes, size);
    }
    const std::string taken(static_cast<const char*>(bytes), size);
    if (descriptor == World::kSocket) {
        return TakeWrite(*g_world, taken);
    }
    Demand(descriptor == STDOUT_FILENO, "a write to the DVR's socket or to standard output");
    TakeLogLine(*g_world, taken);
    return static_cast<ssize_t>(size);
}

ssize_t __wrap_sendmsg(int descriptor, const msghdr* message, int flags) {
    if (g_world == nullptr) {
        return __real_sendmsg(descriptor, message, flags);
    }
    errno = ENOENT;  // no syslog daemon here
    return -1;
}

int __wrap_usleep(useconds_t microseconds) {
    if (g_world == nullptr) {
        return __real_usleep(microseconds);
    }
    Demand(microseconds == 250000, "a pause of 250 ms, found " + std::to_string(microseconds) + " us");
    g_world->isPauseDue = false;
    return 0;
}

unsigned int __wrap_sleep(unsigned int seconds) {
    return g_world == nullptr ? __real_sleep(seconds) : 0;
}

int __wrap_system(const char* command) {
    if (g_world == nullptr) {
        return __real_system(command);
    }
    Demand(
        strcmp(command, "touch /mnt/hd/velloranFail") == 0 || strcmp(command, "rm /mnt/hd/velloranFail") == 0,
        "a command for the marker file, found '" + std::string(command) + "'");
    return 0;
}

/// TiXmlDocument::SaveFile(const char*) const: the document is still printed.
bool __wrap__ZNK13TiXmlDocument8SaveFileEPKc(const TiXmlDocument* document, const char* path) {
    if (g_world == nullptr) {
        return __real__ZNK13TiXmlDocument8SaveFileEPKc(document, path);
    }
    Demand(strncmp(path, "/mnt/hd/incoming_", 17) == 0 || strcmp(path, "/mnt/hd/outgoingETCstring") == 0,
           "a file of ours, found '" + std::string(path) + "'");
    static FILE* const nowhere = fopen("/dev/null", "w");
    return document->SaveFile(nowhere);
}

/// LogClient::Level() const, which each log statement asks first: the place to stop one that repeats.
unsigned int __wrap__ZNK9LogClient5LevelEv(const LogClient* client) {
    if (g_world != nullptr && g_world->linesWithoutReid >= 2) {
        g_world->linesWithoutReid = 0;
        WouldNotEnd("Found event with no REID, for ever");
    }
    return __real__ZNK9LogClient5LevelEv(client);
}
}

}  // namespace fuzz
