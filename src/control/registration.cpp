#include "control/registration.h"

#include <comcat.h>

#include "control/com_class_table.h"
#include "control/com_ptr.h"
#include "control/CorvanInstaller_h.h"
#include "control/OleControl.h"
#include "control/type_library.h"

namespace corvan::com {

namespace {

// {7DD95801-9882-11CF-9FA9-00AA006C42C4} and {7DD95802-...}
const CATID kSafeForScripting = {0x7dd95801, 0x9882, 0x11cf, {0x9f, 0xa9, 0x00, 0xaa, 0x00, 0x6c, 0x42, 0xc4}};
const CATID kSafeForInitializing = {0x7dd95802, 0x9882, 0x11cf, {0x9f, 0xa9, 0x00, 0xaa, 0x00, 0x6c, 0x42, 0xc4}};

std::string GuidText(REFGUID guid) {
    wchar_t wide[40] = {};
    StringFromGUID2(guid, wide, 40);
    char text[40] = {};
    WideCharToMultiByte(CP_ACP, 0, wide, -1, text, sizeof text, nullptr, nullptr);
    return text;
}

class Key {
public:
    explicit Key(const std::string& path) {
        result_ = RegCreateKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  KEY_READ | KEY_WRITE, nullptr, &key_, nullptr);
    }
    ~Key() { if (key_) RegCloseKey(key_); }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    // An empty name sets the key's default value.
    void Set(const char* name, const std::string& value) {
        if (result_ != ERROR_SUCCESS) return;
        result_ = RegSetValueExA(key_, *name ? name : nullptr, 0, REG_SZ,
                                 reinterpret_cast<const BYTE*>(value.c_str()), static_cast<DWORD>(value.size() + 1));
    }
    LONG Result() const { return result_; }

private:
    HKEY key_ = nullptr;
    LONG result_ = ERROR_SUCCESS;
};

// Writes one key with its default value; the first failure is kept.
class Writer {
public:
    void Write(const std::string& path, const std::string& value, const char* name = "") {
        Key key(path);
        key.Set(name, value);
        if (key.Result() != ERROR_SUCCESS && failure_ == ERROR_SUCCESS) failure_ = key.Result();
    }
    HRESULT Result() const { return failure_ == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(failure_); }

private:
    LONG failure_ = ERROR_SUCCESS;
};

std::string ReadDefault(const std::string& path) {
    char value[256] = {};
    LONG size = sizeof value;
    if (RegQueryValueA(HKEY_CLASSES_ROOT, path.c_str(), value, &size) != ERROR_SUCCESS) return {};
    return value;
}

// ole32 needs COM on this thread; regsvr32 does not always provide it.
class ComScope {
public:
    ComScope() : hr_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~ComScope() { if (SUCCEEDED(hr_)) CoUninitialize(); }

private:
    HRESULT hr_;
};

HRESULT SetSafetyCategories(REFCLSID clsid, bool add) {
    ComPtr<ICatRegister> categories;
    HRESULT hr = CoCreateInstance(CLSID_StdComponentCategoriesMgr, nullptr, CLSCTX_INPROC_SERVER, IID_ICatRegister,
                                  categories.PutVoid());
    if (FAILED(hr)) return hr;
    CATID ids[2] = {kSafeForScripting, kSafeForInitializing};
    if (!add) return categories->UnRegisterClassImplCategories(clsid, 2, ids);
    CATEGORYINFO info[2] = {};
    info[0].catid = kSafeForScripting;
    info[0].lcid = 0x409;
    lstrcpynW(info[0].szDescription, L"Controls safely scriptable!", 128);
    info[1].catid = kSafeForInitializing;
    info[1].lcid = 0x409;
    lstrcpynW(info[1].szDescription, L"Controls safely initializable from persistent data!", 128);
    hr = categories->RegisterCategories(2, info);
    if (FAILED(hr)) return hr;
    return categories->RegisterClassImplCategories(clsid, 2, ids);
}

HRESULT RegisterClass(const PublicClass& entry, const std::string& modulePath, const std::string& libraryId) {
    Writer writer;
    const std::string clsid = GuidText(*entry.clsid);
    const std::string clsidKey = std::string("CLSID\\") + clsid;
    writer.Write(clsidKey, entry.name);
    writer.Write(clsidKey + "\\InprocServer32", modulePath);
    writer.Write(clsidKey + "\\InprocServer32", "Apartment", "ThreadingModel");
    writer.Write(clsidKey + "\\ProgID", entry.progId);
    writer.Write(clsidKey + "\\VersionIndependentProgID", entry.versionIndependentProgId);
    writer.Write(clsidKey + "\\TypeLib", libraryId);
    writer.Write(clsidKey + "\\Version", "1.0");
    writer.Write(clsidKey + "\\Programmable", "");
    if (entry.isControl) {
        writer.Write(clsidKey + "\\Control", "");
        writer.Write(clsidKey + "\\MiscStatus", "0");
        writer.Write(clsidKey + "\\MiscStatus\\1", std::to_string(kControlMiscStatus));
    }
    writer.Write(entry.progId, entry.name);
    writer.Write(std::string(entry.progId) + "\\CLSID", clsid);
    writer.Write(entry.versionIndependentProgId, entry.name);
    writer.Write(std::string(entry.versionIndependentProgId) + "\\CLSID", clsid);
    writer.Write(std::string(entry.versionIndependentProgId) + "\\CurVer", entry.progId);
    if (FAILED(writer.Result())) return writer.Result();
    return entry.isControl ? SetSafetyCategories(*entry.clsid, true) : S_OK;
}

// Deletes a key with everything below it (RegDeleteTree is not on Windows XP).
// A subkey that cannot be deleted is stepped over and keeps its parent.
bool DeleteKeyTree(HKEY parent, const std::string& name) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(parent, name.c_str(), 0, KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE, &key) != ERROR_SUCCESS)
        return false;
    DWORD index = 0;
    for (;;) {
        char child[256];  // a key name has at most 255 characters
        DWORD size = sizeof child;
        if (RegEnumKeyExA(key, index, child, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        if (!DeleteKeyTree(key, child)) ++index;
    }
    RegCloseKey(key);
    return RegDeleteKeyA(parent, name.c_str()) == ERROR_SUCCESS;
}

void DeleteProgIdIfOurs(const std::string& progId, const std::string& clsid) {
    if (ReadDefault(progId + "\\CLSID") == clsid) DeleteKeyTree(HKEY_CLASSES_ROOT, progId);
}

}  // namespace

