#include <gtest/gtest.h>

#include <clocale>

#include "common/conversions.h"
#include "common/failure.h"
#include "raised.h"

using namespace corvan;
using testing_support::Raised;

namespace {
template <typename Call>
int32_t FailureNumber(Call&& call) {
    return Raised(call).Number();
}
}  // namespace

TEST(LenientNumber, ReadsTheLeadingNumberAndStopsWhereItCannotContinue) {
    EXPECT_EQ(LenientNumber("12abc"), 12);
    EXPECT_EQ(LenientNumber("   42"), 42);
    EXPECT_EQ(LenientNumber("-3.25xyz"), -3.25);
    EXPECT_EQ(LenientNumber("1.2.3"), 1.2);
    EXPECT_EQ(LenientNumber("1e3"), 1000);
    EXPECT_EQ(LenientNumber("1D2"), 100);
    EXPECT_EQ(LenientNumber("12e"), 12);
    EXPECT_EQ(LenientNumber(".5"), 0.5);
    EXPECT_EQ(LenientNumber("+7"), 7);
    // Blanks, tabs and line feeds are dropped wherever they stand.
    EXPECT_EQ(LenientNumber("1 2\t3"), 123);
}

TEST(LenientNumber, NothingNumericGivesZero) {
    EXPECT_EQ(LenientNumber(""), 0);
    EXPECT_EQ(LenientNumber("   "), 0);
    EXPECT_EQ(LenientNumber("abc"), 0);
    EXPECT_EQ(LenientNumber("-"), 0);
    EXPECT_EQ(LenientNumber("."), 0);
    EXPECT_EQ(LenientNumber("&"), 0);
    EXPECT_EQ(LenientNumber("&H"), 0);
    EXPECT_EQ(LenientNumber("&Q12"), 0);
}

TEST(LenientNumber, RadixPrefixesReadAsSignedPatterns) {
    EXPECT_EQ(LenientNumber("&H10"), 16);
    EXPECT_EQ(LenientNumber("&h1fz"), 31);
    EXPECT_EQ(LenientNumber("&O17"), 15);
    EXPECT_EQ(LenientNumber("&O19"), 1);
    EXPECT_EQ(LenientNumber("&HFFFF"), -1);
    EXPECT_EQ(LenientNumber("&H7FFF"), 32767);
    EXPECT_EQ(LenientNumber("&H10000"), 65536);
    EXPECT_EQ(LenientNumber("&HFFFFFFFF"), -1);
    EXPECT_EQ(FailureNumber([] { LenientNumber("&H100000000"); }), error::kOverflow);
    EXPECT_EQ(FailureNumber([] { LenientNumber("1e400"); }), error::kOverflow);
    EXPECT_EQ(LenientNumber("1e-400"), 0);
    EXPECT_EQ(FailureNumber([] { StrictDouble("123456e305"); }), error::kOverflow);
    EXPECT_EQ(StrictDouble("0.00001e-320"), 0);
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

TEST(LenientLong, RoundsHalvesToEvenInto32Bits) {
    EXPECT_EQ(LenientLong("2.5"), 2);
    EXPECT_EQ(LenientLong("3.5"), 4);
    EXPECT_EQ(LenientLong("-2.5"), -2);
    EXPECT_EQ(LenientLong("2.51"), 3);
    EXPECT_EQ(LenientLong("2147483647"), 2147483647);
    EXPECT_EQ(LenientLong("-2147483648"), INT32_MIN);
    EXPECT_EQ(FailureNumber([] { LenientLong("2147483647.5"); }), error::kOverflow);
    EXPECT_EQ(FailureNumber([] { LenientLong("99999999999"); }), error::kOverflow);
}

TEST(StrictInteger, AcceptsNumbersWithBlanksAndRoundsHalvesToEven) {
    EXPECT_EQ(StrictInteger("  12 "), 12);
    EXPECT_EQ(StrictInteger("-1"), -1);
    EXPECT_EQ(StrictInteger("2.5"), 2);
    EXPECT_EQ(StrictInteger(" 3.5"), 4);
    EXPECT_EQ(StrictInteger("-32768"), -32768);
    EXPECT_EQ(StrictInteger("&H10"), 16);
    EXPECT_EQ(StrictInteger("&HFFFF"), -1);
    EXPECT_EQ(StrictInteger("1e2"), 100);
}

TEST(StrictInteger, RefusesWhatIsNotANumberOrDoesNotFit) {
    for (const char* bad : {"", "   ", "abc", "12abc", "1 2", "0x10", "-", ".", "1e", "&H", "&HZ", "&Q1"}) {
        EXPECT_EQ(FailureNumber([&] { StrictInteger(bad); }), error::kTypeMismatch) << bad;
    }
    EXPECT_EQ(FailureNumber([] { StrictInteger("32768"); }), error::kOverflow);
    EXPECT_EQ(FailureNumber([] { StrictInteger("-32768.6"); }), error::kOverflow);
    EXPECT_EQ(FailureNumber([] { StrictInteger("&H10000"); }), error::kOverflow);
    EXPECT_EQ(StrictLong("&HFFFF"), 65535);
    EXPECT_EQ(StrictLong("&HFFFFFFFF"), -1);
    EXPECT_EQ(FailureNumber([] { StrictLong("2147483648"); }), error::kOverflow);
}

TEST(StrictBoolean, WordsInAnyCaseOrNumbers) {
    EXPECT_TRUE(StrictBoolean("True"));
    EXPECT_TRUE(StrictBoolean("TRUE"));
    EXPECT_TRUE(StrictBoolean("true"));
    EXPECT_FALSE(StrictBoolean("False"));
    EXPECT_FALSE(StrictBoolean("fAlSe"));
    EXPECT_TRUE(StrictBoolean("1"));
    EXPECT_TRUE(StrictBoolean("-1"));
    EXPECT_TRUE(StrictBoolean(" 0.5 "));
    EXPECT_FALSE(StrictBoolean("0"));
    for (const char* bad : {"yes", "", "Tru", "T", "1x"}) {
        EXPECT_EQ(FailureNumber([&] { StrictBoolean(bad); }), error::kTypeMismatch) << bad;
    }
}

TEST(IsNumericText, DecimalWithSignPointAndBlanksOrHexadecimal) {
    for (const char* good : {"0", " 1", "-12", "+3.5", " 2.  ", ".5", "&H10", "&hff", "1E3"}) {
        EXPECT_TRUE(IsNumericText(good)) << good;
    }
    for (const char* bad : {"", " ", "0x10", "abc", "1.2.3", "12abc", "-", "&H", "&H123456789", "1 2"}) {
        EXPECT_FALSE(IsNumericText(bad)) << bad;
    }
}
