#pragma once

#include <CLI/CLI.hpp>

#include "rig/judge/delivery/DeliveryPlace.h"

namespace rig::judge {

/// Adds --delivered, --hash and --pattern.
inline void AddDeliveryOptions(CLI::App& command, DeliveryOptions& options) {
    auto* const folder = command
                             .add_option("--delivered", options.folder,
                                         "Also look there for the files that the DVR has delivered")
                             ->type_name("DIR");
    command.add_option("--hash", options.hash, "Which hash the DVR announces; auto: what its length says")
        ->check(CLI::IsMember({"auto", "crc32", "md5", "sha1", "sha256"}))
        ->type_name("auto|crc32|md5|sha1|sha256")
        ->capture_default_str()
        ->needs(folder);
    command.add_option("--pattern", options.pattern, "Where in DIR a file is, with {event} and {file}")
        ->type_name("PATTERN")
        ->capture_default_str()
        ->needs(folder);
}

}  // namespace rig::judge
