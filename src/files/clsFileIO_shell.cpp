// The shell's facts about a file: detail columns through Shell.Application,
// icon and type name through SHGetFileInfoA.
#include "files/clsFileIO.h"

#include <olectl.h>
#include <shellapi.h>
#include <shldisp.h>

namespace corvan {
namespace {

template <typename T>
struct ComRelease {
    T* p = nullptr;
    ~ComRelease() {
        if (p) p->Release();
    }
};

struct Bstr {
    BSTR b = nullptr;
    ~Bstr() { SysFreeString(b); }
};

BSTR ToBstr(const std::string& text) {
    const int n = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    BSTR b = SysAllocStringLen(nullptr, static_cast<UINT>(n));
    if (b && n > 0) MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), b, n);
    return b;
}

std::string FromBstr(BSTR b) {
    if (b == nullptr) return {};
    const int length = static_cast<int>(SysStringLen(b));
    const int n = WideCharToMultiByte(CP_ACP, 0, b, length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(n), '\0');
    if (n > 0) WideCharToMultiByte(CP_ACP, 0, b, length, text.data(), n, nullptr, nullptr);
    return text;
}

// Column numbers differ between Windows versions; the header texts do not.
constexpr int kColumnsToSearch = 320;

}  // namespace

std::string clsFileIO::GetFileSummaryItem(const std::string& columnName) const {
    const size_t slash = path_.find_last_of('\\');
    if (slash == std::string::npos) return {};
    const std::string folder = path_.substr(0, slash + 1), name = path_.substr(slash + 1);

    ComRelease<IShellDispatch> shell;
    if (FAILED(CoCreateInstance(CLSID_Shell, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IShellDispatch,
                                reinterpret_cast<void**>(&shell.p))))
        return {};
    VARIANT where;
    VariantInit(&where);
    where.vt = VT_BSTR;
    where.bstrVal = ToBstr(folder);
    ComRelease<Folder> space;
    const HRESULT hr = shell.p->NameSpace(where, &space.p);
    VariantClear(&where);
    if (FAILED(hr) || space.p == nullptr) return {};
    ComRelease<FolderItem> item;
    Bstr itemName{ToBstr(name)};
    if (FAILED(space.p->ParseName(itemName.b, &item.p)) || item.p == nullptr) return {};

    VARIANT none;
    VariantInit(&none);
    VARIANT file;
    VariantInit(&file);
    file.vt = VT_DISPATCH;
    file.pdispVal = item.p;
    for (int column = 0; column < kColumnsToSearch; ++column) {
        Bstr header;
        if (FAILED(space.p->GetDetailsOf(none, column, &header.b))) break;
        if (FromBstr(header.b) != columnName) continue;
        Bstr value;
        if (FAILED(space.p->GetDetailsOf(file, column, &value.b))) return {};
        return FromBstr(value.b);
    }
    return {};
}

HICON clsFileIO::GetIcon(bool large) const {
    SHFILEINFOA info{};
    const UINT flags = SHGFI_ICON | (large ? SHGFI_LARGEICON : SHGFI_SMALLICON);
    if (SHGetFileInfoA(path_.c_str(), 0, &info, sizeof info, flags) == 0) return nullptr;
    return info.hIcon;
}

IPicture* clsFileIO::IconToPicture(HICON icon) {
    if (icon == nullptr) return nullptr;
    PICTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.picType = PICTYPE_ICON;
    description.icon.hicon = icon;
    IPicture* picture = nullptr;
    if (FAILED(OleCreatePictureIndirect(&description, IID_IPicture, TRUE, reinterpret_cast<void**>(&picture)))) {
        DestroyIcon(icon);  // it was handed over either way
        return nullptr;
    }
    return picture;
}

std::string clsFileIO::GetFileTypeName() const {
    SHFILEINFOA info{};
    if (SHGetFileInfoA(path_.c_str(), 0, &info, sizeof info, SHGFI_TYPENAME) == 0) return {};
    return info.szTypeName;
}

}  // namespace corvan
