#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace corvan::scl {

// Packing lists are read by the client in the dealer PC's ANSI code page,
// Windows-1252 on the western Windows the dealers run; manifests and JSON
// are UTF-8.

// The Windows-1252 bytes of UTF-8 text; nothing when the text is not UTF-8
// or holds a character that Windows-1252 has no byte for.
std::optional<std::string> Utf8ToAnsi(std::string_view utf8);

// UTF-8 of Windows-1252 bytes. The five bytes the code page leaves unused
// become the control characters of the same number, as Windows maps them.
std::string AnsiToUtf8(std::string_view ansi);

}  // namespace corvan::scl
