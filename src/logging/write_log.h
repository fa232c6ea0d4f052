#pragma once
#include <string>

#include "logging/clsLog.h"

namespace corvan {

// The process's install log object, created on first use.
clsLog& GlobalLog();

// The one write routine every part of the system logs through: the message
// goes to the install log, then to the trace. A failure to open the log is
// raised to the caller's error trap.
void WriteLog(const std::string& message);

}  // namespace corvan
