#pragma once

#include <string>
#include <vector>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "tests/harness/unit/support/HarnessTest.h"

/// A test of reading frames.
class GetMessage : public HarnessTest {
 protected:
    /// @return the bytes that the next frame leaves in the buffer, without the NUL that must end them
    std::string Message() {
        std::vector<char> message;
        protocol.GetMessage(message);
        return WithoutNul(message);
    }

    static std::string WithoutNul(const std::vector<char>& message) {
        EXPECT_FALSE(message.empty());
        EXPECT_EQ(message.back(), 0);
        return std::string(message.begin(), message.end() - 1);
    }

    static Entry Slice(const std::string& range, const std::string& text) {
        return Logged(32, "GetMessage:incoming message, bytes " + range + ":" + text);
    }

    /// `size` bytes that differ from place to place.
    static std::string Text(std::size_t size) {
        std::string text;
        for (std::size_t index = 0; text.size() < size; ++index) {
            text += std::to_string(index) + ",";
        }
        return text.substr(0, size);
    }

    VelProtocol_1_0 protocol{TestOptions(), kSocket};
};
