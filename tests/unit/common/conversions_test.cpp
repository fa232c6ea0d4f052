#include <gtest/gtest.h>

#include <clocale>
#include <initializer_list>
#include <utility>

#include "common/conversions.h"
#include "common/failure.h"
#include "raised.h"

using namespace corvan;
using testing_support::Raised;

namespace {

constexpr int32_t kOverflow = error::kOverflow, kMismatch = error::kTypeMismatch;

// One reader against its table: the value each text gives, and the runtime
// error number each of the others raises.
template <typename Read>
void ExpectReads(Read read, std::initializer_list<std::pair<const char*, double>> values,
                 std::initializer_list<std::pair<const char*, int32_t>> errors) {
    for (const auto& [text, value] : values) EXPECT_EQ(static_cast<double>(read(text)), value) << '"' << text << '"';
    for (const auto& [text, number] : errors) EXPECT_EQ(Raised([&] { read(text); }).Number(), number) << '"' << text << '"';
}

}  // namespace

// The longest leading number, blanks dropped wherever they stand; no number
// is 0; &H and &O patterns of 16 and 32 bits read as signed values.
TEST(Conversions, LenientReadsTheLeadingNumber) {
    ExpectReads([](const char* t) { return LenientNumber(t); },
                {{"12abc", 12}, {"   42", 42}, {"-3.25xyz", -3.25}, {"1.2.3", 1.2}, {"1e3", 1000}, {"1D2", 100},
                 {"12e", 12}, {".5", 0.5}, {"+7", 7}, {"1 2\t3", 123}, {"1e-400", 0},
                 {"", 0}, {"abc", 0}, {"-", 0}, {".", 0}, {"&", 0}, {"&H", 0}, {"&Q12", 0},
                 {"&H10", 16}, {"&h1fz", 31}, {"&O17", 15}, {"&O19", 1}, {"&HFFFF", -1}, {"&H7FFF", 32767},
                 {"&H10000", 65536}, {"&HFFFFFFFF", -1}},
                {{"&H100000000", kOverflow}, {"1e400", kOverflow}});
    // Rounded into 32 bits, halves to even.
    ExpectReads([](const char* t) { return LenientLong(t); },
                {{"2.5", 2}, {"3.5", 4}, {"-2.5", -2}, {"2.51", 3}, {"2147483647", 2147483647},
                 {"-2147483648", INT32_MIN}},
                {{"2147483647.5", kOverflow}, {"99999999999", kOverflow}});
}

// Surrounding blanks, a sign, a fraction rounded halves to even, an exponent,
// or a radix pattern in the target's width; anything else is a mismatch.
TEST(Conversions, StrictReadersRefuseWhatIsNotANumberOrDoesNotFit) {
    ExpectReads([](const char* t) { return StrictInteger(t); },
                {{"  12 ", 12}, {"-1", -1}, {"2.5", 2}, {" 3.5", 4}, {"-32768", -32768}, {"&H10", 16},
                 {"&HFFFF", -1}, {"1e2", 100}},
                {{"", kMismatch}, {"   ", kMismatch}, {"abc", kMismatch}, {"12abc", kMismatch}, {"1 2", kMismatch},
                 {"0x10", kMismatch}, {"-", kMismatch}, {".", kMismatch}, {"1e", kMismatch}, {"&H", kMismatch},
                 {"&HZ", kMismatch}, {"&Q1", kMismatch},
                 {"32768", kOverflow}, {"-32768.6", kOverflow}, {"&H10000", kOverflow}});
    ExpectReads([](const char* t) { return StrictLong(t); }, {{"&HFFFF", 65535}, {"&HFFFFFFFF", -1}},
                {{"2147483648", kOverflow}});
    ExpectReads([](const char* t) { return StrictDouble(t); }, {{"0.00001e-320", 0}}, {{"123456e305", kOverflow}});
    ExpectReads([](const char* t) { return StrictBoolean(t); },
                {{"TRUE", 1}, {"fAlSe", 0}, {"1", 1}, {"-1", 1}, {" 0.5 ", 1}, {"0", 0}},
                {{"yes", kMismatch}, {"", kMismatch}, {"Tru", kMismatch}, {"T", kMismatch}, {"1x", kMismatch}});
}

// A host that sets a locale with a decimal comma reads numbers as before.
TEST(Conversions, TheHostsLocaleDoesNotChangeThePoint) {
    const char* used = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE", "German_Germany.1252", "German"})
        if (std::setlocale(LC_ALL, name)) {
            used = name;
            break;
        }
    if (!used) GTEST_SKIP() << "no locale with a decimal comma on this machine";
    const double strict = StrictDouble("2.5"), lenient = LenientNumber("2.5x"), comma = LenientNumber("2,5");
    const int16_t rounded = StrictInteger("2.5");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(strict, 2.5) << used;
    EXPECT_EQ(lenient, 2.5) << used;
    EXPECT_EQ(comma, 2) << used;
    EXPECT_EQ(rounded, 2) << used;
}

TEST(Conversions, IsNumericTextTakesDecimalOrRadixNumbers) {
    for (const char* good : {"0", " 1", "-12", "+3.5", " 2.  ", ".5", "&H10", "&hff", "1E3"}) {
        EXPECT_TRUE(IsNumericText(good)) << good;
    }
    for (const char* bad : {"", " ", "0x10", "abc", "1.2.3", "12abc", "-", "&H", "&H123456789", "1 2"}) {
        EXPECT_FALSE(IsNumericText(bad)) << bad;
    }
}
