#pragma once
#include <cstdint>

namespace corvan {

// Extends the 32-bit millisecond count of GetTickCount, which wraps every
// 49.7 days, to the 64-bit count that GetTickCount64 gives on later Windows.
// `last` is the latest 64-bit value handed out (0: none yet), `now` a fresh
// 32-bit reading.
// A reading at most kStaleMs behind `last` was taken by a thread that lost a
// race with the one that handed `last` out: `last` stands. Anything else is
// time gone forward, across the wrap if the count wrapped.
constexpr std::uint32_t kStaleMs = 60000;

constexpr std::uint64_t ExtendTickCount(std::uint64_t last, std::uint32_t now) {
    if (last == 0) return now;
    const std::uint32_t forward = now - static_cast<std::uint32_t>(last);
    if (forward > UINT32_MAX - kStaleMs) return last;
    return last + forward;
}

}  // namespace corvan
