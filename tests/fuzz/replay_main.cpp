// Replays a fuzz target's kept corpus as an ordinary test program of the
// native build: every file of tests/fuzz/<target>/ is fed to the target once,
// in a block of exactly its size, as libFuzzer hands it, so the sanitizer
// sees a read one byte too far.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
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
        const size_t size = std::filesystem::file_size(file);
        std::unique_ptr<uint8_t[]> data(new uint8_t[size]);
        std::ifstream(file, std::ios::binary).read(reinterpret_cast<char*>(data.get()), size);
        try {
            LLVMFuzzerTestOneInput(data.get(), size);
        } catch (const corvan::fuzz::CheckFailure& failure) {
            ADD_FAILURE() << file.filename().string() << ": " << failure.what;
        }
    }
}
