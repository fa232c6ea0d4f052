#include "common/wide_text.h"

namespace corvan {

std::wstring WideText(const std::string& text) {
    const int n = MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
    std::wstring wide(static_cast<size_t>(n > 0 ? n : 1), L'\0');
    if (n > 1) MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, wide.data(), n);
    wide.pop_back();
    return wide;
}

}  // namespace corvan
