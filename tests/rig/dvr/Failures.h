#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "rig/dvr/Failure.h"

/// @return the text of the Failure that the action must throw with this status; empty after a test failure
inline std::string FailureOf(rig::dvr::ExitStatus status, const std::function<void()>& action) {
    try {
        action();
    } catch (const rig::dvr::Failure& failure) {
        EXPECT_EQ(failure.Status(), status) << failure.what();
        return failure.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
}

/// @return what the Breach says was found
inline std::string BreachOf(const std::function<void()>& action) {
    return FailureOf(rig::dvr::ExitStatus::ProtocolBroken, action);
}
