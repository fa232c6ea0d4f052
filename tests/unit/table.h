#pragma once
// Tables of cases kept as text beside the tests (UNIT_DATA, the test's own
// folder). "[name]" starts the table of that name; then one case a line,
// fields split at "|" and trimmed; a field in double quotes keeps its blanks;
// <CR> <LF> <TAB> <NUL> <BAR> and <xHH> stand for their bytes; blank lines
// and lines starting with "#" are skipped.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace unit_table {

// The parts of `text` between each `at`; none for an empty text.
inline std::vector<std::string> Split(const std::string& text, char at) {
    std::vector<std::string> parts;
    for (size_t start = 0, end = 0; !text.empty() && end != std::string::npos; start = end + 1)
        parts.push_back(text.substr(start, (end = text.find(at, start)) - start));
    return parts;
}

inline std::string Decode(std::string text) {
    const size_t a = text.find_first_not_of(' '), b = text.find_last_not_of(' ');
    text = a == std::string::npos ? "" : text.substr(a, b - a + 1);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    const std::pair<std::string, char> names[] = {{"<CR>", '\r'}, {"<LF>", '\n'}, {"<TAB>", '\t'}, {"<NUL>", '\0'}, {"<BAR>", '|'}};
    for (size_t i = 0; i < text.size(); ++i) {
        for (const auto& [name, byte] : names)
            if (text.compare(i, name.size(), name) == 0) text.replace(i, name.size(), 1, byte);
        if (text.compare(i, 2, "<x") == 0 && i + 4 < text.size() && text[i + 4] == '>')
            text.replace(i, 5, 1, static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)));
    }
    return text;
}

struct Row {
    std::string where;  // file:line, for failure messages
    std::vector<std::string> f;
    const std::string& operator[](size_t i) const { return f.at(i); }
};

inline std::vector<Row> Table(const std::string& file, const std::string& name) {
    std::ifstream in(std::string(UNIT_DATA) + "/" + file, std::ios::binary);
    std::vector<Row> rows;
    std::string table, line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        if (line[0] == '[' && line.back() == ']') table = line.substr(1, line.size() - 2);
        if (table != name || line[0] == '[') continue;
        rows.push_back({file + ":" + std::to_string(number), {}});
        for (const std::string& field : Split(line, '|')) rows.back().f.push_back(Decode(field));
    }
    EXPECT_FALSE(rows.empty()) << "no table " << name << " in " << UNIT_DATA << "/" << file;
    return rows;
}

}  // namespace unit_table
