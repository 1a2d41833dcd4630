#include "rig/campaign/execution/Capture.h"

#include <fmt/format.h>
#include <pcap/pcap.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "rig/base/Port.h"

namespace rig::campaign {
namespace {

constexpr int kWholePackets = 262144;  // bytes of each
constexpr int kBuffer = 8 << 20;       // bytes in the kernel

[[noreturn]] void Fail(const std::string& reason) {
    throw std::runtime_error(
        "--capture: expected to capture packets (root, or the capability CAP_NET_RAW), found: " + reason);
}

}  // namespace

struct Capture::Handles {
    ~Handles() {
        if (file != nullptr) {
            pcap_dump_close(file);
        }
        if (device != nullptr) {
            pcap_close(device);
        }
    }
    void Check(int result) const {
        if (result < 0) {
            Fail(pcap_geterr(device));
        }
    }
    pcap_t* device = nullptr;
    pcap_dumper_t* file = nullptr;
};

Capture::Capture(const std::string& path) : handles_(std::make_unique<Handles>()) {
    char error[PCAP_ERRBUF_SIZE] = "";
    handles_->device = pcap_create("any", error);
    if (handles_->device == nullptr) {
        Fail(error);
    }
    pcap_t* const device = handles_->device;
    pcap_set_snaplen(device, kWholePackets);
    pcap_set_buffer_size(device, kBuffer);
    pcap_set_immediate_mode(device, 1);
    handles_->Check(pcap_activate(device));
    bpf_program filter = {};
    handles_->Check(pcap_compile(device, &filter, fmt::format("tcp port {}", kHarnessPort).c_str(), 1,
                                 PCAP_NETMASK_UNKNOWN));
    const int isSet = pcap_setfilter(device, &filter);
    pcap_freecode(&filter);
    handles_->Check(isSet);
    handles_->Check(pcap_setnonblock(device, 1, error));
    handles_->file = pcap_dump_open(device, path.c_str());
    if (handles_->file == nullptr) {
        Fail(pcap_geterr(device));
    }
}

Capture::~Capture() = default;

int Capture::Number() const {
    return pcap_get_selectable_fd(handles_->device);
}

bool Capture::WritePackets() {
    int count = 0;
    do {
        count = pcap_dispatch(handles_->device, -1, pcap_dump, reinterpret_cast<u_char*>(handles_->file));
    } while (count > 0);
    if (count == 0 && pcap_dump_flush(handles_->file) != 0) {
        error_ = std::strerror(errno);
    } else if (count < 0) {
        error_ = pcap_geterr(handles_->device);
    }
    return error_.empty();
}

}  // namespace rig::campaign
