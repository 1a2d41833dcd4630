#include <gtest/gtest.h>

#include <exception>
#include <iostream>
#include <optional>

#include "tests/support/World.h"

/// The tests share one world, where /dev/log is theirs alone.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::optional<World> world;
    try {
        if (not testing::GTEST_FLAG(list_tests)) {
            world.emplace();
        }
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << std::endl;
        return 1;
    }
    return RUN_ALL_TESTS();
}
