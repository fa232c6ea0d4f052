#pragma once
#include <string>

#include <windows.h>

namespace corvan {

// The system's own words for an error code (a Win32 code or an HRESULT), in
// the machine's code page, without the trailing line break; empty when the
// system has none.
std::string SystemMessage(DWORD code);

}  // namespace corvan
