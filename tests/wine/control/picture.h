#pragma once
// What a device context shows, read back pixel by pixel, and kept as a
// picture file for people to look at.
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <windows.h>

namespace control_tests {

struct Picture {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;  // 0x00RRGGBB, top row first

    COLORREF At(int x, int y) const {
        uint32_t p = pixels[static_cast<size_t>(y) * width + x];
        return RGB((p >> 16) & 0xFF, (p >> 8) & 0xFF, p & 0xFF);
    }

    // True when `area` shows the same pixels in both pictures.
    bool SameIn(const Picture& other, const RECT& area) const {
        for (int y = area.top; y < area.bottom; ++y)
            for (int x = area.left; x < area.right; ++x)
                if (At(x, y) != other.At(x, y)) return false;
        return true;
    }

    // Writes the picture as a BMP file into the pictures folder of the
    // Windows build (build/<preset>/pictures), for people to look at.
    void Save(const std::string& name) const {
        const char* build = std::getenv("CORVAN_WINDOWS_BUILD");
        std::string folder = std::string(build ? build : ".") + "\\pictures";
        CreateDirectoryA(folder.c_str(), nullptr);
        BITMAPFILEHEADER file = {};
        BITMAPINFOHEADER info = {};
        info.biSize = sizeof info;
        info.biWidth = width;
        info.biHeight = -height;
        info.biPlanes = 1;
        info.biBitCount = 32;
        info.biCompression = BI_RGB;
        DWORD bytes = static_cast<DWORD>(pixels.size() * 4);
        file.bfType = 0x4D42;
        file.bfOffBits = sizeof file + sizeof info;
        file.bfSize = file.bfOffBits + bytes;
        HANDLE out = CreateFileA((folder + "\\" + name + ".bmp").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                 FILE_ATTRIBUTE_NORMAL, nullptr);
        if (out == INVALID_HANDLE_VALUE) return;
        DWORD written;
        WriteFile(out, &file, sizeof file, &written, nullptr);
        WriteFile(out, &info, sizeof info, &written, nullptr);
        WriteFile(out, pixels.data(), bytes, &written, nullptr);
        CloseHandle(out);
    }
};

// Lets `draw` paint into a white width x height memory bitmap and reads it.
inline Picture Capture(int width, int height, const std::function<void(HDC)>& draw) {
    Picture picture{width, height, {}};
    BITMAPINFO format = {};
    format.bmiHeader.biSize = sizeof format.bmiHeader;
    format.bmiHeader.biWidth = width;
    format.bmiHeader.biHeight = -height;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    format.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    RECT all = {0, 0, width, height};
    FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    draw(dc);
    GdiFlush();
    const auto* first = static_cast<const uint32_t*>(bits);
    picture.pixels.assign(first, first + static_cast<size_t>(width) * height);
    for (uint32_t& p : picture.pixels) p &= 0xFFFFFF;
    SelectObject(dc, old);
    DeleteDC(dc);
    DeleteObject(bitmap);
    return picture;
}

}  // namespace control_tests
