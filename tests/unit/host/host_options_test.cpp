// The command line of CorvanClient.exe: what scripts and the help desk type.
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "host/host_options.h"

using corvan::host::ParseHostOptions;

namespace {

std::vector<std::string> Words(const std::string& line) {
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
}

TEST(HostOptions, GoodCommandLines) {
    struct Case {
        const char* line;
        int mode;
        bool check, quiet, trace, local, yes;
        const char* url;
        const char* groups;
    } cases[] = {
        {"", 1, false, false, false, false, false, nullptr, nullptr},
        {"/mode 3 /quiet", 3, false, true, false, false, false, nullptr, nullptr},
        {"-mode:5 /TRACE --local", 5, false, false, true, true, false, nullptr, nullptr},
        {"/check /url https://h.example/installer/page.asp", 1, true, false, false, false, false,
         "https://h.example/installer/page.asp", nullptr},
        {"/answer YES /groups=Dealers,Admins /mode=2", 2, false, false, false, false, true, nullptr, "Dealers,Admins"},
    };
    for (const Case& c : cases) {
        auto parsed = ParseHostOptions(Words(c.line));
        SCOPED_TRACE(c.line);
        ASSERT_EQ(parsed.error, "");
        EXPECT_EQ(parsed.options.mode, c.mode);
        EXPECT_EQ(parsed.options.check, c.check);
        EXPECT_EQ(parsed.options.quiet, c.quiet);
        EXPECT_EQ(parsed.options.trace, c.trace);
        EXPECT_EQ(parsed.options.local, c.local);
        EXPECT_EQ(parsed.options.answerYes, c.yes);
        EXPECT_EQ(parsed.options.url.value_or("(none)"), c.url ? c.url : "(none)");
        EXPECT_EQ(parsed.options.groups.value_or("(none)"), c.groups ? c.groups : "(none)");
    }
    EXPECT_TRUE(ParseHostOptions({"/?"}).options.help);
}

TEST(HostOptions, MistakesAreOneSentenceNamingTheProblem) {
    struct Case {
        const char* line;
        const char* says;
    } cases[] = {
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
    for (const Case& c : cases) {
        std::string error = ParseHostOptions(Words(c.line)).error;
        EXPECT_NE(error.find(c.says), std::string::npos) << c.line << " -> " << error;
        EXPECT_EQ(error.find('\n'), std::string::npos) << c.line;
    }
}

}  // namespace
