#pragma once
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "transfer/clsFTP.h"

namespace transfer_tests {

// The address the http fixture gave in `variable`; empty when it did not run.
inline std::string ServerUrl(const char* variable = "CORVAN_HTTP_URL") {
    const char* url = std::getenv(variable);
    return url ? url : "";
}

// The bytes the test server sends at offsets [0, n).
inline std::string PatternBytes(size_t n) {
    std::string bytes(n, '\0');
    for (size_t i = 0; i < n; ++i) bytes[i] = static_cast<char>(1 + i % 251);
    return bytes;
}

// A FileProgress event: the fraction and the text.
using Progress = std::pair<float, std::string>;

// Records every event of a session.
class EventLog : public corvan::clsFTPEvents {
public:
    void FileProgress(float Percent, const std::string& status) override { progress.push_back({Percent, status}); }
    void StatusChange(std::string& status, int32_t code) override { statuses.emplace_back(status, code); }
    std::vector<Progress> progress;
    std::vector<std::pair<std::string, int32_t>> statuses;
};

}  // namespace transfer_tests
