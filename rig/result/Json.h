#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "rig/result/Result.h"

namespace rig::result {

/// Keeps members in the order in which they are added.
using Json = nlohmann::ordered_json;

/// @return null if there is no value
template <typename Value>
Json Optional(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

/// @param toJson  makes one of an item
template <typename Item>
Json ToArray(const std::vector<Item>& items, Json (*toJson)(const Item&)) {
    Json array = Json::array();
    for (const Item& item : items) {
        array.push_back(toJson(item));
    }
    return array;
}

Json ToJson(const Timing& timing);

/// @return the text of a JSON file; bytes that are not UTF-8 are replaced
std::string Print(const Json& json);

}  // namespace rig::result
