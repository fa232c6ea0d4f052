#pragma once
#include <string>

namespace corvan {

// The name of the default printer; empty when no printer is installed.
std::string DefaultPrinter();

// Prints `text` (lines ended by CR LF, long lines wrapped, as many pages as
// it takes) on `printer` as one job named `title`. False when the job could
// not be started or ended.
bool PrintText(const std::string& printer, const std::string& title, const std::string& text);

}  // namespace corvan
