// One line of the trust table, as the configurator takes it apart: any text
// splits into at most four fields without losing a character, and its data
// is written as a 32-bit number exactly when it passes the numeric-text test.
#include <algorithm>
#include <string>

#include "common/conversions.h"
#include "common/failure.h"
#include "fuzz_check.h"
#include "security/registry_line.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace corvan;
    using namespace corvan::security;
    const std::string text = fuzz::Input(data, size).Rest();

    // Line feeds directly before a carriage return go, both characters, and
    // nothing else does.
    const std::string line = WithoutLineFeedReturns(text);
    size_t pairs = 0;
    for (size_t i = 0; i + 1 < text.size(); ++i)
        if (text[i] == '\n' && text[i + 1] == '\r') ++pairs, ++i;
    FUZZ_CHECK(line.size() == text.size() - 2 * pairs);
    if (pairs == 0) FUZZ_CHECK(line == text);

    const RegistryLine fields = SplitRegistryLine(line);
    const size_t commas = std::count(line.begin(), line.end(), ',');
    FUZZ_CHECK(fields.complete == (commas >= 3));
    for (const std::string* field : {&fields.hive, &fields.key, &fields.valueName, &fields.data})
        FUZZ_CHECK(field->find(',') == std::string::npos);
    std::string joined = fields.hive;
    if (commas >= 1) joined += "," + fields.key;
    if (commas >= 2) joined += "," + fields.valueName;
    if (commas >= 3) joined += "," + fields.data;
    // The fields are the line's start; past the fourth nothing is taken.
    FUZZ_CHECK(line.compare(0, joined.size(), joined) == 0);
    FUZZ_CHECK(commas > 3 ? line[joined.size()] == ',' : joined == line);

    const int32_t root = HiveRootKey(fields.hive);
    FUZZ_CHECK(root == 0 || (static_cast<uint32_t>(root) >= 0x80000000u && static_cast<uint32_t>(root) <= 0x80000003u));

    const bool numeric = IsNumericText(fields.data);
    try {
        const RegVariant value = RegistryData(fields.data);
        if (numeric) {
            FUZZ_CHECK(value.Kind() == VariantKind::Long && value.IntegerValue() == StrictLong(fields.data));
        } else {
            FUZZ_CHECK(value.Kind() == VariantKind::String && value.Text() == fields.data);
        }
    } catch (const Failure& failure) {
        // Only a number too large for 32 bits cannot be written.
        FUZZ_CHECK(numeric && failure.Number() == error::kOverflow);
    }

    const std::string message = UpdatingMessage(fields, false);
    FUZZ_CHECK(message.size() >= 9 && message.compare(message.size() - 9, 9, " - Failed") == 0);
    return 0;
}
