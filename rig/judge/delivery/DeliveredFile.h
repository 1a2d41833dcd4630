#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "rig/judge/delivery/DeliveryPlace.h"

namespace rig::judge {

/// What tells that a file has been written since: size, times and number.
struct Stamp {
    std::uint64_t size = 0;
    std::int64_t written = 0;  // microseconds since 1970
    std::int64_t changed = 0;  // the same; nobody can set it
    std::uint64_t number = 0;

    bool operator==(const Stamp& other) const {
        return size == other.size && written == other.written && changed == other.changed &&
               number == other.number;
    }
};

/// @return the stamp in what the system says of a file
Stamp StampOf(const struct stat& found);

/// A file in the folder, looked at without leaving it. Links are followed as long as they stay inside.
struct DeliveredFile {
    enum class Form { File, Missing, Outside, NotFile, Unreadable };

    Form form = Form::Missing;
    std::string path;    // in the folder, without links; empty unless the form is File
    std::string reason;  // why it cannot be read
    Stamp stamp;
};

DeliveredFile LookAt(const DeliveryPlace& place, const std::string& path);

/// Reads a file piece by piece. Throws std::runtime_error, with the reason, when it cannot be read.
std::string HashOf(const DeliveryPlace& place, const DeliveredFile& file, HashKind kind);

}  // namespace rig::judge
