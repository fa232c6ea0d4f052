#pragma once
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "common/clock.h"

namespace corvan {

// One value handed to the trace: text, a number, a Boolean, or an array whose
// elements are traced one by one.
class TraceValue {
public:
    TraceValue(std::string text) : parts_{std::move(text)} {}
    TraceValue(const char* text) : parts_{text ? text : ""} {}
    TraceValue(bool value);
    template <typename Int, std::enable_if_t<std::is_integral_v<Int> && !std::is_same_v<Int, bool>, int> = 0>
    TraceValue(Int value) : parts_{std::to_string(value)} {}
    TraceValue(double value);
    TraceValue(float value);
    TraceValue(const std::vector<std::string>& elements) : parts_(elements) {}

    const std::vector<std::string>& Parts() const { return parts_; }

private:
    std::vector<std::string> parts_;
};

// Numbers in the runtime's text form: 0.5, 1E+20, up to 15 (or, for single
// precision, 7) significant digits.
std::string NumberText(double value, int digits = 15);

// The values in order, each followed by a tab.
std::string BuildTraceBody(const std::vector<TraceValue>& values);

// "<base name>: <instance>: <thread id>: yyyymmdd hhnnss: "
std::string BuildTracePrefix(const std::string& baseName, uintptr_t instance, uint32_t threadId,
                             const LocalTime& when);

}  // namespace corvan
