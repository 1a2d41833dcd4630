#include <tinyxml.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>

#include "protocol/Log.h"
#include "protocol/VelProtocolBase.h"

namespace {

constexpr std::size_t kPrefixSize = 5;
constexpr useconds_t kPauseAfterRead = 250000;  // microseconds
constexpr int kSliceLength = 800;

/// Reads the bytes of a prefix, one at a time. Stops at the fifth whatever its top bit says: the decoder
/// reports it. Spins while the peer has closed, as it is called only when there is something to read.
void ReadPrefix(int socketFd, char* prefix) {
    std::size_t position = 0;
    while (position < kPrefixSize) {
        const ssize_t count = read(socketFd, prefix + position, 1);
        if (count == 1) {
            if ((prefix[position] & 0x80) == 0) {
                return;
            }
            ++position;
        } else if (count == -1) {
            const int error = errno;
            VEL_LOG(1) << "read error: " << error << ":" << strerror(error);
        }
    }
}

/// Reads up to `expectedSize` bytes of text, fewer only if the peer closes.
/// @return the number of bytes read
int ReadText(int socketFd, char* text, int expectedSize) {
    int readBytes = 0;
    while (readBytes < expectedSize) {
        const ssize_t count =
            read(socketFd, text + readBytes, static_cast<std::size_t>(expectedSize - readBytes));
        if (count > 0) {
            readBytes += static_cast<int>(count);
            usleep(kPauseAfterRead);
        } else if (count == -1) {
            const int error = errno;
            VEL_LOG(1) << "read errored out:" << error << ":" << strerror(error);
        } else {
            VEL_LOG(1) << "EOF at: " << readBytes << "  exp=" << expectedSize;
            return readBytes;
        }
    }
    return readBytes;
}

/// Traces the text in slices. The upper bound of the last one is not clipped to the text: rigs tell by it how
/// the text was cut.
void LogIncomingMessage(const char* text, int expectedSize) {
    const auto size = static_cast<std::size_t>(std::max(expectedSize, 0));
    const std::size_t sliceLength = std::min<std::size_t>(size, kSliceLength);
    std::size_t start = 0;
    do {
        VEL_LOG(32) << "GetMessage:incoming message, bytes " << start + 1 << " to " << start + sliceLength
                    << ":" << std::string(text + start, std::min(sliceLength, size - start));
        start += kSliceLength;
    } while (start < size);
}

}  // namespace

void VelProtocolBase::GetMessage(std::vector<char>& message) {
    std::vector<char> prefix(kPrefixSize);
    ReadPrefix(socketFd, prefix.data());
    int prefixLength = 0;
    const int expectedSize = Read7BitEncodedInt(prefix.data(), &prefixLength);
    assert(expectedSize not_eq -1);
    VEL_LOG(1) << "expecting a message of " << expectedSize << " bytes";

    // A negative size is beyond what any buffer holds, and ends the process here.
    message.resize(static_cast<std::size_t>(expectedSize) + 1);
    const int readBytes = ReadText(socketFd, message.data(), expectedSize);
    VEL_LOG(1) << "read success:" << readBytes;
    assert(readBytes == expectedSize);
    message[static_cast<std::size_t>(expectedSize)] = 0;
    LogIncomingMessage(message.data(), expectedSize);
}

void VelProtocolBase::SendMessage(TiXmlDocument& document) {
    std::string text;
    text << document;
    const auto msgSize = static_cast<unsigned int>(text.size());
    // Half as much again, although the usage text speaks of size-10: a DVR under test then waits for text
    // that never comes, which is what shows whether its parser has a time limit.
    const unsigned int announcedSize = sizeError ? (msgSize * 3) >> 1 : msgSize;

    std::vector<char> header(kPrefixSize);
    const int headerLength = Write7BitEncodedInt(header.data(), static_cast<int>(announcedSize));
    ssize_t writelen = write(socketFd, header.data(), static_cast<std::size_t>(headerLength));
    if (writelen == -1) {
        const int error = errno;
        VEL_LOG(2) << "SendMessage: msg: size= " << msgSize << "  errorno=" << strerror(error);
    }
    assert(writelen == static_cast<ssize_t>(headerLength));

    writelen = write(socketFd, text.data(), msgSize);
    if (writelen == -1) {
        const int error = errno;
        VEL_LOG(2) << "SendMessage: msg: size= " << msgSize << "  errorno=" << strerror(error);
    }
    assert(writelen == static_cast<int>(msgSize));

    if (sizeError) {
        VEL_LOG(8) << "sent: size= " << headerLength << "/" << announcedSize << "/" << msgSize << "  '"
                   << text << "'";
    }
}
