#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tools/scl/cli.h"

namespace scl_test {

struct SclRun {
    int code;
    std::string out, err;
};

// scl as a user runs it, minus the process.
inline SclRun Scl(const std::vector<std::string>& args) {
    std::ostringstream out, err;
    const int code = corvan::scl::RunScl(args, out, err);
    return {code, out.str(), err.str()};
}

// A folder of its own in the temporary folder, removed with the object.
class Scratch {
public:
    Scratch() {
        path_ = std::filesystem::temp_directory_path() / ("corvan-scl-" + std::to_string(std::random_device()()));
        std::filesystem::create_directories(path_);
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    std::string Write(const std::string& name, const std::string& bytes) const {
        const std::string path = *this / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    std::string Path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

inline std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The fixture libraries built with the tests.
inline std::string Fixture(const std::string& name) { return std::string(SCL_FIXTURES) + "/" + name; }

}  // namespace scl_test
