#include "bench/harness/MemoryPeer.h"

#include <tinyxml.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace {

const std::string* sent = nullptr;
std::size_t position = 0;

}  // namespace

void PeerSends(const std::string& frame) {
    sent = &frame;
    position = 0;
}

std::string Framed(const std::string& text) {
    std::string frame;
    std::size_t rest = text.size();
    while (rest > 127) {
        frame += static_cast<char>((rest & 0x7F) | 0x80);
        rest >>= 7;
    }
    return frame + static_cast<char>(rest) + text;
}

extern "C" {
ssize_t __real_read(int descriptor, void* buffer, size_t size);
ssize_t __real_write(int descriptor, const void* buffer, size_t size);

ssize_t __wrap_read(int descriptor, void* buffer, size_t size) {
    if (descriptor != kMemorySocket) {
        return __real_read(descriptor, buffer, size);
    }
    const std::size_t count = std::min(size, sent->size() - position);
    std::memcpy(buffer, sent->data() + position, count);
    position += count;
    return static_cast<ssize_t>(count);
}

ssize_t __wrap_write(int descriptor, const void* buffer, size_t size) {
    return descriptor == kMemorySocket ? static_cast<ssize_t>(size) : __real_write(descriptor, buffer, size);
}

int __wrap_usleep(useconds_t /*microseconds*/) {
    return 0;
}

unsigned int __wrap_sleep(unsigned int /*seconds*/) {
    return 0;
}

int __wrap_system(const char* /*command*/) {
    return 0;
}

bool __wrap__ZNK13TiXmlDocument8SaveFileEPKc(const TiXmlDocument* /*document*/, const char* /*path*/) {
    return true;
}
}
