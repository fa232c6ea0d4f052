#pragma once
#include <cstdint>
#include <string>

#include <windows.h>

#include "common/failure.h"

namespace corvan {

// The runtime's error number for a Win32 error code of a file operation.
int32_t RuntimeNumberOfWin32(DWORD code);

// A Failure for the Win32 error `code`, in the runtime's numbers and words.
Failure FileFailure(DWORD code, std::string source);

// The Failure of the Win32 call that has just failed: its error code is read
// first, before the source's text is built, since an allocation may set
// another.
Failure LastFileFailure(const char* source);

}  // namespace corvan
