// RapidCheck wants GoogleTest first.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "protocol/v2_0/VelProtocol_2_0.h"
#include "tests/harness/model/Messages.h"
#include "tests/harness/unit/support/HarnessTest.h"

namespace {

TestOptions RandomOptions(Dice& dice, int protocol) {
    TestOptions options;
    options.protocol = protocol;
    options.closeEarly = static_cast<int>(dice.Pick<int>({0, 0, 0, 1, 2, 3, -1}));
    options.doneDuration = dice.Pick<int>({0, 0, 30, 1440});
    options.sleepForGetFile = dice.Pick<int>({1, 1, 7});
    for (bool* const flag :
         {&options.rehash, &options.invalidEvent, &options.invalidFile, &options.transportException,
          &options.xferInProgress, &options.upgrade, &options.sizeError, &options.configUpdate}) {
        *flag = dice.Hit(flag == &options.configUpdate ? 8 : 3);
    }
    return options;
}

model::Delivery RandomDelivery(Dice& dice, std::size_t size) {
    static const std::vector<int> kErrors = {EINTR, EAGAIN, EIO};
    model::Delivery delivery;
    delivery.prefixError = dice.Hit(20) ? dice.Pick(kErrors) : 0;
    std::size_t left = size;
    while (left > 0) {
        const std::size_t piece = dice.Hit(6) ? dice.Roll(left) + 1 : left;
        delivery.pieces.push_back({piece, dice.Hit(20) ? dice.Pick(kErrors) : 0});
        left -= piece;
    }
    return delivery;
}

void Feed(const std::string& text, const model::Delivery& delivery) {
    if (delivery.prefixError != 0) {
        FeedError(delivery.prefixError);
    }
    FeedBytes(model::LengthPrefix(static_cast<std::uint32_t>(text.size())));
    std::size_t start = 0;
    for (const model::Delivery::Piece& piece : delivery.pieces) {
        if (piece.error != 0) {
            FeedError(piece.error);
        }
        FeedBytes(text.substr(start, piece.size));
        start += piece.size;
    }
}

std::string Shown(const model::Reaction& reaction) {
    std::string lines;
    for (const Entry& entry : reaction.entries) {
        lines += Expected({entry});
    }
    return lines;
}

std::unique_ptr<VelProtocolBase> NewProtocol(const TestOptions& options) {
    if (options.protocol == 2) {
        return std::make_unique<VelProtocol_2_0>(options, kSocket);
    }
    return std::make_unique<VelProtocol_1_0>(options, kSocket);
}

/// Plays one random dialogue with the harness and with the model.
void Compare(Dice dice, int protocol) {
    ResetSocket();
    TakeJournal();
    LogClient::Instance()->ProcessName("velloran");
    LogClient::Instance()->Level(dice.Hit(3) ? static_cast<unsigned int>(dice.Roll(128)) : 127);
    const TestOptions options = RandomOptions(dice, protocol);
    const auto harness = NewProtocol(options);
    const auto model = model::NewModel(options);
    bool isDone = false;
    int connections = 1;
    std::size_t most = 0;
    while (dice.AreLeft()) {
        const model::Element message = RandomMessage(dice, *model, protocol);
        const std::string text = Compact(message);
        const model::Delivery delivery = RandomDelivery(dice, text.size());
        Feed(text, delivery);
        const model::Reaction expected = model->Receive(message, delivery);
        const auto result = harness->HandleMessage();
        RC_ASSERT(TakeJournal() == Shown(expected));
        RC_ASSERT((result == VelProtocolBase::MSG_CLOSE_CLIENT) == expected.closes);
        RC_ASSERT(UnusedScript() == "");
        connections += expected.closes ? 1 : 0;
        most = std::max(most, model->Files().size());
        isDone = isDone || model->LastSent() == "DONE";
    }
    RC_CLASSIFY(isDone, "came to DONE");
    RC_CLASSIFY(connections > 1, "came to a second connection");
    RC_CLASSIFY(most > 2, "had three files or more to receive");
}

rc::Gen<std::vector<unsigned int>> Rolls() {
    return rc::gen::scale(8, rc::gen::container<std::vector<unsigned int>>(rc::gen::inRange(0U, 5040U)));
}

RC_GTEST_PROP(Model, AgreesWithDialect10, ()) {
    Compare(Dice(*Rolls()), 1);
}

RC_GTEST_PROP(Model, AgreesWithDialect20, ()) {
    Compare(Dice(*Rolls()), 2);
}

}  // namespace

int main(int argc, char** argv) {
    setenv("RC_PARAMS", "max_success=2000", 0);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
