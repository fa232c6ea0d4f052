// Replays a fuzz target's kept corpus as an ordinary test program of the
// native build: every file of tests/fuzz/<target>/ is fed to the target once.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

TEST(FuzzCorpus, EveryKeptInputKeepsTheRules) {
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(CORVAN_FUZZ_CORPUS))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    ASSERT_FALSE(files.empty()) << "no corpus in " << CORVAN_FUZZ_CORPUS;

    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        // A block of exactly the input's size, as libFuzzer hands it, so the
        // sanitizer sees a read one byte too far.
        std::unique_ptr<uint8_t[]> data(new uint8_t[bytes.size()]);
        std::copy(bytes.begin(), bytes.end(), data.get());
        try {
            LLVMFuzzerTestOneInput(data.get(), bytes.size());
        } catch (const corvan::fuzz::CheckFailure& failure) {
            ADD_FAILURE() << file.filename().string() << ": " << failure.what;
        }
    }
}
