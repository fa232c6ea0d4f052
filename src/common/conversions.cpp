#include "common/conversions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "common/failure.h"
#include "common/text.h"

namespace corvan {

namespace {

const char kSource[] = "CorvanInstaller";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWhite(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Reads the digits of an &H or &O number starting at `pos`. Returns the bit
// pattern, or nothing when it has more than 32 bits.
std::optional<uint64_t> ReadRadixDigits(std::string_view text, size_t& pos, int radix) {
    uint64_t bits = 0;
    while (pos < text.size()) {
        int digit = HexValue(text[pos]);
        if (digit < 0 || digit >= radix) break;
        bits = bits * radix + digit;
        if (bits > 0xFFFFFFFFull) return std::nullopt;
        ++pos;
    }
    return bits;
}

// For a number beyond the range of a double: true when it is too large,
// false when it is too small (its first significant digit stands far right
// of the point).
bool TooLarge(const std::string& number) {
    const size_t e = number.find_first_of("eE");
    const std::string mantissa = number.substr(0, e);
    long exponent = 0;
    if (e != std::string::npos) {
        const char* first = number.data() + e + 1;
        if (*first == '+') ++first;
        if (std::from_chars(first, number.data() + number.size(), exponent).ec != std::errc())
            exponent = *first == '-' ? -100000 : 100000;  // more digits than a long holds
    }
    const size_t point = std::min(mantissa.find('.'), mantissa.size());
    const size_t significant = mantissa.find_first_of("123456789");
    if (significant == std::string::npos) return false;
    const long position = significant < point ? static_cast<long>(point - significant)
                                              : -static_cast<long>(significant - point - 1);
    // Compared rather than added: the exponent may be as large as a long.
    return exponent > -position;
}

// Converts a decimal number already checked for shape ("-12.5E3"; a D
// exponent is allowed) without any locale.
double DecimalValue(std::string_view number) {
    std::string normal(number);
    if (!normal.empty() && normal[0] == '+') normal.erase(0, 1);
    for (char& c : normal) {
        if (c == 'd' || c == 'D') c = 'e';
    }
    if (normal.empty() || normal == "-") return 0.0;
    // The point is always '.', whatever locale the host process has set.
    // Underflow reads as zero, as the runtime's does; a number beyond the
    // double range overflows.
    double value = 0.0;
    const std::from_chars_result read = std::from_chars(normal.data(), normal.data() + normal.size(), value);
    if (read.ec == std::errc::result_out_of_range) {
        if (TooLarge(normal)) throw RuntimeError(error::kOverflow, kSource);
        return 0.0;
    }
    if (read.ec != std::errc() || !std::isfinite(value)) throw RuntimeError(error::kOverflow, kSource);
    return value;
}

// Length of the longest decimal number at the start of `text`: sign, digits,
// one point, exponent with digits. `digits` tells whether the mantissa has any.
size_t ScanDecimal(std::string_view text, bool& digits) {
    size_t pos = 0;
    digits = false;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) ++pos;
    while (pos < text.size() && IsDigit(text[pos])) { ++pos; digits = true; }
    if (pos < text.size() && text[pos] == '.') {
        ++pos;
        while (pos < text.size() && IsDigit(text[pos])) { ++pos; digits = true; }
    }
    if (digits && pos < text.size() && (text[pos] == 'e' || text[pos] == 'E' || text[pos] == 'd' || text[pos] == 'D')) {
        size_t exp = pos + 1;
        if (exp < text.size() && (text[exp] == '+' || text[exp] == '-')) ++exp;
        if (exp < text.size() && IsDigit(text[exp])) {
            while (exp < text.size() && IsDigit(text[exp])) ++exp;
            pos = exp;
        }
    }
    return pos;
}

struct StrictNumber {
    bool radix = false;
    uint64_t bits = 0;   // radix numbers: the bit pattern
    double value = 0.0;  // decimal numbers
};

// The strict reader; nothing when the text is not a number.
std::optional<StrictNumber> ParseStrict(std::string_view text) {
    size_t begin = 0, end = text.size();
    while (begin < end && IsWhite(text[begin])) ++begin;
    while (end > begin && IsWhite(text[end - 1])) --end;
    std::string_view body = text.substr(begin, end - begin);
    if (body.empty()) return std::nullopt;

    StrictNumber number;
    if (body[0] == '&' && body.size() > 2) {
        int radix = (body[1] == 'h' || body[1] == 'H') ? 16 : (body[1] == 'o' || body[1] == 'O') ? 8 : 0;
        if (radix == 0) return std::nullopt;
        size_t pos = 2;
        std::optional<uint64_t> bits = ReadRadixDigits(body, pos, radix);
        if (!bits) throw RuntimeError(error::kOverflow, kSource);
        if (pos != body.size()) return std::nullopt;
        number.radix = true;
        number.bits = *bits;
        return number;
    }
    bool digits = false;
    size_t length = ScanDecimal(body, digits);
    if (!digits || length != body.size()) return std::nullopt;
    number.value = DecimalValue(body);
    return number;
}

StrictNumber ParseStrictOrFail(std::string_view text) {
    std::optional<StrictNumber> number = ParseStrict(text);
    if (!number) throw RuntimeError(error::kTypeMismatch, kSource);
    return *number;
}

}  // namespace

double LenientNumber(std::string_view text) {
    std::string packed;
    packed.reserve(text.size());
    for (char c : text) {
        if (c != ' ' && c != '\t' && c != '\n') packed += c;
    }
    if (packed.size() >= 2 && packed[0] == '&') {
        int radix = (packed[1] == 'h' || packed[1] == 'H') ? 16 : (packed[1] == 'o' || packed[1] == 'O') ? 8 : 0;
        if (radix == 0) return 0.0;
        size_t pos = 2;
        std::optional<uint64_t> bits = ReadRadixDigits(packed, pos, radix);
        if (!bits) throw RuntimeError(error::kOverflow, kSource);
        if (*bits <= 0xFFFF) return static_cast<int16_t>(static_cast<uint16_t>(*bits));
        return static_cast<int32_t>(static_cast<uint32_t>(*bits));
    }
    bool digits = false;
    size_t length = ScanDecimal(packed, digits);
    if (!digits) return 0.0;
    return DecimalValue(std::string_view(packed).substr(0, length));
}

int32_t RoundToLong(double value) {
    double rounded = std::nearbyint(value);  // the default mode rounds halves to even
    if (!(rounded >= -2147483648.0 && rounded <= 2147483647.0)) throw RuntimeError(error::kOverflow, kSource);
    return static_cast<int32_t>(rounded);
}

int16_t RoundToInteger(double value) {
    double rounded = std::nearbyint(value);
    if (!(rounded >= -32768.0 && rounded <= 32767.0)) throw RuntimeError(error::kOverflow, kSource);
    return static_cast<int16_t>(rounded);
}

int32_t LenientLong(std::string_view text) { return RoundToLong(LenientNumber(text)); }

int16_t StrictInteger(std::string_view text) {
    StrictNumber number = ParseStrictOrFail(text);
    if (number.radix) {
        if (number.bits > 0xFFFF) throw RuntimeError(error::kOverflow, kSource);
        return static_cast<int16_t>(static_cast<uint16_t>(number.bits));
    }
    return RoundToInteger(number.value);
}

int32_t StrictLong(std::string_view text) {
    StrictNumber number = ParseStrictOrFail(text);
    if (number.radix) return static_cast<int32_t>(static_cast<uint32_t>(number.bits));
    return RoundToLong(number.value);
}

double StrictDouble(std::string_view text) {
    StrictNumber number = ParseStrictOrFail(text);
    if (number.radix) return static_cast<int32_t>(static_cast<uint32_t>(number.bits));
    return number.value;
}

bool StrictBoolean(std::string_view text) {
    if (EqualsNoCase(text, "True")) return true;
    if (EqualsNoCase(text, "False")) return false;
    return StrictDouble(text) != 0.0;
}

bool IsNumericText(std::string_view text) {
    try {
        return ParseStrict(text).has_value();
    } catch (const Failure&) {
        return false;
    }
}

}  // namespace corvan
