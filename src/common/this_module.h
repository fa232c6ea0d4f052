#pragma once
#include <cstdint>
#include <string>

#include <windows.h>

namespace corvan {

// The module that holds this code: the control's DLL in the product, the
// test program in a test. The log header and the trace print its handle.
HMODULE ThisModule();

// Full path of ThisModule().
std::string ThisModulePath();

}  // namespace corvan
