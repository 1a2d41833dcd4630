#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "rig/base/Hash.h"

namespace rig::dvr {

/// One recorded event: its identifier and the names of its files.
struct Event {
    std::string id;
    std::string metadata;  // the file that describes the event; empty: no file at all
    std::vector<std::vector<std::string>> streams;  // the other files

    /// Sorts out an event's files: the first *.xml, or else the first file, is the metadata; the others form
    /// one stream for each folder that they are in.
    /// @param files  at least one name, sorted; a '/' separates a folder from what is in it
    static Event FromFiles(const std::string& id, const std::vector<std::string>& files);

    /// @return all file names, in the order in which the description gives them
    std::vector<std::string> Files() const;

    /// @return the event's description: a printed XML document, sent escaped inside a message
    std::string Describe() const;
};

/// What the DVR has recorded. Keeps only identifiers; the files of an event are looked up when asked for.
class Recordings {
 public:
    using Sink = std::function<void(const char* bytes, std::size_t count)>;

    /// Reads the next piece of a file: puts `capacity` bytes into the buffer, fewer only at the file's end.
    /// @return how many. Throws Failure (Unusable) when the file cannot be read.
    using Source = std::function<std::size_t(char* buffer, std::size_t capacity)>;

    virtual ~Recordings() = default;

    /// @return the events in the order in which they are exported; never empty
    virtual const std::vector<std::string>& Events() const = 0;

    /// @return the files of an event of Events()
    virtual Event Find(const std::string& event) const = 0;

    /// Opens a file to read it from its beginning. The names must come from Events and Find. The source may
    /// not outlive the recordings. Throws Failure (Unusable) when the file cannot be opened.
    virtual Source Open(const std::string& event, const std::string& file) const = 0;

    /// @return where the recordings are, for people
    virtual std::string Origin() const = 0;

    /// @return whether there is such an event
    virtual bool Has(const std::string& event) const;

    /// Passes on a whole file, piece by piece, in constant memory. Throws Failure (Unusable) when it cannot
    /// be read.
    void Read(const std::string& event, const std::string& file, const Sink& sink) const;

    /// How the files are hashed: SHA-256 if nobody says otherwise.
    void HashBy(HashKind kind) { hashing_ = kind; }
    HashKind Hashing() const { return hashing_; }

 private:
    HashKind hashing_ = HashKind::Sha256;
};

/// What FILE_COMPLETE says about a file's contents.
struct Digest {
    std::string hashCode;      // in lower-case hexadecimal
    std::uint64_t length = 0;  // bytes
};

/// Digests a whole file, in constant memory. Throws Failure (Unusable) when it cannot be read.
Digest DigestOf(const Recordings& recordings, const std::string& event, const std::string& file);

/// @return a source of these bytes, which must outlive it
Recordings::Source SourceOf(const std::string& bytes);

}  // namespace rig::dvr
