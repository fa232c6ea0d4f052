#pragma once
#include <string>

namespace corvan {

// A moment on the local clock, to the second.
struct LocalTime {
    int year = 2000, month = 1, day = 1;
    int hour = 0, minute = 0, second = 0;
};

LocalTime NowLocal();

std::string FormatDate(const LocalTime& t);        // "mm/dd/yyyy"
std::string FormatTime(const LocalTime& t);        // "hh:mm:ss", hours 00 to 23
std::string FormatTraceStamp(const LocalTime& t);  // "yyyymmdd hhnnss"

}  // namespace corvan
