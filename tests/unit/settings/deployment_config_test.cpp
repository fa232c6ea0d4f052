// The installer URLs are build settings; a deployment build must not be made
// with the placeholder hosts that test and bench builds keep. Configures the
// real project (no tests, nothing built) in a scratch build folder.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#ifndef _WIN32
#include <unistd.h>

namespace {

struct Configured {
    bool ok = false;
    std::string output;
};

Configured Configure(const std::string& arguments) {
    // Other checkouts on the machine may run this test at the same time.
    const std::filesystem::path build =
        std::filesystem::temp_directory_path() / ("corvan-deployment-config-" + std::to_string(getpid()));
    const std::filesystem::path log = build.string() + ".log";
    std::filesystem::remove_all(build);
    const std::string command = "cmake -S \"" CORVAN_SOURCE_DIR "\" -B \"" + build.string() +
                                "\" -G Ninja -DCORVAN_BUILD_TESTS=OFF " + arguments + " > \"" + log.string() +
                                "\" 2>&1";
    Configured result;
    result.ok = std::system(command.c_str()) == 0;
    std::ifstream in(log);
    // CMake wraps its messages: the words are compared, not the lines.
    for (std::string word; in >> word;) result.output += word + " ";
    std::filesystem::remove_all(build);
    std::filesystem::remove(log);
    return result;
}

}  // namespace
#endif

TEST(DeploymentBuild, RefusesThePlaceholderInstallerHosts) {
#ifdef _WIN32
    GTEST_SKIP() << "configures with the build machine's cmake";
#else
    const std::string real = "-DCORVAN_MASTER_URL_SOURCE=https://extranet.corvan.test/installer/ "
                             "-DCORVAN_ALT_URL_SOURCE_1=https://extranet2.corvan.test/installer/ ";
    const struct {
        std::string arguments;
        const char* refused;  // the setting the failure names; nullptr: configures
    } cases[] = {
        {"-DCORVAN_DEPLOYMENT=ON", "CORVAN_MASTER_URL_SOURCE"},
        {"-DCORVAN_DEPLOYMENT=ON " + real, "CORVAN_ALT_URL_SOURCE_2"},
        {"-DCORVAN_DEPLOYMENT=ON " + real + "-DCORVAN_ALT_URL_SOURCE_2=https://extranet3.corvan.test/installer/",
         nullptr},
        {"", nullptr},  // test and bench builds keep the placeholders
    };
    for (const auto& c : cases) {
        const Configured configured = Configure(c.arguments);
        EXPECT_EQ(configured.ok, c.refused == nullptr) << c.arguments << "\n" << configured.output;
        if (c.refused) {
            EXPECT_NE(configured.output.find(std::string("A deployment build needs the real installer URLs, but ") +
                                             c.refused + " is still the placeholder"),
                      std::string::npos)
                << configured.output;
        }
    }
#endif
}
