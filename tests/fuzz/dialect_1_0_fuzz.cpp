// HandleMessage of protocol 1.0, fed sequences of messages from a table, whole and damaged.
#include "protocol/v1_0/VelProtocol_1_0.h"
#include "tests/fuzz/Dialect.h"
#include "tests/fuzz/world/World.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    const TestOptions options = fuzz::ChooseOptions(choices, 1);
    VelProtocol_1_0 harness(options, fuzz::World::kSocket);
    fuzz::PlayDialogue(choices, harness, fuzz::Sender::Dvr_1_0, options);
    return 0;
}
