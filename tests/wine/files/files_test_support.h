#pragma once
#include <gtest/gtest.h>

#include <string>

#include <windows.h>

#include "common/failure.h"
#include "raised.h"

namespace files_tests {

// The test child program built beside this test program.
inline std::string ChildPath() {
    char self[MAX_PATH];
    const std::string path(self, GetModuleFileNameA(nullptr, self, MAX_PATH));
    return path.substr(0, path.find_last_of('\\') + 1) + "files_child.exe";
}

using testing_support::Raised;

}  // namespace files_tests
