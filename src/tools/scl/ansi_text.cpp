#include "tools/scl/ansi_text.h"

#include <cstdint>

namespace corvan::scl {
namespace {

// Code points of the bytes 80 to 9F hexadecimal; above them the code page
// is Latin-1.
constexpr char16_t kHighControls[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

std::optional<char> AnsiByteOf(uint32_t code) {
    if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) return static_cast<char>(code);
    for (int i = 0; i < 32; ++i)
        if (kHighControls[i] == code) return static_cast<char>(0x80 + i);
    return std::nullopt;
}

void AppendUtf8(std::string& out, uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

}  // namespace

std::optional<std::string> Utf8ToAnsi(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    for (size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<uint8_t>(utf8[i]);
        const size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
        if (length == 0 || i + length > utf8.size()) return std::nullopt;
        uint32_t code = length == 1 ? lead : lead & (0x7F >> length);
        for (size_t k = 1; k < length; ++k) {
            const auto next = static_cast<uint8_t>(utf8[i + k]);
            if ((next & 0xC0) != 0x80) return std::nullopt;
            code = (code << 6) | (next & 0x3F);
        }
        constexpr uint32_t kShortest[5] = {0, 0, 0x80, 0x800, 0x10000};
        if (code < kShortest[length]) return std::nullopt;
        const std::optional<char> byte = AnsiByteOf(code);
        if (!byte) return std::nullopt;
        out += *byte;
        i += length;
    }
    return out;
}

std::string AnsiToUtf8(std::string_view ansi) {
    std::string out;
    out.reserve(ansi.size());
    for (char c : ansi) {
        const auto byte = static_cast<uint8_t>(c);
        AppendUtf8(out, byte >= 0x80 && byte < 0xA0 ? kHighControls[byte - 0x80] : byte);
    }
    return out;
}

}  // namespace corvan::scl
