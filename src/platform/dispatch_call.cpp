#include "platform/dispatch_call.h"

#include "common/failure.h"

namespace corvan {
namespace {

std::string Narrow(const wchar_t* text, int length) {
    if (!text || length <= 0) return {};
    const int n = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(n), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, length, out.data(), n, nullptr, nullptr);
    return out;
}

[[noreturn]] void Raise(HRESULT hr, const std::string& name, EXCEPINFO* info) {
    std::string description = "Automation error";
    if (info && info->bstrDescription)
        description = Narrow(info->bstrDescription, static_cast<int>(SysStringLen(info->bstrDescription)));
    if (info) {
        SysFreeString(info->bstrDescription);
        SysFreeString(info->bstrSource);
        SysFreeString(info->bstrHelpFile);
    }
    throw Failure(static_cast<int32_t>(hr), "CorvanInstaller - " + name, description);
}

}  // namespace

void GetDispatchProperty(IDispatch* object, const std::string& name, const std::vector<long>& arguments,
                         OwnedVariant& result) {
    std::wstring wideName(name.begin(), name.end());
    LPOLESTR names[] = {wideName.data()};
    DISPID id = 0;
    HRESULT hr = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(hr)) Raise(hr, name, nullptr);

    // Automation takes arguments last to first.
    std::vector<VARIANT> args(arguments.size());
    for (size_t i = 0; i < arguments.size(); ++i) {
        VARIANT& arg = args[arguments.size() - 1 - i];
        VariantInit(&arg);
        arg.vt = VT_I4;
        arg.lVal = arguments[i];
    }
    DISPPARAMS params{args.data(), nullptr, static_cast<UINT>(args.size()), 0};
    EXCEPINFO info{};
    hr = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET | DISPATCH_METHOD, &params,
                        result.Get(), &info, nullptr);
    if (FAILED(hr)) Raise(hr, name, hr == DISP_E_EXCEPTION ? &info : nullptr);
}

std::string VariantText(const VARIANT& value) {
    if (value.vt != VT_BSTR || !value.bstrVal) return {};
    return Narrow(value.bstrVal, static_cast<int>(SysStringLen(value.bstrVal)));
}

}  // namespace corvan
