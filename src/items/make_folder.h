#pragma once
#include <string>

namespace corvan {

// Makes a folder and every missing folder above it. A folder that cannot be
// made is left to the write into it to report.
void MakeFolder(const std::string& folder);

}  // namespace corvan
