#include "logging/trace_text.h"

#include <cstdio>
#include <cstdlib>

#include "common/text.h"

namespace corvan {

TraceValue::TraceValue(bool value) : parts_{BooleanText(value)} {}
TraceValue::TraceValue(double value) : parts_{NumberText(value)} {}
TraceValue::TraceValue(float value) : parts_{NumberText(value, 7)} {}

std::string NumberText(double value, int digits) {
    char text[40];
    std::snprintf(text, sizeof text, "%.*G", digits, value);
    std::string out = text;
    // "1E+020" on some runtimes, "1E+20" on others: the runtime writes at
    // least two exponent digits and no more than needed.
    size_t e = out.find('E');
    if (e != std::string::npos && e + 2 < out.size()) {
        std::string mantissa = out.substr(0, e);
        char sign = out[e + 1];
        int exponent = std::atoi(out.c_str() + e + 2);
        char tail[8];
        std::snprintf(tail, sizeof tail, "%02d", exponent);
        out = mantissa + "E" + sign + tail;
    }
    return out;
}

std::string BuildTraceBody(const std::vector<TraceValue>& values) {
    std::string body;
    for (const TraceValue& value : values) {
        for (const std::string& part : value.Parts()) {
            body += part;
            body += '\t';
        }
    }
    return body;
}

std::string BuildTracePrefix(const std::string& baseName, uintptr_t instance, uint32_t threadId,
                             const LocalTime& when) {
    return baseName + ": " + std::to_string(instance) + ": " + std::to_string(threadId) + ": " +
           FormatTraceStamp(when) + ": ";
}

}  // namespace corvan
