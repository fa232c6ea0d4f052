#pragma once
#include <string>
#include <utility>
#include <vector>

#include "transfer/clsFTP.h"

namespace transfer_tests {

// The address of the test server the fixture started; the case is skipped
// with a clear message when the fixture did not run.
std::string ServerUrl(const char* variable = "CORVAN_HTTP_URL");

// The bytes the test server sends at offsets [0, n).
std::string PatternBytes(size_t n);

struct Progress {
    float percent;
    std::string text;
    bool operator==(const Progress& other) const { return percent == other.percent && text == other.text; }
};

// Records every event of a session.
class EventLog : public corvan::clsFTPEvents {
public:
    void FileProgress(float Percent, const std::string& status) override { progress.push_back({Percent, status}); }
    void StatusChange(std::string& status, int32_t code) override { statuses.emplace_back(status, code); }
    std::vector<Progress> progress;
    std::vector<std::pair<std::string, int32_t>> statuses;
};

}  // namespace transfer_tests
