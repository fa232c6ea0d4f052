#pragma once
#include <string>

#include "common/clock.h"

namespace corvan {

// One install-log line: "TimeStamp: mm/dd/yyyy - hh:mm:ss" TAB message CR LF.
// A message holding line breaks is written as it stands.
std::string FormatLogLine(const LocalTime& when, const std::string& message);

}  // namespace corvan