HRESULT RegisterServer(const std::string& modulePath) {
    ComScope com;
    ITypeLib* library = OwnTypeLibrary();
    if (!library) return TYPE_E_CANTLOADLIBRARY;
    const std::string libraryId = GuidText(LIBID_CorvanInstaller);
    for (const PublicClass* entry = PublicClassesBegin(); entry != PublicClassesEnd(); ++entry) {
        HRESULT hr = RegisterClass(*entry, modulePath, libraryId);
        if (FAILED(hr)) return hr;
    }
    int wide = MultiByteToWideChar(CP_ACP, 0, modulePath.c_str(), -1, nullptr, 0);
    std::wstring path(static_cast<size_t>(wide), L'\0');
    MultiByteToWideChar(CP_ACP, 0, modulePath.c_str(), -1, path.data(), wide);
    return RegisterTypeLib(library, path.data(), nullptr);
}

HRESULT UnregisterServer() {
    ComScope com;
    for (const PublicClass* entry = PublicClassesBegin(); entry != PublicClassesEnd(); ++entry) {
        const std::string clsid = GuidText(*entry->clsid);
        if (entry->isControl) SetSafetyCategories(*entry->clsid, false);
        DeleteProgIdIfOurs(entry->versionIndependentProgId, clsid);
        DeleteProgIdIfOurs(entry->progId, clsid);
        DeleteKeyTree(HKEY_CLASSES_ROOT, std::string("CLSID\\") + clsid);
    }
    TLIBATTR* attributes = nullptr;
    ITypeLib* library = OwnTypeLibrary();
    if (library && SUCCEEDED(library->GetLibAttr(&attributes))) {
        UnRegisterTypeLib(attributes->guid, attributes->wMajorVerNum, attributes->wMinorVerNum, attributes->lcid,
                          attributes->syskind);
        library->ReleaseTLibAttr(attributes);
    }
    return S_OK;
}

}  // namespace corvan::com
