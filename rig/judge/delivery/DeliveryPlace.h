#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "rig/base/Hash.h"
#include "rig/judge/delivery/Transfer.h"

namespace rig::judge {

/// Where the DVR delivers its files to, and how they are hashed.
struct DeliveryPlace {
    /// Called while a file is read. @return whether to go on
    using Progress = std::function<bool(const std::string& file, std::uint64_t done, std::uint64_t total)>;

    std::string folder;
    std::string pattern = "{event}/{file}";
    std::optional<HashKind> hash;  // if not given, what the number of its digits says
    bool isLive = false;           // nothing has been delivered yet: what is there now is older
    Progress progress;             // may be empty

    /// @return where a file is in the folder; nothing if its name leads out of it
    std::optional<std::string> PathOf(const FileName& name) const;
};

/// What the command line says of it.
struct DeliveryOptions {
    std::optional<std::string> folder;
    std::string hash = "auto";
    std::string pattern = "{event}/{file}";
};

/// @param progress  may be empty
/// @return the place that the options name; nothing if they name none. Throws std::runtime_error if the
/// folder cannot be read or the pattern cannot be used.
std::optional<DeliveryPlace> PlaceOf(const DeliveryOptions& options,
                                     DeliveryPlace::Progress progress = nullptr);

}  // namespace rig::judge
