// Replays a fuzz target's kept corpus as an ordinary test program of the
// native build: every file of tests/fuzz/<target>/ is fed to the target once,
// in a block of exactly its size, as libFuzzer hands it, so the sanitizer
// sees a read one byte too far.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>

#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

TEST(FuzzCorpus, EveryKeptInputKeepsTheRules) {
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(CORVAN_FUZZ_CORPUS))
        if (entry.is_regular_file()) files.insert(entry.path());
    ASSERT_FALSE(files.empty()) << "no corpus in " << CORVAN_FUZZ_CORPUS;
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::unique_ptr<uint8_t[]> data(new uint8_t[bytes.size()]);
        std::copy(bytes.begin(), bytes.end(), data.get());
        try {
            LLVMFuzzerTestOneInput(data.get(), bytes.size());
        } catch (const corvan::fuzz::CheckFailure& failure) {
            ADD_FAILURE() << file.filename().string() << ": " << failure.what;
        }
    }
}
