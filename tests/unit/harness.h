#pragma once
// The unit tests' one harness: a scratch folder, and tables of cases kept as
// text beside the tests (UNIT_DATA, this folder). "[name]" starts a table; one
// case a line, its fields split at "|" and trimmed ("..." keeps blanks); <CR>
// <LF> <TAB> <NUL> <xHH> stand for their bytes; blank and "#" lines skipped.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include "raised.h"

using namespace corvan;
using testing_support::Raised;

inline std::string ReadAll(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// A folder of its own in the temporary folder, removed with the object.
struct Scratch {
    const std::string dir =
        (std::filesystem::temp_directory_path() / ("corvan-unit-" + std::to_string(std::random_device()()))).string();
    Scratch() { std::filesystem::create_directories(dir); }
    ~Scratch() { std::error_code ignored; std::filesystem::remove_all(dir, ignored); }
    std::string Path(const std::string& name) const { return (std::filesystem::path(dir) / name).string(); }
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }
};

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
    const std::pair<std::string, char> names[] = {{"<CR>", '\r'}, {"<LF>", '\n'}, {"<TAB>", '\t'}, {"<NUL>", '\0'}};
    for (size_t i = 0; i < text.size(); ++i) {
        for (const auto& [name, byte] : names)
            if (text.compare(i, name.size(), name) == 0) text.replace(i, name.size(), 1, byte);
        if (text.compare(i, 2, "<x") == 0 && i + 4 < text.size() && text[i + 4] == '>')
            text.replace(i, 5, 1, static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)));
    }
    return text;
}

// Packing-list rows in short: rows separated by ";" (an empty one a blank
// line), each its values separated by "/" for the columns `columns` names, in
// that order, of `base`, whose other columns stay; InstallFileName (16) is
// FileName (2). Each row ends in CR LF; "=" starts a list taken as it stands.
inline std::string Rows(const std::string& shorthand, const std::string& base, const std::vector<int>& columns) {
    if (shorthand.rfind('=', 0) == 0) return shorthand.substr(1);
    std::string text;
    for (const std::string& row : Split(shorthand, ';')) {
        std::vector<std::string> fields = Split(base, ','), values = Split(Decode(row), '/');
        for (size_t i = 0; i < values.size(); ++i) fields[columns[i]] = values[i];
        fields[16] = fields[2];
        for (size_t i = 0; !values.empty() && i < fields.size(); ++i) text += (i ? "," : "") + fields[i];
        text += "\r\n";
    }
    return text;
}

struct Row {
    std::string where;  // file:line, for failure messages
    std::vector<std::string> f;
    const std::string& operator[](size_t i) const { return f.at(i); }
};

// The table `name` of `file` (a path under UNIT_DATA).
inline std::vector<Row> Table(const std::string& file, const std::string& name) {
    std::vector<Row> rows;
    std::string table;
    int number = 0;
    for (std::string line : Split(ReadAll(UNIT_DATA "/" + file), '\n')) {
        if (++number, !line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        if (line[0] == '[' && line.back() == ']') table = line.substr(1, line.size() - 2);
        if (table != name || line[0] == '[') continue;
        rows.push_back({file + ":" + std::to_string(number), {}});
        for (const std::string& field : Split(line, '|')) rows.back().f.push_back(Decode(field));
    }
    EXPECT_FALSE(rows.empty()) << "no table " << name << " in " << UNIT_DATA << "/" << file;
    return rows;
}
