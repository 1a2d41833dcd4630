#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace rig {

/// One recorded event: its identifier and the names of its files.
struct Event {
    std::string id;
    std::string metadata;                           // the file that describes the event
    std::vector<std::vector<std::string>> streams;  // the other files

    /// Sorts out an event's files: the first *.xml, or else the first file, is the metadata; the others form
    /// one stream for each folder that they lie in.
    /// @param files  at least one name, sorted; a '/' parts a folder from what lies in it
    static Event FromFiles(const std::string& id, const std::vector<std::string>& files);

    /// @return all file names, in the order in which the description gives them
    std::vector<std::string> Files() const;

    /// @return the event's description: a printed XML document, to travel escaped inside a message
    std::string Describe() const;
};

/// What the DVR has recorded. Only identifiers are held; the files of an event are looked up when they are
/// asked for.
class Recordings {
 public:
    using Sink = std::function<void(const char* bytes, std::size_t count)>;

    virtual ~Recordings() = default;

    /// @return the events in the order in which they are exported; never empty
    virtual const std::vector<std::string>& Events() const = 0;

    /// @return the files of an event of Events()
    virtual Event Find(const std::string& event) const = 0;

    /// Hands out a file's bytes, piece by piece. The names must be ones that Events and Find gave.
    /// Throws Failure (UsageError) when the file cannot be read.
    virtual void Read(const std::string& event, const std::string& file, const Sink& sink) const = 0;

    /// @return where the recordings are, for people
    virtual std::string Origin() const = 0;

    bool Has(const std::string& event) const;
};

}  // namespace rig
