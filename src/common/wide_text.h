#pragma once
#include <string>

#include <windows.h>

namespace corvan {

// Texts inside the system are in the machine's ANSI code page; the few
// interfaces that only take UTF-16 get them through this.
std::wstring WideText(const std::string& text);

}  // namespace corvan
