#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "protocol/v2_0/VelProtocol_2_0.h"
#include "tests/harness/unit/support/HarnessTest.h"

namespace {

using FileList = std::list<std::pair<std::string, std::string>>;

static_assert(std::is_abstract_v<VelProtocolBase>);
static_assert(std::has_virtual_destructor_v<VelProtocolBase>);
static_assert(std::is_convertible_v<VelProtocol_1_0*, VelProtocolBase*>);
static_assert(std::is_convertible_v<VelProtocol_2_0*, VelProtocolBase*>);
static_assert(std::is_same_v<decltype(VelProtocolBase::closeEarly), int>);
static_assert(std::is_same_v<decltype(VelProtocolBase::doneDuration), int>);
static_assert(std::is_same_v<decltype(VelProtocolBase::sleepForGetFile), int>);
static_assert(std::is_same_v<decltype(VelProtocolBase::protocol), int>);
static_assert(std::is_same_v<decltype(VelProtocolBase::socketFd), int>);
static_assert(std::is_same_v<decltype(VelProtocolBase::filesToReceive), FileList>);
static_assert(std::is_same_v<decltype(VelProtocolBase::events), std::list<std::string>>);
static_assert(std::is_same_v<decltype(VelProtocol_2_0::invalidFileCount), std::uint32_t>);
static_assert(VelProtocolBase::MSG_CONTINUE == 0);
static_assert(VelProtocolBase::MSG_CLOSE_CLIENT == 1);

template <typename T>
class EachDialect : public HarnessTest {};
using Dialects = ::testing::Types<VelProtocol_1_0, VelProtocol_2_0>;
TYPED_TEST_SUITE(EachDialect, Dialects);

TYPED_TEST(EachDialect, StartsWithTheDefaults) {
    const TypeParam protocol(TestOptions(), kSocket);
    EXPECT_EQ(protocol.closeEarly, 0);
    EXPECT_EQ(protocol.doneDuration, 0);
    EXPECT_EQ(protocol.sleepForGetFile, 1);
    EXPECT_EQ(protocol.protocol, 1);
    EXPECT_FALSE(protocol.rehash);
    EXPECT_FALSE(protocol.invalidEvent);
    EXPECT_FALSE(protocol.invalidFile);
    EXPECT_FALSE(protocol.transportException);
    EXPECT_FALSE(protocol.xferInProgress);
    EXPECT_FALSE(protocol.upgrade);
    EXPECT_FALSE(protocol.sizeError);
    EXPECT_FALSE(protocol.configUpdate);
    EXPECT_EQ(protocol.socketFd, kSocket);
    EXPECT_TRUE(protocol.filesToReceive.empty());
    EXPECT_TRUE(protocol.events.empty());
}

TYPED_TEST(EachDialect, TakesOverTheNumbers) {
    TestOptions options;
    options.closeEarly = 11;
    options.doneDuration = 12;
    options.sleepForGetFile = 13;
    options.protocol = 2;
    const TypeParam protocol(options, 14);
    EXPECT_EQ(protocol.closeEarly, 11);
    EXPECT_EQ(protocol.doneDuration, 12);
    EXPECT_EQ(protocol.sleepForGetFile, 13);
    EXPECT_EQ(protocol.protocol, 2);
    EXPECT_EQ(protocol.socketFd, 14);
}

TYPED_TEST(EachDialect, TakesOverEachSwitchAsItself) {
    const std::pair<bool TestOptions::*, bool VelProtocolBase::*> switches[] = {
        {&TestOptions::rehash, &VelProtocolBase::rehash},
        {&TestOptions::invalidEvent, &VelProtocolBase::invalidEvent},
        {&TestOptions::invalidFile, &VelProtocolBase::invalidFile},
        {&TestOptions::transportException, &VelProtocolBase::transportException},
        {&TestOptions::xferInProgress, &VelProtocolBase::xferInProgress},
        {&TestOptions::upgrade, &VelProtocolBase::upgrade},
        {&TestOptions::sizeError, &VelProtocolBase::sizeError},
        {&TestOptions::configUpdate, &VelProtocolBase::configUpdate}};
    for (const auto& given : switches) {
        TestOptions options;
        options.*given.first = true;
        const TypeParam protocol(options, kSocket);
        for (const auto& other : switches) {
            EXPECT_EQ(protocol.*other.second, other == given);
        }
    }
}

TYPED_TEST(EachDialect, DoesNothingInItsConstructorAndItsDestructor) {
    TestOptions options;
    options.upgrade = true;
    options.configUpdate = true;
    options.sizeError = true;
    {
        const std::unique_ptr<VelProtocolBase> protocol = std::make_unique<TypeParam>(options, kSocket);
        protocol->filesToReceive.emplace_back("E1", "a");
        protocol->events.emplace_back("E1");
    }
    EXPECT_JOURNAL(Nothing());
}

TYPED_TEST(EachDialect, KeepsItsMembersInOrder) {
    const TypeParam object(TestOptions(), kSocket);
    const void* const members[] = {
        &object.closeEarly,     &object.doneDuration,   &object.sleepForGetFile, &object.protocol,
        &object.rehash,         &object.invalidEvent,   &object.invalidFile,     &object.transportException,
        &object.xferInProgress, &object.upgrade,        &object.sizeError,       &object.configUpdate,
        &object.socketFd,       &object.filesToReceive, &object.events};
    for (std::size_t index = 1; index < std::size(members); ++index) {
        EXPECT_LT(members[index - 1], members[index]) << index;
    }
}

TEST(NewerDialect, StartsWithNothingPending) {
    const VelProtocol_2_0 protocol(TestOptions(), kSocket);
    EXPECT_EQ(protocol.invalidFileCount, 0U);
    EXPECT_FALSE(protocol.fileRequestPending);
    EXPECT_FALSE(protocol.eventRequestPending);
    EXPECT_FALSE(protocol.rehashPending);
}

TEST(NewerDialect, KeepsItsOwnMembersBehindThoseOfBoth) {
    const VelProtocol_2_0 object(TestOptions(), kSocket);
    const void* const members[] = {&object.events, &object.invalidFileCount, &object.fileRequestPending,
                                   &object.eventRequestPending, &object.rehashPending};
    for (std::size_t index = 1; index < std::size(members); ++index) {
        EXPECT_LT(members[index - 1], members[index]) << index;
    }
}

#if defined(__x86_64__) or defined(__i386__)
/// @return the slot of a virtual member function, counted from 0; -1 for an ordinary one. In the C++ ABI of
/// these machines, a pointer to a virtual member function holds 1 plus the slot's offset.
template <typename Function>
int Slot(Function function) {
    std::uintptr_t word = 0;
    memcpy(&word, &function, sizeof word);
    return word % 2 == 0 ? -1 : static_cast<int>((word - 1) / sizeof word);
}

/// Adds a virtual function, which gets the first slot that is free.
template <typename Class>
struct Extended : Class {
    virtual void Next();
};

TEST(VirtualSlots, HoldTwoDestructorsAndHandleMessage) {
    EXPECT_EQ(Slot(&VelProtocolBase::HandleMessage), 2);
    EXPECT_EQ(Slot(&VelProtocol_1_0::HandleMessage), 2);
    EXPECT_EQ(Slot(&VelProtocol_2_0::HandleMessage), 2);
}

TEST(VirtualSlots, HoldNoOtherFunction) {
    EXPECT_EQ(Slot(&Extended<VelProtocolBase>::Next), 3);
    EXPECT_EQ(Slot(&Extended<VelProtocol_1_0>::Next), 3);
    EXPECT_EQ(Slot(&Extended<VelProtocol_2_0>::Next), 3);
}
#endif

}  // namespace
