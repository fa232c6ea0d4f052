#pragma once
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace corvan {

// The rows of a list file as the client has always read them: the text up to
// the first carriage return is row 1 and every carriage return starts one
// more, so the row count is the number of carriage returns. A last row with
// no line break after it is therefore never counted, and a line feed alone
// does not end a row.

// Offsets where the rows begin: entry 0 is the start of the text, then one
// entry per carriage return (the row count is the size less one).
std::vector<size_t> IndexListRows(std::string_view text);

// Row `index` (1-based) of `text`, indexed by IndexListRows, without the
// line-break characters at its ends; empty past the last row. The text after
// the last carriage return is row count + 1. The view points into `text`.
std::string_view ListRow(std::string_view text, const std::vector<size_t>& starts, int32_t index);

}  // namespace corvan
