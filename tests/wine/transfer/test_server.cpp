#include "test_server.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace transfer_tests {

std::string ServerUrl(const char* variable) {
    const char* url = std::getenv(variable);
    return url ? url : "";
}

std::string PatternBytes(size_t n) {
    std::string bytes(n, '\0');
    for (size_t i = 0; i < n; ++i) bytes[i] = static_cast<char>(1 + i % 251);
    return bytes;
}

}  // namespace transfer_tests
