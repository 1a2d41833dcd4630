#pragma once

#include <list>
#include <string>
#include <utility>
#include <vector>

#ifdef NDEBUG
#error "velloran's assertions are part of its behaviour and carry system calls: build it without NDEBUG"
#endif

class TiXmlDocument;

/// The twelve values of the command line, with their defaults.
struct TestOptions {
    int closeEarly = 0;       // events after which the export is ended early with DONE; 0: off
    int doneDuration = 0;     // minutes that DONE announces; 0: none
    int sleepForGetFile = 1;  // seconds slept after each GET_FILE but the last of an event
    int protocol = 1;         // dialect, 1 or 2
    bool rehash = false;
    bool invalidEvent = false;
    bool invalidFile = false;
    bool transportException = false;
    bool xferInProgress = false;
    bool upgrade = false;
    bool sizeError = false;
    bool configUpdate = false;
};

/// What the backend knows of one DVR's export: the test switches, the connected socket and the work lists;
/// and how a frame is read and written. The dialects derive from it.
///
/// Created once, after the first DVR has connected, and never deleted: the lists, the counters and the
/// switches as the dialogue has left them carry over to the next connection. `socketFd` is not refreshed
/// then; the next connection receives the number of the one just closed.
///
/// A frame is the length of its text, written as a prefix of 1 to 5 bytes, and then the text of one XML
/// document, compact, without a terminating NUL:
///
///     prefix   7 bits of the length a byte, least significant first; bit 7 set on every byte but the last
///     text     as many bytes as the document has; with `sizeError` the prefix announces half as many again
class VelProtocolBase {
 public:
    enum e_MsgReturn {
        MSG_CONTINUE = 0,     // the message was handled; the connection stays
        MSG_CLOSE_CLIENT = 1  // the dialogue on this connection is over
    };

    using FileEntry = std::pair<std::string, std::string>;  // event identifier, file name

    /// @param connectedFd  the connected client socket; stays the caller's
    VelProtocolBase(const TestOptions& options, int connectedFd);
    VelProtocolBase(const VelProtocolBase&) = delete;
    VelProtocolBase& operator=(const VelProtocolBase&) = delete;
    virtual ~VelProtocolBase() = default;

    /// Reads one message, reacts to it and sends no, one or two replies. Blocks until a whole message has
    /// arrived, so the caller waits until the socket is readable. Ends the process on a message that is no
    /// XML or has no `msg`.
    virtual e_MsgReturn HandleMessage() = 0;

    /// Writes `value`, taken as unsigned 32 bits, as a prefix.
    /// @param buffer  room for 5 bytes
    /// @return the number of bytes written, 1 to 5
    /// Logs each byte at level 64.
    int Write7BitEncodedInt(char* buffer, int value);

    /// Reads a prefix from `buffer`, at most 5 bytes of it.
    /// @param bytesRead  receives the number of bytes that the prefix takes
    /// @return the 32 bits of the value as a signed number; -1 also, with a line at level 2, for a prefix
    ///         that goes on after its fifth byte. Bits of the fifth byte beyond the 32nd are dropped.
    int Read7BitEncodedInt(const char* buffer, int* bytesRead);

    /// Reads one frame. Blocks without a time limit, and pauses 250 ms after each piece of the text, which
    /// paces the DVR. Logs read errors and retries; ends the process on a bad prefix and on a text that
    /// breaks off.
    /// @param message  receives the text and a NUL
    void GetMessage(std::vector<char>& message);

    /// Writes one frame in two writes, prefix and text. Ends the process if either is short.
    void SendMessage(TiXmlDocument& document);

    int closeEarly;
    int doneDuration;
    int sleepForGetFile;
    int protocol;
    bool rehash;
    bool invalidEvent;
    bool invalidFile;
    bool transportException;
    bool xferInProgress;
    bool upgrade;
    bool sizeError;
    bool configUpdate;
    int socketFd;
    std::list<FileEntry> filesToReceive;  // front: the file requested and awaited
    std::list<std::string> events;        // event identifiers; in 2.0 the front is the event in progress
};
