#include "common/this_module.h"

namespace corvan {

HMODULE ThisModule() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&ThisModule), &module);
    return module;
}

std::string ThisModulePath() {
    char path[MAX_PATH * 2];
    DWORD length = GetModuleFileNameA(ThisModule(), path, sizeof path);
    return std::string(path, length);
}

}  // namespace corvan
