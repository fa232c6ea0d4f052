#pragma once
#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "corvan/build_config.h"
#include "platform/clsWindowTools.h"
#include "wine_bench.h"

namespace control_tests {

// The messages of the install log, without their time stamps. A line that
// does not carry a time stamp (the rest of a message holding line breaks)
// is kept as it stands. Every stamp must have the log's exact form.
inline std::vector<std::string> LogMessages() {
    static const std::regex stamp(R"(^TimeStamp: \d\d/\d\d/\d{4} - \d\d:\d\d:\d\d\t)");
    std::vector<std::string> messages;
    std::string text = winbench::ReadFileBytes("C:\\TALO\\SC_Install.log");
    for (size_t start = 0; start < text.size();) {
        size_t end = std::min(text.find("\r\n", start), text.size());
        std::string line = text.substr(start, end - start);
        std::smatch match;
        messages.push_back(std::regex_search(line, match, stamp) ? match.suffix().str() : line);
        start = end + 2;
    }
    return messages;
}

// The 13 header lines and the footer of a session that ran no engine
// operation, given what the machine says.
inline std::vector<std::string> ExpectedSession(const std::string& status, const std::string& groups,
                                                const std::string& instance, const std::string& thread) {
    const std::string rule(85, '-');
    corvan::clsWindowTools tools;
    return {"----------------------------START OF " + status + " -----------------------------------",
            "Application Name: Corvan Connect Client Manager",
            "Application Version: " CORVAN_VERSION_TEXT,
            "hInstance: " + instance,
            "ThreadID: " + thread,
            rule,
            "OS Name: " + tools.VersionName(),
            "OS Version: v" + tools.VersionNo(),
            "OS SP: " + tools.ServicePack(),
            "OS Build: " + tools.BuildNo(),
            rule,
            "Groups: " + groups,
            rule,
            "----------------------------END OF " + status + " -----------------------------------",
            // The footer's bare line break leaves a stamped empty line and an
            // empty line after it.
            "",
            ""};
}

}  // namespace control_tests
