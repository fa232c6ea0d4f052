// The runtime's conversions on any text: each either gives a value or raises
// Overflow (6) or Type mismatch (13), never anything else, and the readers
// agree with one another where their rules meet.
#include <cmath>
#include <string>

#include "common/conversions.h"
#include "common/text.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace corvan;
    using fuzz::Try;
    const std::string text = fuzz::Input(data, size).Rest();

    const auto lenient = Try([&] { return LenientNumber(text); });
    const auto lenientLong = Try([&] { return LenientLong(text); });
    const auto strictDouble = Try([&] { return StrictDouble(text); });
    const auto strictLong = Try([&] { return StrictLong(text); });
    const auto strictInteger = Try([&] { return StrictInteger(text); });
    const auto strictBoolean = Try([&] { return StrictBoolean(text); });
    const bool numeric = IsNumericText(text);
    for (int32_t number : {lenient.error, lenientLong.error, strictDouble.error, strictLong.error, strictInteger.error,
                          strictBoolean.error})
        FUZZ_CHECK(number == 0 || number == error::kOverflow || number == error::kTypeMismatch);

    // The lenient reader knows no Type mismatch; its values are finite.
    FUZZ_CHECK(lenient.error != error::kTypeMismatch);
    if (lenient.value) {
        FUZZ_CHECK(std::isfinite(*lenient.value));
        const auto rounded = Try([&] { return RoundToLong(*lenient.value); });
        FUZZ_CHECK(rounded == lenientLong);
    } else {
        FUZZ_CHECK(lenientLong.error == lenient.error);
    }

    // The numeric-text test is exactly "the strict reader finds a number".
    FUZZ_CHECK(numeric == strictDouble.value.has_value());
    if (strictDouble.value) FUZZ_CHECK(std::isfinite(*strictDouble.value));
    // Text that is no number fails every strict reader the same way.
    if (strictDouble.error == error::kTypeMismatch) {
        FUZZ_CHECK(strictLong.error == error::kTypeMismatch && strictInteger.error == error::kTypeMismatch);
    }
    // What fits 16 bits fits 32, with the same low bits (&HFFFF is -1 and
    // 65535).
    if (strictInteger.value) {
        FUZZ_CHECK(strictLong.value);
        FUZZ_CHECK(*strictInteger.value == static_cast<int16_t>(*strictLong.value));
    }
    if (strictLong.value) {
        FUZZ_CHECK(strictDouble.value);
        // A long written in decimal reads back as itself.
        FUZZ_CHECK(StrictLong(std::to_string(*strictLong.value)) == *strictLong.value);
    }

    const bool word = EqualsNoCase(text, "True") || EqualsNoCase(text, "False");
    if (word) {
        FUZZ_CHECK(strictBoolean.value && *strictBoolean.value == EqualsNoCase(text, "True"));
    } else {
        FUZZ_CHECK(strictBoolean.error == strictDouble.error);
        if (strictDouble.value) FUZZ_CHECK(*strictBoolean.value == (*strictDouble.value != 0.0));
    }

    // Blanks around a number change nothing for the strict readers.
    const std::string padded = " \t" + text + " ";
    FUZZ_CHECK(Try([&] { return StrictDouble(padded); }) == strictDouble);
    FUZZ_CHECK(IsNumericText(padded) == numeric);

    // A decimal number without any white space is read the same by the
    // lenient reader, which stops only where the number ends.
    if (strictDouble.value && text.find_first_of(" \t\r\n\v\f") == std::string::npos && text[0] != '&') FUZZ_CHECK(lenient == strictDouble);
    return 0;
}
