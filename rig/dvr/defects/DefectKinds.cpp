#include <algorithm>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/defects/DefectTables.h"

namespace rig::dvr {
namespace {

/// @return what may follow the name, for people
const char* Placeholder(DefectValue value) {
    switch (value) {
        case DefectValue::Text:
            return "[=TEXT]";
        case DefectValue::Count:
            return "[=BYTES]";
        case DefectValue::Place:
            return "[=BYTE]";
        case DefectValue::None:
            break;
    }
    return "";
}

bool IsNumber(const std::string& text) {
    return !text.empty() && text.size() <= 9 && text.find_first_not_of("0123456789") == std::string::npos;
}

bool Takes(DefectValue kind, const std::string& value) {
    switch (kind) {
        case DefectValue::Text:
            return true;
        case DefectValue::Count:
            return IsNumber(value) && value.find_first_not_of('0') != std::string::npos;
        case DefectValue::Place:
            return IsNumber(value) || value == "all" || value == "random";
        case DefectValue::None:
            break;
    }
    return value.empty();
}

}  // namespace

const std::vector<DefectKind>& DefectKinds() {
    static const std::vector<DefectKind> kKinds = [] {
        std::vector<DefectKind> all;
        for (const auto* table : {&AttributeDefects(), &AnswerDefects(), &UnaskedDefects(),
                                  &DocumentDefects(), &CopyDefects(), &WireDefects()}) {
            all.insert(all.end(), table->begin(), table->end());
        }
        return all;
    }();
    return kKinds;
}

const DefectKind& FindDefectKind(std::string_view name) {
    const std::vector<DefectKind>& kinds = DefectKinds();
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&](const DefectKind& kind) { return name == kind.name; });
    if (found == kinds.end()) {
        std::string names;
        for (const DefectKind& kind : kinds) {
            names += (names.empty() ? "" : ", ") + std::string(kind.name);
        }
        throw Failure(ExitStatus::Unusable,
                      "--defect: expected one of " + names + "; found " + Quoted(std::string(name)));
    }
    return *found;
}

void CheckDefectValue(const DefectKind& kind, const std::string& value) {
    if (Takes(kind.value, value)) {
        return;
    }
    const char* const expected = kind.value == DefectValue::None    ? "no value"
                                 : kind.value == DefectValue::Count ? "a number of bytes above 0"
                                                                    : "a number of bytes, 'all' or 'random'";
    throw Failure(ExitStatus::Unusable, "--defect " + std::string(kind.name) + ": expected " + expected +
                                            ", found " + Quoted(value));
}

Listing ListDefects() {
    Listing listing{{"defect", "dialect", "acts on", "what the DVR does", "what the harness logs"}, {}};
    for (const DefectKind& kind : DefectKinds()) {
        std::string messages;
        for (const char* message : kind.messages) {
            messages += (messages.empty() ? "" : ", ") + std::string(message);
        }
        const std::string dialects = kind.dialects == std::string("12")  ? "1.0, 2.0"
                                     : kind.dialects == std::string("1") ? "1.0"
                                                                         : "2.0";
        listing.rows.push_back({std::string(kind.name) + Placeholder(kind.value), dialects,
                                (messages.empty() ? "any" : messages) + (kind.always ? ", each" : ""),
                                kind.does, kind.logs});
    }
    return listing;
}

}  // namespace rig::dvr
