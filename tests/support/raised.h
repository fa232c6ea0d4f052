#pragma once
#include <gtest/gtest.h>

#include "common/failure.h"

namespace testing_support {

// The Failure that `action` raises; a test failure (and number 0) when it
// raises none.
template <typename Action>
corvan::Failure Raised(Action&& action) {
    try {
        action();
    } catch (const corvan::Failure& failure) {
        return failure;
    }
    ADD_FAILURE() << "no error raised";
    return corvan::Failure(0, "", "");
}

}  // namespace testing_support
