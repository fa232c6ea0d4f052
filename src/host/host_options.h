#pragma once
#include <optional>
#include <string>
#include <vector>

namespace corvan::host {

// What CorvanClient.exe was asked to do.
struct HostOptions {
    int mode = 1;                 // the page's Run mode, 1 to 5
    bool check = false;           // NeedToInstall only
    std::optional<std::string> url;
    std::optional<std::string> groups;
    bool quiet = false;           // no per-status lines, only errors and the summary
    bool trace = false;           // print the control's trace lines
    bool local = false;           // load the control from beside the program, unregistered
    bool answerYes = false;       // how the control's questions are answered
    bool help = false;
};

// Parses the command line (without the program name). Options start with "/"
// or "-" and take their value as the next argument or after ":" or "=".
// A mistake comes back as one sentence for the user.
struct ParsedOptions {
    HostOptions options;
    std::string error;  // empty when the command line is good
};
ParsedOptions ParseHostOptions(const std::vector<std::string>& arguments);

// The text printed for /?.
std::string HostUsage();

// Exit codes, documented in the README and in the usage text.
namespace exit_code {
inline constexpr int kDone = 0;           // Run returned True, or /check found nothing to do
inline constexpr int kRunFailed = 1;      // Run returned False (or nothing)
inline constexpr int kBadUsage = 2;
inline constexpr int kNoControl = 3;      // the control could not be created
inline constexpr int kInstallNeeded = 4;  // /check found something to install
}  // namespace exit_code

}  // namespace corvan::host
