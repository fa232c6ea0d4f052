#include "engine/RegisterControls.h"

#include <cstdio>
#include <memory>
#include <new>

#include <windows.h>
#include <objbase.h>
#include <oleauto.h>

#include "common/system_message.h"
#include "common/text.h"
#include "common/unique_any.h"
#include "common/wide_text.h"
#include "logging/modTrace.h"

namespace corvan::RegisterControls {
namespace {

// A registration routine that runs longer than this is left running and
// counted as a success.
constexpr DWORD kRegistrationWaitMs = 10000;

using UniqueLibrary = UniqueAny<HMODULE, &FreeLibrary>;
using UniqueThread = UniqueAny<HANDLE, &CloseHandle>;

// DllRegisterServer and DllUnregisterServer take no argument.
using ServerEntry = HRESULT(STDAPICALLTYPE*)();

// What the registration thread needs: the entry, and a reference of its own
// on the library that holds it.
struct EntryCall {
    ServerEntry entry;
    HMODULE pin;
};

// The registration thread starts here, not at the entry itself: a thread
// routine takes one argument and the entry none, and on x86 both clean their
// own stack, so starting at the entry would leave the stack one argument
// off. The thread keeps its own reference on the library and drops it only
// when the entry has returned, so a routine still running after the wait
// never finds its code unloaded. Its apartment is a single-threaded one, as
// regsvr32 gives, so routines that register component categories through COM
// work here too. The exit code is the entry's HRESULT.
DWORD WINAPI RunServerEntry(void* parameter) {
    const EntryCall call = *static_cast<EntryCall*>(parameter);
    delete static_cast<EntryCall*>(parameter);
    const HRESULT apartment = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const HRESULT result = call.entry();
    if (SUCCEEDED(apartment)) CoUninitialize();
    if (call.pin) FreeLibraryAndExitThread(call.pin, static_cast<DWORD>(result));
    return static_cast<DWORD>(result);
}

std::string HexCode(HRESULT code) {
    char text[16];
    std::snprintf(text, sizeof text, "&H%08lX", static_cast<unsigned long>(code));
    return text;
}

// The system's words for a failed call; a code the system has no words for
// still gives a text, so a failure never reads as a success.
std::string FailureText(HRESULT code) {
    std::string text = SystemMessage(static_cast<DWORD>(code));
    return Trim(text).empty() ? "Automation error " + HexCode(code) : text;
}

struct ReleaseTypeLib {
    void operator()(ITypeLib* library) const { library->Release(); }
};

HRESULT ApplyTypeLib(const std::string& path, bool unregister) {
    const std::wstring widePath = WideText(path);
    ITypeLib* loaded = nullptr;
    HRESULT hr = LoadTypeLibEx(widePath.c_str(), REGKIND_NONE, &loaded);
    if (FAILED(hr)) return hr;
    const std::unique_ptr<ITypeLib, ReleaseTypeLib> library(loaded);
    if (!unregister) return RegisterTypeLib(library.get(), const_cast<OLECHAR*>(widePath.c_str()), nullptr);
    TLIBATTR* attributes = nullptr;
    hr = library->GetLibAttr(&attributes);
    if (FAILED(hr)) return hr;
    hr = UnRegisterTypeLib(attributes->guid, attributes->wMajorVerNum, attributes->wMinorVerNum, attributes->lcid,
                           attributes->syskind);
    library->ReleaseTLibAttr(attributes);
    return hr;
}

std::string CallEntry(const std::string& path, bool unregister) {
    // Altered search path, as regsvr32 loads: a control finds the libraries
    // installed beside it.
    const UniqueLibrary library(LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!library) return "Not an exectuable file, or the file is corrupt (LoadLibrary failed).";

    const std::string entryName = unregister ? "DllUnregisterServer" : "DllRegisterServer";
    // Through the generic function type: the entry's own type differs from
    // what GetProcAddress declares.
    const auto entry = reinterpret_cast<ServerEntry>(
        reinterpret_cast<void (*)()>(GetProcAddress(library.Get(), entryName.c_str())));
    if (!entry) return "File was loaded, but the " + entryName + " entry point was not found.";

    auto call = std::make_unique<EntryCall>(EntryCall{entry, nullptr});
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCSTR>(entry), &call->pin);
    const HMODULE pin = call->pin;
    DWORD threadId = 0;
    const UniqueThread thread(CreateThread(nullptr, 0, &RunServerEntry, call.get(), 0, &threadId));
    if (!thread) {
        if (pin) FreeLibrary(pin);
        return entryName + " was found, but the function could not be executed (CreateThread failed).";
    }
    call.release();  // the thread owns it now

    std::string result;
    const DWORD waited = WaitForSingleObject(thread.Get(), kRegistrationWaitMs);
    if (waited == WAIT_FAILED) {
        // The calling thread ends here with the routine's exit code; that is
        // how this module has always answered a wait it cannot make.
        result = "WaitForSingleObject failed when calling " + entryName + ".";
        DWORD exitCode = 0;
        GetExitCodeThread(thread.Get(), &exitCode);
        ExitThread(exitCode);
    }
    if (waited == WAIT_TIMEOUT) {
        Trace({entryName + " of " + path + " still running after " + std::to_string(kRegistrationWaitMs) + " ms"});
    } else {
        DWORD exitCode = 0;
        GetExitCodeThread(thread.Get(), &exitCode);
        Trace({entryName + " of " + path + " returned " + HexCode(static_cast<HRESULT>(exitCode))});
    }
    return result;  // the thread handle is closed, then the library freed
}

// Nothing leaves this module as an exception: whatever escapes a step
// becomes the returned text.
template <typename Body>
std::string Trapped(Body&& body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return "Out of memory";
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

}  // namespace

std::string RegisterFile(const std::string& path, bool unregister) {
    return Trapped([&]() -> std::string {
        const std::string extension = LowerCase(path.substr(path.size() < 3 ? 0 : path.size() - 3));
        if (extension == "tlb" || extension == "olb") return RegisterTypeLibFile(path, unregister);
        if (extension != "ocx" && extension != "dll") return "";
        std::string result = CallDllServer(path, unregister);
        if (result.empty()) return result;
        // A library without the entry points may be a type library.
        if (RegisterTypeLibFile(path, unregister).empty()) return "";
        return result;
    });
}

std::string RegisterTypeLibFile(const std::string& path, bool unregister) {
    return Trapped([&]() -> std::string {
        const HRESULT hr = ApplyTypeLib(path, unregister);
        return SUCCEEDED(hr) ? std::string() : FailureText(hr);
    });
}

std::string CallDllServer(const std::string& path, bool unregister) {
    return Trapped([&] { return CallEntry(path, unregister); });
}

}  // namespace corvan::RegisterControls
