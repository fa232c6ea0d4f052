// A component that registers itself as controls do. DllRegisterServer writes
// HKEY_CLASSES_ROOT\CorvanTests.Registered\<its own file name>: the default
// value is its full path, "Apartment" says whether its caller gave the thread
// a COM apartment ("given") or not ("none"). DllUnregisterServer removes the
// key. Built with CORVAN_REGISTER_DELAY_MS, the registration first waits that
// long, as a routine that hangs does.
#include <windows.h>
#include <objbase.h>
#include <olectl.h>

namespace {

// The key of this copy of the module, by its own file name.
bool OwnKey(char* path, DWORD pathSize, char* key, DWORD keySize) {
    HMODULE self = nullptr;
    if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<LPCSTR>(&OwnKey), &self))
        return false;
    const DWORD length = GetModuleFileNameA(self, path, pathSize);
    if (!length || length >= pathSize) return false;
    const char* name = path + length;
    while (name > path && name[-1] != '\\') --name;
    return wsprintfA(key, "CorvanTests.Registered\\%s", name) < static_cast<int>(keySize);
}

}  // namespace

STDAPI DllRegisterServer() {
#ifdef CORVAN_REGISTER_DELAY_MS
    Sleep(CORVAN_REGISTER_DELAY_MS);
#endif
    char path[MAX_PATH], key[MAX_PATH + 64];
    if (!OwnKey(path, sizeof path, key, sizeof key)) return SELFREG_E_CLASS;
    const HRESULT com = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const char* apartment = com == S_FALSE ? "given" : "none";
    if (SUCCEEDED(com)) CoUninitialize();
    HKEY handle = nullptr;
    if (RegCreateKeyExA(HKEY_CLASSES_ROOT, key, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &handle, nullptr))
        return SELFREG_E_CLASS;
    RegSetValueExA(handle, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(path), lstrlenA(path) + 1);
    RegSetValueExA(handle, "Apartment", 0, REG_SZ, reinterpret_cast<const BYTE*>(apartment), lstrlenA(apartment) + 1);
    RegCloseKey(handle);
    return S_OK;
}

STDAPI DllUnregisterServer() {
    char path[MAX_PATH], key[MAX_PATH + 64];
    if (!OwnKey(path, sizeof path, key, sizeof key)) return SELFREG_E_CLASS;
    return RegDeleteTreeA(HKEY_CLASSES_ROOT, key) == ERROR_SUCCESS ? S_OK : SELFREG_E_CLASS;
}
