#pragma once
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

// A file of given bytes in the temporary folder, removed with the object.
class TempFile {
public:
    explicit TempFile(const std::vector<uint8_t>& bytes) {
        static int serial = 0;
        path_ = (std::filesystem::temp_directory_path() /
                 ("corvan-files-" + std::to_string(std::random_device()()) + "-" + std::to_string(++serial) + ".bin"))
                    .string();
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~TempFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

inline std::vector<uint8_t> RandomBytes(size_t size, uint32_t seed) {
    std::mt19937 gen(seed);
    std::vector<uint8_t> bytes(size);
    for (auto& b : bytes) b = static_cast<uint8_t>(gen());
    return bytes;
}
