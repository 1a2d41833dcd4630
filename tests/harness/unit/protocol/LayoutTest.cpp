#include <gtest/gtest.h>

#include <cstdint>
#include <list>
#include <string>
#include <utility>
#include <vector>

// The protocol classes without a byte of padding in which a further member could hide. In a namespace of
// their own, as they are not the classes that the harness is made of; what their headers include is included
// above.
namespace packed {
#pragma pack(push, 1)
#include "protocol/v1_0/VelProtocol_1_0.h"
#include "protocol/v2_0/VelProtocol_2_0.h"
#pragma pack(pop)
}  // namespace packed

namespace {

constexpr std::size_t kTableOfFunctions = sizeof(void*);
constexpr std::size_t kNumbers = 4 * sizeof(std::int32_t);
constexpr std::size_t kSwitches = 8 * sizeof(bool);
constexpr std::size_t kSocketNumber = sizeof(std::int32_t);
constexpr std::size_t kLists =
    sizeof(std::list<std::pair<std::string, std::string>>) + sizeof(std::list<std::string>);
constexpr std::size_t kBothDialects = kTableOfFunctions + kNumbers + kSwitches + kSocketNumber + kLists;
constexpr std::size_t kCountAndPending = sizeof(std::uint32_t) + 3 * sizeof(bool);

TEST(Layout, HasNoFurtherMember) {
    EXPECT_EQ(sizeof(packed::VelProtocolBase), kBothDialects);
    EXPECT_EQ(sizeof(packed::VelProtocol_1_0), kBothDialects);
    EXPECT_EQ(sizeof(packed::VelProtocol_2_0), kBothDialects + kCountAndPending);
}

}  // namespace
