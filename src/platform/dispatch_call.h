#pragma once
#include <string>
#include <vector>

#include <windows.h>
#include <oaidl.h>

namespace corvan {

// Owns one VARIANT.
class OwnedVariant {
public:
    OwnedVariant() { VariantInit(&v_); }
    ~OwnedVariant() { VariantClear(&v_); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;
    VARIANT* Get() { return &v_; }
    const VARIANT& operator*() const { return v_; }

private:
    VARIANT v_;
};

// Reads property `name` of an automation object, with optional integer
// arguments (an indexed property such as Item(i)). Throws a Failure with
// the HRESULT and the object's own error text when the call fails.
void GetDispatchProperty(IDispatch* object, const std::string& name, const std::vector<long>& arguments,
                         OwnedVariant& result);

// The text of a VARIANT holding a BSTR (ANSI); empty for anything else.
std::string VariantText(const VARIANT& value);

}  // namespace corvan
