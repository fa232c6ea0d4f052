#pragma once
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "corvan/build_config.h"
#include "wine_bench.h"

namespace control_tests {

inline constexpr char kLogPath[] = "C:\\TALO\\SC_Install.log";
inline const std::string kRule(85, '-');

// The messages of the install log, without their time stamps. A line that
// does not carry a time stamp (the rest of a message holding line breaks)
// is kept as it stands. Every stamp must have the log's exact form.
inline std::vector<std::string> LogMessages(const std::string& path = kLogPath) {
    static const std::regex stamp(R"(^TimeStamp: \d\d/\d\d/\d{4} - \d\d:\d\d:\d\d\t)");
    std::vector<std::string> messages;
    std::string text = winbench::ReadFileBytes(path);
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find("\r\n", start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        std::smatch match;
        if (std::regex_search(line, match, stamp)) line = match.suffix();
        messages.push_back(line);
        start = end + 2;
    }
    return messages;
}

// The 13 header lines a session writes, given what the machine says.
struct HeaderFacts {
    std::string status, osName, osVersion, servicePack, build, groups;
};

inline std::vector<std::string> ExpectedHeader(const HeaderFacts& facts, const std::string& instance,
                                               const std::string& thread) {
    return {"----------------------------START OF " + facts.status + " -----------------------------------",
            "Application Name: Corvan Connect Client Manager",
            "Application Version: " CORVAN_VERSION_TEXT,
            "hInstance: " + instance,
            "ThreadID: " + thread,
            kRule,
            "OS Name: " + facts.osName,
            "OS Version: v" + facts.osVersion,
            "OS SP: " + facts.servicePack,
            "OS Build: " + facts.build,
            kRule,
            "Groups: " + facts.groups,
            kRule};
}

inline std::vector<std::string> ExpectedFooter(const std::string& status) {
    // The bare line break of the footer leaves a stamped empty line and an
    // empty line after it.
    return {"----------------------------END OF " + status + " -----------------------------------", "", ""};
}

}  // namespace control_tests
