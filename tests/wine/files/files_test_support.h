#pragma once
#include <gtest/gtest.h>

#include <string>

#include <windows.h>

#include "common/failure.h"

namespace files_tests {

// The test child program built beside this test program.
inline std::string ChildPath() {
    char self[MAX_PATH];
    const std::string path(self, GetModuleFileNameA(nullptr, self, MAX_PATH));
    return path.substr(0, path.find_last_of('\\') + 1) + "files_child.exe";
}

// The Failure that `action` raises; a test failure when it raises none.
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

}  // namespace files_tests
