#pragma once
#include <cstdint>
#include <string_view>

// Text-to-number conversions with the rules of the runtime the system was
// first written for. Failures are Failure objects with the runtime's numbers:
// 13 "Type mismatch" for text that is no number, 6 "Overflow" for a number
// that does not fit.
namespace corvan {

// The lenient reader (the runtime's Val): blanks, tabs and line feeds are
// dropped wherever they stand, then the longest leading number is read:
// sign, digits, one point, an exponent E or D; or &H hexadecimal / &O octal,
// whose 16-bit and 32-bit patterns read as signed values (&HFFFF is -1).
// Text without a number gives 0. Only an exponent or a radix number too large
// to represent fails (Overflow).
double LenientNumber(std::string_view text);

// Rounds to the nearest integer, halves to even; Overflow when out of range.
int32_t RoundToLong(double value);
int16_t RoundToInteger(double value);

// LenientNumber rounded into 32 bits.
int32_t LenientLong(std::string_view text);

// Strict conversions: surrounding white space allowed, a sign, a decimal
// fraction (rounded halves to even) and an exponent; or &H / &O whose bit
// pattern is taken in the target's width. Anything else is Type mismatch.
int16_t StrictInteger(std::string_view text);
int32_t StrictLong(std::string_view text);
double StrictDouble(std::string_view text);

// "True"/"False" in any letter case, or a number (non-zero is true).
bool StrictBoolean(std::string_view text);

// The numeric-text test: a decimal number with optional sign, point,
// exponent and surrounding white space, or an &H / &O number.
bool IsNumericText(std::string_view text);

}  // namespace corvan
