#pragma once
#include <string>

// Registers and unregisters one component file with COM. Every call answers
// with a text: empty on success, otherwise the reason it failed. Nothing
// escapes these functions.
namespace corvan::RegisterControls {

// By the file's extension: tlb/olb go to the type-library path, ocx/dll to
// the module's own entry points (falling back to the type-library path);
// anything else has nothing to register and succeeds.
std::string RegisterFile(const std::string& path, bool unregister);

// Registers (no help folder) or unregisters the type library in `path`.
std::string RegisterTypeLibFile(const std::string& path, bool unregister);

// Runs DllRegisterServer or DllUnregisterServer of the module on a thread of
// its own and waits for it at most 10,000 ms.
std::string CallDllServer(const std::string& path, bool unregister);

}  // namespace corvan::RegisterControls
