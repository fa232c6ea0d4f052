#include "common/clock.h"

#include <cstdio>
#include <ctime>

namespace corvan {

LocalTime NowLocal() {
    std::time_t now = std::time(nullptr);
    std::tm parts{};
#ifdef _WIN32
    localtime_s(&parts, &now);
#else
    localtime_r(&now, &parts);
#endif
    LocalTime t;
    t.year = parts.tm_year + 1900;
    t.month = parts.tm_mon + 1;
    t.day = parts.tm_mday;
    t.hour = parts.tm_hour;
    t.minute = parts.tm_min;
    t.second = parts.tm_sec;
    return t;
}

std::string FormatDate(const LocalTime& t) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d/%02d/%04d", t.month, t.day, t.year);
    return text;
}

std::string FormatTime(const LocalTime& t) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", t.hour, t.minute, t.second);
    return text;
}

std::string FormatTraceStamp(const LocalTime& t) {
    char text[24];
    std::snprintf(text, sizeof text, "%04d%02d%02d %02d%02d%02d", t.year, t.month, t.day, t.hour, t.minute,
                  t.second);
    return text;
}

}  // namespace corvan
