#include "rig/result/Json.h"

namespace rig::result {
namespace {

constexpr int kIndent = 2;

}  // namespace

Json ToJson(const Timing& timing) {
    return {{"request", timing.request},
            {"count", timing.count},
            {"median", timing.median},
            {"percentile95", timing.percentile95},
            {"percentile99", timing.percentile99},
            {"longest", timing.longest}};
}

std::string Print(const Json& json) {
    return json.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace rig::result
