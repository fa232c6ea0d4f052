#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include <windows.h>
#include <oaidl.h>

namespace corvan {

struct ReleaseInterface {
    void operator()(IUnknown* object) const { object->Release(); }
};
using DispatchPtr = std::unique_ptr<IDispatch, ReleaseInterface>;

// The outcome of creating an automation object by its ProgID, with the error
// number and description a script would see for a failure.
struct ObjectCreation {
    DispatchPtr object;
    int32_t number = 0;
    std::string description;
};

// Creates the object the way a script's CreateObject does: ProgID to CLSID,
// an in-process or local server, then its automation interface. A ProgID
// that is unknown or whose server cannot be loaded is error 429.
ObjectCreation CreateAutomationObject(const std::string& progId);

}  // namespace corvan
