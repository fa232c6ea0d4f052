#pragma once
#include <string>

#include <windows.h>
#include <oleauto.h>

namespace corvan::com {

// Texts inside the system are ANSI; BSTRs exist only at the COM edge.
std::string FromBstr(BSTR text);
BSTR ToBstr(const std::string& text);  // the caller owns the result

// One owned BSTR.
class Bstr {
public:
    Bstr() = default;
    explicit Bstr(const std::string& text) : b_(ToBstr(text)) {}
    ~Bstr() { SysFreeString(b_); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    BSTR Get() const { return b_; }
    BSTR* Put() { SysFreeString(b_); b_ = nullptr; return &b_; }
    BSTR Detach() { BSTR b = b_; b_ = nullptr; return b; }
    std::string Text() const { return FromBstr(b_); }

private:
    BSTR b_ = nullptr;
};

}  // namespace corvan::com
