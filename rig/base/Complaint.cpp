#include "rig/base/Complaint.h"

#include <iostream>

namespace rig {

int Complain(std::string_view command, int status, const std::string& text) {
    std::cerr << "velloran-rig " << command << ": " << text << std::endl;
    return status;
}

}  // namespace rig
