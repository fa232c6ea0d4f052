#include "files/list_rows.h"

namespace corvan {
namespace {
bool IsLineBreak(char c) { return c == '\r' || c == '\n'; }
}  // namespace

std::vector<size_t> IndexListRows(std::string_view text) {
    std::vector<size_t> starts(1, 0);
    for (size_t i = text.find('\r'); i != std::string_view::npos; i = text.find('\r', i + 1)) starts.push_back(i);
    return starts;
}

std::string_view ListRow(std::string_view text, const std::vector<size_t>& starts, int32_t index) {
    if (text.empty() || index < 1 || static_cast<size_t>(index) > starts.size()) return {};
    const size_t begin = starts[index - 1];
    const size_t end = static_cast<size_t>(index) < starts.size() ? starts[index] : text.size();
    size_t from = begin, to = end;
    while (from < to && IsLineBreak(text[from])) ++from;
    while (to > from && IsLineBreak(text[to - 1])) --to;
    return text.substr(from, to - from);
}

}  // namespace corvan
