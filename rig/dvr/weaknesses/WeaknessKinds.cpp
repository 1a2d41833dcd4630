#include <fmt/format.h>

#include "rig/dvr/weaknesses/Weakness.h"

namespace rig::dvr {

const std::vector<WeaknessKind>& WeaknessKinds() {
    static const std::vector<WeaknessKind> kKinds = [] {
        std::vector<WeaknessKind> all;
        for (const auto* table : {&ByteWeaknesses(), &ShapeWeaknesses(), &MarkupWeaknesses(),
                                  &ValueWeaknesses(), &OrderWeaknesses(), &CallWeaknesses()}) {
            all.insert(all.end(), table->begin(), table->end());
        }
        return all;
    }();
    return kKinds;
}

Listing ListWeaknesses() {
    Listing listing{{"weakness", "dialect", "what the recorder does", "with a backend that"}, {}};
    for (const WeaknessKind& kind : WeaknessKinds()) {
        const std::string dialects = kind.dialects == std::string("12")  ? "1.0, 2.0"
                                     : kind.dialects == std::string("1") ? "1.0"
                                                                         : "2.0";
        const std::string value = *kind.value == '\0' ? "" : fmt::format("[={}]", kind.value);
        listing.rows.push_back({kind.name + value, dialects, kind.does, kind.shownBy});
    }
    return listing;
}

}  // namespace rig::dvr
