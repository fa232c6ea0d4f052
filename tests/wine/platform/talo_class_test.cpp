#include <gtest/gtest.h>

#include <windows.h>
#include <objbase.h>

#include "wine_bench.h"

namespace {

std::string ServerPath() {
    std::string dir = winbench::OutDir();
    if (!dir.empty() && dir.back() != '\\') dir += '\\';
    return dir + "CorvanInstaller.ocx";
}

std::string TestFolder() {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string path = self;
    return path.substr(0, path.find_last_of('\\') + 1);
}

// Calls LegacyTaloIsInstalled the way a script does: by name, late bound.
VARIANT CallByName(IDispatch* object, const wchar_t* name) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    DISPID id = 0;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), S_OK);
    DISPPARAMS none{};
    VARIANT result;
    VariantInit(&result);
    EXPECT_EQ(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, &result, nullptr, nullptr),
              S_OK);
    return result;
}

}  // namespace

TEST(TaloClass, ScriptsCreateItByProgIdAndAskForLegacyReleases) {
    ASSERT_EQ(winbench::RunAndWait("regsvr32 /s \"" + ServerPath() + "\"").exitCode, 0) << ServerPath();
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
        CLSID clsid{};
        ASSERT_EQ(CLSIDFromProgID(L"CorvanInstaller.clsTalo", &clsid), S_OK);
        IDispatch* talo = nullptr;
        ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                   reinterpret_cast<void**>(&talo)),
                  S_OK);

        VARIANT before = CallByName(talo, L"LegacyTaloIsInstalled");
        EXPECT_EQ(before.vt, VT_BOOL);
        EXPECT_EQ(before.boolVal, VARIANT_FALSE);

        const std::string msi = TestFolder() + "legacy_talo_first.msi";
        ASSERT_EQ(winbench::RunAndWait("msiexec /i \"" + msi + "\" /qn").exitCode, 0);
        VARIANT after = CallByName(talo, L"LegacyTaloIsInstalled");
        EXPECT_EQ(after.vt, VT_BOOL);
        EXPECT_EQ(after.boolVal, VARIANT_TRUE);
        winbench::RunAndWait("msiexec /x {7EE17AF3-3434-11D5-AC76-00010262094C} /qn");
        talo->Release();
    }
    CoUninitialize();
    winbench::RunAndWait("regsvr32 /s /u \"" + ServerPath() + "\"");
}
