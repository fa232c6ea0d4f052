#pragma once
#include <iosfwd>
#include <string>
#include <vector>

namespace corvan::scl {

// Exit statuses of every command.
inline constexpr int kExitClean = 0;     // done; for lint, no problem found
inline constexpr int kExitProblems = 1;  // lint found problems, or build refused the manifest
inline constexpr int kExitUsage = 2;     // bad command line, or an input that cannot be read

// The whole program behind main: `args` without the program name. Results
// go to `out` (the list of build, the problems of lint, the plan), messages
// and progress to `err`.
int RunScl(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace corvan::scl
