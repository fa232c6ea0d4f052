#pragma once
#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "wine_bench.h"

namespace control_tests {

// The messages of the install log, without their time stamps. A line that
// does not carry a time stamp (the rest of a message holding line breaks)
// is kept as it stands. Every stamp must have the log's exact form.
inline std::vector<std::string> LogMessages() {
    static const std::regex stamp(R"(^TimeStamp: \d\d/\d\d/\d{4} - \d\d:\d\d:\d\d\t)");
    std::vector<std::string> messages;
    const std::string text = winbench::ReadFileBytes("C:\\TALO\\SC_Install.log");
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find("\r\n", start), text.size());
        const std::string line = text.substr(start, end - start);
        std::smatch match;
        messages.push_back(std::regex_search(line, match, stamp) ? match.suffix().str() : line);
        start = end + 2;
    }
    return messages;
}

}  // namespace control_tests
