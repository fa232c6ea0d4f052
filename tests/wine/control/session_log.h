#pragma once
// What the tests of whole sessions share: their tables, kept as text in the
// tree, and the install log read back.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "wine_bench.h"

namespace control_tests {

using Texts = std::vector<std::string>;

struct Line {
    int number;
    std::string keyword, text;
};
struct Block {
    std::string name;
    std::vector<Line> lines;
};

// The blocks of the file at `path` under the tree's root: "<start> <name>"
// begins one, every other line is "<keyword> <text>"; blank lines and "#"
// lines are skipped. A missing file gives one block whose line is "missing".
inline std::vector<Block> LoadBlocks(const std::string& path, const std::string& start) {
    const char* root = std::getenv("CORVAN_ROOT");
    std::ifstream file(std::string(root ? root : ".") + "\\" + path);
    std::vector<Block> blocks;
    std::string text;
    for (int number = 1; std::getline(file, text); ++number) {
        while (!text.empty() && (text.back() == '\r' || text.back() == ' ')) text.pop_back();
        if (text.empty() || text.front() == '#') continue;
        const size_t blank = std::min(text.find(' '), text.size());
        Line line{number, text.substr(0, blank), text.substr(std::min(blank + 1, text.size()))};
        if (line.keyword == start) blocks.push_back({line.text, {}});
        else if (!blocks.empty()) blocks.back().lines.push_back(line);
    }
    if (blocks.empty()) blocks.push_back({"table_not_found", {{0, "missing", path}}});
    return blocks;
}

// The parts of `text` between separators; blank text has none.
inline Texts Split(const std::string& text, const std::string& separator) {
    Texts parts;
    if (text.find_first_not_of(' ') == std::string::npos) return parts;
    for (size_t start = 0;;) {
        const size_t end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string::npos) return parts;
        start = end + separator.size();
    }
}

// The messages of the install log, without their time stamps. A line that
// does not carry a time stamp (the rest of a message holding line breaks)
// is kept as it stands. Every stamp must have the log's exact form.
inline Texts LogMessages() {
    static const std::regex stamp(R"(^TimeStamp: \d\d/\d\d/\d{4} - \d\d:\d\d:\d\d\t)");
    Texts messages;
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
