// The install log's line and the trace's prefix, body and numbers: for any
// message and any moment the clock can give, the line reads back as that
// moment and that message; numbers come out in the runtime's text form and
// read back as the value to their precision. A moment no clock gives
// (fields out of range) must still never write past the formats' buffers.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "common/clock.h"
#include "fuzz_check.h"
#include "logging/log_line.h"
#include "logging/trace_text.h"

namespace {

using corvan::LocalTime;

// Whether `text` starts with `when` laid out as `layout`: each letter a
// digit of its field (Y year, M month, D day, h hour, m minute, s second),
// any other character itself.
bool ReadsAs(const std::string& text, const std::string& layout, const LocalTime& when) {
    std::map<char, long> read;
    if (text.size() < layout.size()) return false;
    for (size_t i = 0; i < layout.size(); ++i) {
        if (!std::isalpha(static_cast<unsigned char>(layout[i]))) {
            if (text[i] != layout[i]) return false;
        } else if (text[i] < '0' || text[i] > '9') {
            return false;
        } else {
            read[layout[i]] = read[layout[i]] * 10 + (text[i] - '0');
        }
    }
    return read == std::map<char, long>{{'Y', when.year}, {'M', when.month},  {'D', when.day},
                                        {'h', when.hour}, {'m', when.minute}, {'s', when.second}};
}

// "1.5", "-2E+20", "1.25E-07": sign, digits, a point only with digits after
// it and no trailing zero, an exponent of two or three digits; at most
// `digits` significant digits.
bool RuntimeNumberForm(const std::string& text, int digits) {
    static const std::regex form(R"(-?(\d+(\.\d*[1-9])?)(E[+-](\d\d|[1-9]\d\d))?)");
    std::smatch match;
    if (!std::regex_match(text, match, form)) return false;
    std::string significant = match[1].str();
    significant.erase(std::remove(significant.begin(), significant.end(), '.'), significant.end());
    significant.erase(0, std::min(significant.find_first_not_of('0'), significant.size()));
    return static_cast<int>(significant.size()) <= digits;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace corvan;
    fuzz::Input input(data, size);
    const uint8_t choice = input.Byte();
    LocalTime when;
    int* const fields[] = {&when.year, &when.month, &when.day, &when.hour, &when.minute, &when.second};
    // Whatever a broken clock could hand over, or a moment in range.
    const int starts[] = {1601, 1, 1, 0, 0, 0}, spans[] = {8399, 12, 31, 24, 60, 61};
    for (int i = 0; i < 6; ++i)
        *fields[i] = choice & 1 ? input.Number<int32_t>()
                                : starts[i] + (i == 0 ? input.Number<uint16_t>() : input.Byte()) % spans[i];
    const double number = input.Number<double>();
    const uint64_t instance = input.Number<uint64_t>();
    const uint32_t thread = input.Number<uint32_t>();
    const std::string message = input.Rest();

    const std::string line = FormatLogLine(when, message);
    const std::string stamp = FormatTraceStamp(when);
    const std::string prefix = BuildTracePrefix("CorvanInstaller", static_cast<uintptr_t>(instance), thread, when);
    const std::string tail = "\t" + message + "\r\n";
    FUZZ_CHECK(line.compare(0, 11, "TimeStamp: ") == 0 && line.size() >= tail.size() &&
               line.compare(line.size() - tail.size(), tail.size(), tail) == 0);
    FUZZ_CHECK(prefix.size() >= 2 && prefix.compare(prefix.size() - 2, 2, ": ") == 0);
    if (!(choice & 1)) {
        FUZZ_CHECK(line.size() == 11 + 21 + tail.size() && ReadsAs(line.substr(11), "MM/DD/YYYY - hh:mm:ss", when));
        FUZZ_CHECK(stamp.size() == 15 && ReadsAs(stamp, "YYYYMMDD hhmmss", when));
        FUZZ_CHECK(prefix == "CorvanInstaller: " + std::to_string(static_cast<uintptr_t>(instance)) + ": " +
                                 std::to_string(thread) + ": " + stamp + ": ");
    }

    if (std::isfinite(number)) {
        for (int digits : {7, 15}) {
            const std::string text = NumberText(number, digits);
            FUZZ_CHECK(RuntimeNumberForm(text, digits));
            // Read back wider than a double: the largest doubles round up past
            // the double range in 15 digits, as the runtime's text does too.
            const long double back = std::strtold(text.c_str(), nullptr);
            const long double error = std::fabs(back - static_cast<long double>(number));
            // Below the normal range a double holds fewer digits than printed.
            FUZZ_CHECK(error <= std::max(std::fabs(number) * std::pow(10.0L, 1 - digits), 5e-324L));
        }
    } else {
        NumberText(number);
    }

    // The body: every part of every value followed by one tab.
    std::vector<TraceValue> values;
    size_t expected = 0;
    for (fuzz::Input parts(data, size); parts.Remaining();) {
        const std::string part = parts.TextUntil('\t');
        values.emplace_back(part);
        expected += part.size() + 1;
    }
    values.emplace_back(choice & 2 ? true : false);
    values.emplace_back(static_cast<int32_t>(thread));
    expected += (choice & 2 ? 4 : 5) + std::to_string(static_cast<int32_t>(thread)).size() + 2;
    FUZZ_CHECK(BuildTraceBody(values).size() == expected);
    return 0;
}
