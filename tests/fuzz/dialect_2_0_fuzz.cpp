// HandleMessage of protocol 2.0, fed sequences of messages from a table, whole and damaged.
#include "protocol/v2_0/VelProtocol_2_0.h"
#include "tests/fuzz/Dialect.h"
#include "tests/fuzz/world/World.h"

namespace {

/// The harness keeps the last hash for as long as its process lives; here each input starts with none.
void ForgetLastHash() {
    fuzz::World world;
    VelProtocol_2_0 harness(TestOptions(), fuzz::World::kSocket);
    const std::string text = R"(<msg req="FILE_COMPLETE" reid="" file="" hashCode=""/>)";
    world.Feed(fuzz::Prefix(static_cast<std::uint32_t>(text.size())) + text);
    harness.HandleMessage();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    ForgetLastHash();
    fuzz::Choices choices(bytes, size);
    const TestOptions options = fuzz::ChooseOptions(choices, 2);
    VelProtocol_2_0 harness(options, fuzz::World::kSocket);
    fuzz::PlayDialogue(choices, harness, fuzz::Sender::Dvr_2_0, options);
    return 0;
}
