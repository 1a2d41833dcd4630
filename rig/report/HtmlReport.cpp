#include "rig/report/HtmlReport.h"

namespace rig::report {

std::string HtmlReport(const Result& /*result*/) {
    return "";
}

}  // namespace rig::report
