// The command line of CorvanClient.exe: what scripts and the help desk type.
// The whole program's exit codes and output are shown by the e2e table.
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "host/host_options.h"

namespace {

// What a command line asks for as "mode check|quiet|trace|local|yes|help url groups",
// or the error it gets.
std::string Parsed(const std::string& line) {
    std::istringstream stream(line);
    const auto parsed = corvan::host::ParseHostOptions(
        {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()});
    if (!parsed.error.empty()) return "error: " + parsed.error;
    const auto& o = parsed.options;
    std::ostringstream text;
    text << o.mode << " " << o.check << o.quiet << o.trace << o.local << o.answerYes << o.help << " "
         << o.url.value_or("-") << " " << o.groups.value_or("-");
    return text.str();
}

TEST(HostOptions, CommandLinesAndTheirMistakes) {
    const struct {
        const char* line;
        const char* says;  // the whole reading, or a part of the one-sentence error
    } cases[] = {
        {"", "1 000000 - -"},
        {"/mode 3 /quiet", "3 010000 - -"},
        {"-mode:5 /TRACE --local", "5 001100 - -"},
        {"/check /url https://h.example/installer/page.asp", "1 100000 https://h.example/installer/page.asp -"},
        {"/answer YES /groups=Dealers,Admins /mode=2", "2 000010 - Dealers,Admins"},
        {"/?", "1 000001 - -"},
        {"/mode 0", "/mode must be 1"},
        {"/mode 12", "not '12'"},
        {"/mode", "option /mode needs a value"},
        {"/url ftp://h/x", "/url must be an http or https address"},
        {"/url https://host", "not 'https://host'"},
        {"/answer maybe", "/answer must be yes or no"},
        {"/check /mode 1", "/check and /mode cannot be used together"},
        {"/quiet:1", "option /quiet takes no value"},
        {"/reboot", "unknown option '/reboot'"},
        {"install", "unexpected argument 'install'"},
    };
    for (const auto& c : cases) {
        const std::string parsed = Parsed(c.line);
        if (parsed.rfind("error: ", 0) != 0) {
            EXPECT_EQ(parsed, c.says) << c.line;
            continue;
        }
        EXPECT_NE(parsed.find(c.says), std::string::npos) << c.line << " -> " << parsed;
        EXPECT_EQ(parsed.find('\n'), std::string::npos) << c.line;
    }
}

}  // namespace
