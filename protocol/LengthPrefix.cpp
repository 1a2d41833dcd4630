#include <cstdint>
#include <ios>

#include "protocol/Log.h"
#include "protocol/VelProtocolBase.h"

int VelProtocolBase::Write7BitEncodedInt(char* buffer, int value) {
    auto rest = static_cast<std::uint32_t>(value);
    int last = 0;
    while (rest > 127) {
        buffer[last++] = static_cast<char>((rest & 0x7F) | 0x80);
        rest >>= 7;
    }
    buffer[last] = static_cast<char>(rest);
    if (LogClient::Instance()->Level() & 64) {  // asked once here, as encoding costs less than asking
        for (int index = 0; index <= last; ++index) {
            VEL_LOG(64) << "hdr[" << index << "]= " << std::hex << (buffer[index] & 0xFF) << std::dec;
        }
    }
    return last + 1;
}

int VelProtocolBase::Read7BitEncodedInt(const char* buffer, int* bytesRead) {
    std::uint32_t value = 0;
    *bytesRead = 0;
    for (unsigned int index = 0; index < 5; ++index) {
        const std::uint32_t byte = static_cast<unsigned char>(buffer[index]);
        *bytesRead = static_cast<int>(index) + 1;
        value += (byte & 0x7F) << (7 * index);
        if ((byte & 0x80) == 0) {
            return static_cast<int>(value);
        }
    }
    VEL_LOG(2) << "Read7BitEncodedInt:badly formatted 7 bit string length prefix";
    return -1;
}
