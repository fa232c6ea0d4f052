#include "common/text.h"

#include <algorithm>

namespace corvan {

namespace {
// Case folding of the Latin letters only: the keys and names compared here
// are ASCII, and a byte of another code page must never change meaning.
char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
}  // namespace

std::string LTrim(std::string_view text) {
    size_t start = text.find_first_not_of(' ');
    return start == std::string_view::npos ? std::string() : std::string(text.substr(start));
}

std::string RTrim(std::string_view text) {
    size_t end = text.find_last_not_of(' ');
    return end == std::string_view::npos ? std::string() : std::string(text.substr(0, end + 1));
}

std::string Trim(std::string_view text) { return LTrim(RTrim(text)); }

std::string UpperCase(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), Upper);
    return out;
}

void UpperCaseInPlace(std::string& text) { std::transform(text.begin(), text.end(), text.begin(), Upper); }

std::string LowerCase(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), Lower);
    return out;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Upper(x) == Upper(y); });
}

bool EndsWith(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

const char* BooleanText(bool value) { return value ? "True" : "False"; }

}  // namespace corvan
