#include "platform/clsTalo.h"

#include "common/desktop.h"
#include "platform/create_object.h"
#include "platform/dispatch_call.h"
#include "platform/legacy_products.h"

namespace corvan {
namespace {

std::vector<std::string> InstalledProducts(IDispatch* installer) {
    OwnedVariant products;
    GetDispatchProperty(installer, "Products", {}, products);
    if ((*products).vt != VT_DISPATCH || !(*products).pdispVal) return {};
    IDispatch* list = (*products).pdispVal;

    OwnedVariant count;
    GetDispatchProperty(list, "Count", {}, count);
    OwnedVariant number;
    VariantChangeType(number.Get(), const_cast<VARIANT*>(&*count), 0, VT_I4);
    std::vector<std::string> codes;
    for (long i = 0; i < (*number).lVal; ++i) {
        OwnedVariant code;
        GetDispatchProperty(list, "Item", {i}, code);
        codes.push_back(VariantText(*code));
    }
    return codes;
}

}  // namespace

bool clsTalo::LegacyTaloIsInstalled() {
    found_.assign(6, std::string());
    const ObjectCreation installer = CreateAutomationObject("WindowsInstaller.Installer");
    if (!installer.object) return false;

    const std::vector<std::string> products = InstalledProducts(installer.object.get());
    legacy::LegacyScan scan = legacy::ScanLegacyProducts(products, [this] {
        if (desktop_) desktop_->DoEvents();
    });
    found_ = std::move(scan.found);
    return scan.installed;
}

}  // namespace corvan
