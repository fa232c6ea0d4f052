#include "control/bstr_text.h"

namespace corvan::com {

std::string FromBstr(BSTR text) {
    int wide = static_cast<int>(SysStringLen(text));
    if (wide == 0) return {};
    int bytes = WideCharToMultiByte(CP_ACP, 0, text, wide, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, wide, result.data(), bytes, nullptr, nullptr);
    return result;
}

BSTR ToBstr(const std::string& text) {
    int length = static_cast<int>(text.size());
    int wide = length ? MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0) : 0;
    BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(wide));
    if (result && wide) MultiByteToWideChar(CP_ACP, 0, text.data(), length, result, wide);
    return result;
}

}  // namespace corvan::com
