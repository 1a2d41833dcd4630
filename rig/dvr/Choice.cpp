#include "rig/dvr/Choice.h"

#include <fmt/format.h>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {

std::optional<std::size_t> Choose(const char* option, const Listing& listing, const std::string& name) {
    std::string names = "all";
    for (std::size_t row = 0; row < listing.rows.size(); ++row) {
        const std::string& cell = listing.rows[row].front();
        if (cell.substr(0, cell.find('[')) == name) {
            return row;
        }
        names += ", " + cell;
    }
    if (name != "all") {
        throw Failure(ExitStatus::Unusable,
                      fmt::format("{}: expected one of {}; found {}", option, names, Quoted(name)));
    }
    return std::nullopt;
}

}  // namespace rig::dvr
