// The command line of CorvanClient.exe (host.txt). The whole program's exit
// codes and output are shown by the e2e table.
#include <iterator>
#include <sstream>

#include "../harness.h"
#include "host/host_options.h"

namespace {

// What a command line asks for, or "error: " and the error it gets.
std::string Parsed(const std::string& line) {
    std::istringstream stream(line);
    const auto parsed = host::ParseHostOptions({std::istream_iterator<std::string>(stream), {}});
    if (!parsed.error.empty()) return "error: " + parsed.error;
    const auto& o = parsed.options;
    std::ostringstream text;
    text << o.mode << " " << o.check << o.quiet << o.trace << o.local << o.answerYes << o.help << " "
         << o.url.value_or("-") << " " << o.groups.value_or("-");
    return text.str();
}

TEST(HostOptions, CommandLinesAndTheirMistakes) {
    for (const auto& c : Table("host/host.txt", "lines")) {
        const std::string parsed = Parsed(c[0]);
        if (parsed.rfind("error: ", 0) != 0) {
            EXPECT_EQ(parsed, c[1]) << c.where;
            continue;
        }
        EXPECT_NE(parsed.find(c[1]), std::string::npos) << c.where << " -> " << parsed;
        EXPECT_EQ(parsed.find('\n'), std::string::npos) << c.where;
    }
}

}  // namespace
