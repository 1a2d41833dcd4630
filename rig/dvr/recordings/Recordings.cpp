#include "rig/dvr/recordings/Recordings.h"

#include <algorithm>
#include <map>

#include "rig/base/Affix.h"
#include "rig/base/Hash.h"
#include "rig/dvr/wire/Message.h"

namespace rig::dvr {
namespace {

constexpr std::size_t kPieceBytes = std::size_t{64} * 1024;

}  // namespace

Event Event::FromFiles(const std::string& id, const std::vector<std::string>& files) {
    auto metadata = std::find_if(files.begin(), files.end(),
                                 [](const std::string& file) { return EndsWith(file, ".xml"); });
    if (metadata == files.end()) {
        metadata = files.begin();
    }
    std::map<std::string, std::vector<std::string>> folders;
    for (auto file = files.begin(); file != files.end(); ++file) {
        if (file != metadata) {
            const auto slash = file->rfind('/');
            folders[slash == std::string::npos ? "" : file->substr(0, slash)].push_back(*file);
        }
    }
    Event event{id, *metadata, {}};
    for (auto& folder : folders) {
        event.streams.push_back(std::move(folder.second));
    }
    return event;
}

std::vector<std::string> Event::Files() const {
    std::vector<std::string> files;
    if (!metadata.empty()) {
        files.push_back(metadata);
    }
    for (const auto& stream : streams) {
        files.insert(files.end(), stream.begin(), stream.end());
    }
    return files;
}

std::string Event::Describe() const {
    pugi::xml_document document;
    pugi::xml_node recordingEvent = document.append_child("recording-event");
    recordingEvent.append_attribute("reid").set_value(id.c_str());
    if (metadata.empty()) {
        return Print(document);
    }
    pugi::xml_node video = recordingEvent.append_child("video");
    video.append_child("metadata").append_attribute("name").set_value(metadata.c_str());
    pugi::xml_node container = streams.empty() ? pugi::xml_node() : video.append_child("streams");
    for (const auto& stream : streams) {
        pugi::xml_node element = container.append_child("stream");
        for (const auto& file : stream) {
            element.append_child("file").append_attribute("name").set_value(file.c_str());
        }
    }
    return Print(document);
}

bool Recordings::Has(const std::string& event) const {
    return std::find(Events().begin(), Events().end(), event) != Events().end();
}

void Recordings::Read(const std::string& event, const std::string& file, const Sink& sink) const {
    const Source source = Open(event, file);
    std::vector<char> piece(kPieceBytes);
    while (const std::size_t count = source(piece.data(), piece.size())) {
        sink(piece.data(), count);
    }
}

Digest DigestOf(const Recordings& recordings, const std::string& event, const std::string& file) {
    Hash hash(recordings.Hashing());
    Digest digest;
    recordings.Read(event, file, [&](const char* bytes, std::size_t count) {
        hash.Add(bytes, count);
        digest.length += count;
    });
    digest.hashCode = hash.Hexadecimal();
    return digest;
}

Recordings::Source SourceOf(const std::string& bytes) {
    return [&bytes, position = std::size_t{0}](char* buffer, std::size_t capacity) mutable {
        const std::size_t count = bytes.copy(buffer, capacity, position);
        position += count;
        return count;
    };
}

}  // namespace rig::dvr
