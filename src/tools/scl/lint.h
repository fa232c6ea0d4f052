#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvan::scl {

struct LintOptions {
    // The Windows version names (as the client's VersionName gives them) the
    // list must serve. Empty: rows are not checked against any.
    std::vector<std::string> osNames;
    // A folder holding the packages; empty: CRCs are not checked against files.
    std::string filesDir;
};

struct LintProblem {
    int64_t line = 0;     // 1-based line of the list as an editor numbers it
    std::string column;   // a column name, or "row" or "list"
    std::string message;
};

// Every problem of a packing list's text as the client would read it, in
// line order. The text is taken as it is on disk (ANSI, CR LF).
std::vector<LintProblem> LintList(std::string_view text, const LintOptions& options);

}  // namespace corvan::scl
