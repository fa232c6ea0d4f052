#pragma once
// Tables of cases kept as text beside the tests (UNIT_DATA, the test's own
// folder). One case a line, fields split at "|" and trimmed; a field in
// double quotes keeps its blanks; <CR> <LF> <TAB> <NUL> <BAR> and <xHH> stand
// for their bytes. "[name]" starts the table of that name; blank lines and
// lines starting with "#" are skipped.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace unit_table {

struct Row {
    std::string where;  // file:line, for failure messages
    std::vector<std::string> f;
    const std::string& operator[](size_t i) const { return f.at(i); }
};

inline std::string Decode(std::string text) {
    size_t a = text.find_first_not_of(' '), b = text.find_last_not_of(' ');
    text = a == std::string::npos ? "" : text.substr(a, b - a + 1);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    static const std::pair<const char*, char> names[] = {{"<CR>", '\r'}, {"<LF>", '\n'}, {"<TAB>", '\t'},
                                                        {"<NUL>", '\0'}, {"<BAR>", '|'}};
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        bool named = false;
        for (auto [name, byte] : names)
            if (text.compare(i, std::char_traits<char>::length(name), name) == 0) {
                out += byte, i += std::char_traits<char>::length(name) - 1, named = true;
                break;
            }
        if (!named && text.compare(i, 2, "<x") == 0 && i + 4 < text.size() && text[i + 4] == '>')
            out += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)), i += 4, named = true;
        if (!named) out += text[i];
    }
    return out;
}

// The rows of table `name` in `file`.
inline std::vector<Row> Table(const std::string& file, const std::string& name) {
    std::ifstream in(std::string(UNIT_DATA) + "/" + file, std::ios::binary);
    EXPECT_TRUE(in) << "cannot read " << UNIT_DATA << "/" << file;
    std::vector<Row> rows;
    std::string table, line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        if (line[0] == '[' && line.back() == ']') {
            table = line.substr(1, line.size() - 2);
        } else if (table == name) {
            Row row{file + ":" + std::to_string(number), {}};
            for (size_t start = 0, bar;; start = bar + 1) {
                bar = line.find('|', start);
                row.f.push_back(Decode(line.substr(start, bar - start)));
                if (bar == std::string::npos) break;
            }
            rows.push_back(row);
        }
    }
    EXPECT_FALSE(rows.empty()) << "no table " << name << " in " << file;
    return rows;
}

}  // namespace unit_table
