// The install log's line and the trace's prefix, body and numbers: for any
// message and any moment the clock can give, the line reads back as that
// moment and that message; numbers come out in the runtime's text form and
// read back as the value to their precision. A moment no clock gives
// (fields out of range) must still never write past the formats' buffers.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/clock.h"
#include "fuzz_check.h"
#include "logging/log_line.h"
#include "logging/trace_text.h"

namespace {

using corvan::LocalTime;

// The number in `text` at `pos` made of exactly `width` digits, or -1.
long Digits(const std::string& text, size_t pos, size_t width) {
    if (pos + width > text.size()) return -1;
    long value = 0;
    for (size_t i = pos; i < pos + width; ++i) {
        if (text[i] < '0' || text[i] > '9') return -1;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

// "1.5", "-2E+20", "1.25E-07": sign, digits, a point only with digits after
// it and no trailing zero, an exponent of two or three digits; at most
// `digits` significant digits.
bool RuntimeNumberForm(const std::string& text, int digits) {
    size_t pos = text[0] == '-' ? 1 : 0;
    const size_t e = text.find('E');
    const std::string mantissa = text.substr(pos, e == std::string::npos ? std::string::npos : e - pos);
    if (mantissa.empty() || mantissa.find_first_not_of("0123456789.") != std::string::npos) return false;
    const size_t point = mantissa.find('.');
    if (point != std::string::npos &&
        (point == 0 || point + 1 == mantissa.size() || mantissa.back() == '0' || mantissa.find('.', point + 1) != std::string::npos))
        return false;
    std::string significant = mantissa;
    significant.erase(std::remove(significant.begin(), significant.end(), '.'), significant.end());
    significant.erase(0, std::min(significant.find_first_not_of('0'), significant.size()));
    if (static_cast<int>(significant.size()) > digits) return false;
    if (e == std::string::npos) return true;
    const std::string exponent = text.substr(e + 1);
    if (exponent.size() < 3 || exponent.size() > 4 || (exponent[0] != '+' && exponent[0] != '-')) return false;
    if (exponent.find_first_not_of("0123456789", 1) != std::string::npos) return false;
    return exponent.size() == 3 || exponent[1] != '0';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace corvan;
    fuzz::Input input(data, size);
    const uint8_t choice = input.Byte();
    LocalTime when;
    if (choice & 1) {
        // Whatever a broken clock could hand over.
        when.year = input.Number<int32_t>();
        when.month = input.Number<int32_t>();
        when.day = input.Number<int32_t>();
        when.hour = input.Number<int32_t>();
        when.minute = input.Number<int32_t>();
        when.second = input.Number<int32_t>();
    } else {
        when.year = 1601 + input.Number<uint16_t>() % 8399;
        when.month = 1 + input.Byte() % 12;
        when.day = 1 + input.Byte() % 31;
        when.hour = input.Byte() % 24;
        when.minute = input.Byte() % 60;
        when.second = input.Byte() % 61;
    }
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
        // "TimeStamp: mm/dd/yyyy - hh:mm:ss" and "yyyymmdd hhnnss".
        FUZZ_CHECK(line.size() == 11 + 21 + tail.size());
        FUZZ_CHECK(Digits(line, 11, 2) == when.month && line[13] == '/' && Digits(line, 14, 2) == when.day &&
                   line[16] == '/' && Digits(line, 17, 4) == when.year);
        FUZZ_CHECK(line.compare(21, 3, " - ") == 0);
        FUZZ_CHECK(Digits(line, 24, 2) == when.hour && line[26] == ':' && Digits(line, 27, 2) == when.minute &&
                   line[29] == ':' && Digits(line, 30, 2) == when.second);
        FUZZ_CHECK(stamp.size() == 15 && Digits(stamp, 0, 4) == when.year && Digits(stamp, 4, 2) == when.month &&
                   Digits(stamp, 6, 2) == when.day && stamp[8] == ' ' && Digits(stamp, 9, 2) == when.hour &&
                   Digits(stamp, 11, 2) == when.minute && Digits(stamp, 13, 2) == when.second);
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
