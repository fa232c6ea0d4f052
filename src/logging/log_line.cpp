#include "logging/log_line.h"

namespace corvan {

std::string FormatLogLine(const LocalTime& when, const std::string& message) {
    return "TimeStamp: " + FormatDate(when) + " - " + FormatTime(when) + "\t" + message + "\r\n";
}

}  // namespace corvan
