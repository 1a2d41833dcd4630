#pragma once

#include <gtest/gtest.h>

#include <experimental/source_location>
#include <string>

/// Where a test called a helper, so that a failure points to the step of the test and not into the helper.
using Here = std::experimental::source_location;

/// Fails the test at the step that `here` names, and ends it.
inline void FailAt(const Here& here, const std::string& message) {
    GTEST_FAIL_AT(here.file_name(), static_cast<int>(here.line())) << message;
}
