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

}  // namespace corvan
