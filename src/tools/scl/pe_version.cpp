#include "tools/scl/pe_version.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace corvan::scl {
namespace {

// Reads little-endian numbers at absolute offsets of an open file; any read
// past the end or any seek failure leaves `ok` false for the rest.
class ImageReader {
public:
    explicit ImageReader(const std::string& path) : file_(std::fopen(path.c_str(), "rb"), &std::fclose) {}
    bool Open() const { return file_ != nullptr; }
    bool ok = true;

    std::vector<uint8_t> Bytes(uint64_t offset, size_t count) {
        std::vector<uint8_t> bytes(count);
        if (!ok || count == 0) return bytes;
        if (offset > uint64_t(INT32_MAX) || std::fseek(file_.get(), long(offset), SEEK_SET) != 0 ||
            std::fread(bytes.data(), 1, count, file_.get()) != count)
            ok = false;
        return bytes;
    }
    uint32_t U16(uint64_t offset) { return Number(offset, 2); }
    uint32_t U32(uint64_t offset) { return Number(offset, 4); }

private:
    uint32_t Number(uint64_t offset, size_t size) {
        const std::vector<uint8_t> bytes = Bytes(offset, size);
        if (!ok) return 0;
        uint32_t value = 0;
        for (size_t i = size; i-- > 0;) value = (value << 8) | bytes[i];
        return value;
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

struct Section {
    uint32_t virtualAddress, virtualSize, rawSize, rawOffset;
};

constexpr uint32_t kVersionResourceType = 16;     // RT_VERSION
constexpr uint32_t kFixedInfoSignature = 0xFEEF04BD;
constexpr uint32_t kSubdirectoryBit = 0x80000000;

// The file offset of `size` bytes at relative address `rva`, when one
// section holds them all.
std::optional<uint64_t> FileOffset(const std::vector<Section>& sections, uint32_t rva, uint32_t size) {
    for (const Section& s : sections) {
        const uint64_t extent = s.virtualSize != 0 ? s.virtualSize : s.rawSize;
        if (rva >= s.virtualAddress && uint64_t(rva) + size <= uint64_t(s.virtualAddress) + extent &&
            uint64_t(rva - s.virtualAddress) + size <= s.rawSize)
            return uint64_t(s.rawOffset) + (rva - s.virtualAddress);
    }
    return std::nullopt;
}

// The entry of a resource directory (at `directory`, an offset into the
// resource section) with the given numeric id, or its first entry when `id`
// is empty; the entry's target offset with the subdirectory bit.
std::optional<uint32_t> DirectoryEntry(ImageReader& image, uint64_t sectionStart, uint32_t directory,
                                       std::optional<uint32_t> id) {
    const uint64_t at = sectionStart + directory;
    const uint32_t named = image.U16(at + 12), numbered = image.U16(at + 14);
    for (uint32_t i = 0; i < named + numbered && image.ok; ++i) {
        const uint64_t entry = at + 16 + uint64_t(i) * 8;
        const uint32_t name = image.U32(entry);
        const bool isNumber = (name & kSubdirectoryBit) == 0;
        if (!id || (isNumber && name == *id)) {
            const uint32_t target = image.U32(entry + 4);
            return image.ok ? std::optional(target) : std::nullopt;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> ReadFileVersion(const std::string& path) {
    ImageReader image(path);
    if (!image.Open()) return std::nullopt;
    if (image.U16(0) != 0x5A4D) return std::nullopt;  // "MZ"
    const uint32_t header = image.U32(0x3C);
    if (!image.ok || image.U32(header) != 0x00004550) return std::nullopt;  // "PE\0\0"
    const uint64_t coff = uint64_t(header) + 4;
    const uint32_t sectionCount = image.U16(coff + 2), optionalSize = image.U16(coff + 16);
    const uint64_t optional = coff + 20;
    const uint32_t magic = image.U16(optional);
    uint64_t directories;
    if (magic == 0x10B)
        directories = optional + 96;  // PE32
    else if (magic == 0x20B)
        directories = optional + 112;  // PE32+
    else
        return std::nullopt;
    const uint32_t directoryCount = image.U32(directories - 4);
    if (!image.ok || directoryCount < 3 || directories + 3 * 8 > optional + optionalSize) return std::nullopt;
    const uint32_t resourceRva = image.U32(directories + 2 * 8), resourceSize = image.U32(directories + 2 * 8 + 4);
    if (resourceRva == 0 || resourceSize == 0) return std::nullopt;

    std::vector<Section> sections;
    for (uint32_t i = 0; i < sectionCount && image.ok; ++i) {
        const uint64_t s = optional + optionalSize + uint64_t(i) * 40;
        sections.push_back({image.U32(s + 12), image.U32(s + 8), image.U32(s + 16), image.U32(s + 20)});
    }
    const std::optional<uint64_t> resources = FileOffset(sections, resourceRva, 16);
    if (!image.ok || !resources) return std::nullopt;

    // Type, then name, then language: the version resource of the first
    // name and language, as the version functions take it.
    std::optional<uint32_t> entry = DirectoryEntry(image, *resources, 0, kVersionResourceType);
    for (int level = 0; level < 2 && entry; ++level) {
        if ((*entry & kSubdirectoryBit) == 0) return std::nullopt;
        entry = DirectoryEntry(image, *resources, *entry & ~kSubdirectoryBit, std::nullopt);
    }
    if (!entry || (*entry & kSubdirectoryBit) != 0) return std::nullopt;
    const uint32_t dataRva = image.U32(*resources + *entry), dataSize = image.U32(*resources + *entry + 4);

    // VS_VERSIONINFO: length, value length, type, the key "VS_VERSION_INFO"
    // in UTF-16 with its NUL, padding to 32 bits, then VS_FIXEDFILEINFO.
    constexpr uint32_t kFixedInfoAt = 40, kFixedInfoSize = 52;
    if (!image.ok || dataSize < kFixedInfoAt + kFixedInfoSize) return std::nullopt;
    const std::optional<uint64_t> data = FileOffset(sections, dataRva, kFixedInfoAt + kFixedInfoSize);
    if (!data || image.U16(*data + 2) < kFixedInfoSize) return std::nullopt;
    if (image.U32(*data + kFixedInfoAt) != kFixedInfoSignature) return std::nullopt;
    const uint32_t high = image.U32(*data + kFixedInfoAt + 8), low = image.U32(*data + kFixedInfoAt + 12);
    if (!image.ok) return std::nullopt;
    char text[64];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF);
    return std::string(text);
}

}  // namespace corvan::scl
