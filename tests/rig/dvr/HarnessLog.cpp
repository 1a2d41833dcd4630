#include "tests/rig/dvr/HarnessLog.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "rig/base/Printable.h"
#include "rig/dvr/wire/Frame.h"

HarnessLog::HarnessLog(const std::string& prefix) : prefix_(prefix) {}

HarnessLog& HarnessLog::Line(const std::string& text) {
    text_ += prefix_ + "velloran:7 " + text + "\n";
    return *this;
}

HarnessLog& HarnessLog::Received(const std::string& text) {
    const std::size_t slice = std::min<std::size_t>(text.size(), 800);
    Line("expecting a message of " + std::to_string(text.size()) + " bytes");
    Line("read success:" + std::to_string(text.size()));
    std::size_t start = 0;
    do {
        Line("GetMessage:incoming message, bytes " + std::to_string(start + 1) + " to " +
             std::to_string(start + slice) + ":" + rig::Printable(text.substr(start, slice)));
        start += 800;
    } while (start < text.size());
    return *this;
}

HarnessLog& HarnessLog::Sent(std::size_t announced) {
    const std::string prefix = rig::dvr::EncodePrefix(static_cast<std::uint32_t>(announced));
    for (std::size_t index = 0; index < prefix.size(); ++index) {
        std::ostringstream line;
        line << "hdr[" << index << "]= " << std::hex
             << static_cast<unsigned int>(static_cast<unsigned char>(prefix[index]));
        Line(line.str());
    }
    return *this;
}

HarnessLog& HarnessLog::Connected(const std::vector<std::string>& switches) {
    for (const std::string& line : switches) {
        Line(line);
    }
    return Line("Connected to: fam=2  127.0.0.1:40000");
}

HarnessLog& HarnessLog::From(const std::string& prefix) {
    prefix_ = prefix;
    return *this;
}
