// The prefix, both ways: every length survives, and any five bytes are read as the format says.
#include "protocol/v1_0/VelProtocol_1_0.h"
#include "tests/fuzz/Choices.h"
#include "tests/fuzz/Demand.h"
#include "tests/fuzz/world/World.h"

namespace {

void CheckEncoding(VelProtocolBase& protocol, std::uint32_t length) {
    char buffer[5];
    const int written = protocol.Write7BitEncodedInt(buffer, static_cast<int>(length));
    fuzz::Demand(std::string(buffer, static_cast<std::size_t>(written)) == fuzz::Prefix(length),
                 "the prefix of " + std::to_string(length));
    int read = 0;
    fuzz::Demand(protocol.Read7BitEncodedInt(buffer, &read) == static_cast<int>(length) && read == written,
                 "that the prefix of " + std::to_string(length) + " is read as it was written");
}

/// `bytes` holds only what may be read, so that reading too far is noticed.
void CheckDecoding(VelProtocolBase& protocol, const std::string& bytes) {
    std::string prefix;
    while (prefix.size() < 5) {
        const char byte = prefix.size() < bytes.size() ? bytes[prefix.size()] : '\0';
        prefix += byte;
        if ((byte & 0x80) == 0) {
            break;
        }
    }
    const std::string exact(prefix.begin(), prefix.end());
    auto* const heap = new char[exact.size()];
    exact.copy(heap, exact.size());
    int read = 0;
    const int length = protocol.Read7BitEncodedInt(heap, &read);
    delete[] heap;
    fuzz::Demand(
        length == static_cast<int>(static_cast<std::uint32_t>(fuzz::Announced(prefix))) &&
            static_cast<std::size_t>(read) == prefix.size(),
        "the length " + std::to_string(fuzz::Announced(prefix)) + ", found " + std::to_string(length));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::World world;
    VelProtocol_1_0 protocol(TestOptions(), fuzz::World::kSocket);
    fuzz::Choices choices(bytes, size);
    CheckEncoding(protocol, choices.Word());
    CheckDecoding(protocol, choices.Rest());
    return 0;
}
