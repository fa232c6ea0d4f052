#pragma once
#include <optional>
#include <string>

namespace corvan::scl {

// The file version of a Windows program or library, read from the fixed
// part of its version resource, as "major.minor.build.revision" (the form
// the file object gives on Windows). Read portably from the file's PE
// headers and resource section, so scl gives the same text on a Linux
// server. Nothing when the file is no PE image or has no version resource;
// a damaged image is treated as having none.
std::optional<std::string> ReadFileVersion(const std::string& path);

}  // namespace corvan::scl
