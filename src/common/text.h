#pragma once
#include <string>
#include <string_view>

namespace corvan {

// Blanks only, as the runtime's Trim does: tabs and line breaks stay.
std::string Trim(std::string_view text);
std::string LTrim(std::string_view text);
std::string RTrim(std::string_view text);

std::string UpperCase(std::string_view text);
// The same folding, in place (no new text for a lookup key).
void UpperCaseInPlace(std::string& text);
std::string LowerCase(std::string_view text);
bool EqualsNoCase(std::string_view a, std::string_view b);
bool EndsWith(std::string_view text, std::string_view tail);

// The runtime's form of a Boolean in text: "True" or "False".
const char* BooleanText(bool value);

}  // namespace corvan
