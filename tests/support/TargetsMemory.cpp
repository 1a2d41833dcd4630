#include "tests/support/TargetsMemory.h"

#include <cstdint>
#include <fstream>
#include <utility>
#include <vector>

namespace {

constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 32;

/// Whether a line of "smaps" is the head of a mapping: "START-END PERMISSIONS OFFSET DEVICE INODE [PATH]".
bool IsHead(const std::string& line) {
    return line.find('-') < line.find(' ');
}

}  // namespace

long TargetsMemory(pid_t process, const std::string& program) {
    std::ifstream mappings("/proc/" + std::to_string(process) + "/smaps");
    std::vector<std::pair<std::uint64_t, long>> sizes;  // which 4 GiB the mapping is in, kB in use
    std::uint64_t space = 0;
    for (std::string line; std::getline(mappings, line);) {
        if (IsHead(line)) {
            sizes.emplace_back(std::stoull(line, nullptr, 16) / kAddressSpace, 0);
            space = line.find(program) == std::string::npos ? space : sizes.back().first;
        } else if (line.compare(0, 4, "Rss:") == 0) {
            sizes.back().second = std::stol(line.substr(4));
        }
    }
    long sum = 0;
    for (const auto& [itsSpace, size] : sizes) {
        sum += itsSpace == space ? size : 0;
    }
    return sum;
}
