#include <gtest/gtest.h>

#include <windows.h>
#include <objbase.h>

#include "platform/clsTalo.h"
#include "platform/modPDFVer.h"
#include "scripted_desktop.h"
#include "wine_bench.h"

using namespace corvan;

namespace {

const std::string kHeader =
    "There was an error while loading the Acrobat Internet Control.\r\n"
    "Please reinstall acrobat, or upgrade to the latest version.\r\n\r\n";
// A real automation class of the system (the scripting runtime's dictionary)
// stands in for a reader control under the reader's names.
const std::string kReaderClsid = "{EE09B103-97E0-11CF-978F-00A02463E06F}";
const std::string kBrokenClsid = "{90515AB4-2445-43C2-8817-6299BFA85BED}";
const std::string kFirstRelease = "{7EE17AF3-3434-11D5-AC76-00010262094C}";
const std::string kSecondRelease = "{B8F23408-5FCD-4C75-A7BB-4FB1A2AED802}";

std::string TestFolder() {
    char self[MAX_PATH];
    const std::string path(self, GetModuleFileNameA(nullptr, self, sizeof self));
    return path.substr(0, path.find_last_of('\\') + 1);
}

std::string Entry(const std::string& label) {
    return label + " - 429: ActiveX component can't create object\r\n\r\n";
}

void SetClassesValue(const std::string& path, const std::string& value, const char* name = nullptr) {
    ASSERT_EQ(RegSetKeyValueA(HKEY_CLASSES_ROOT, path.c_str(), name, REG_SZ, value.c_str(),
                              static_cast<DWORD>(value.size() + 1)),
              ERROR_SUCCESS);
}

void Succeeds(const std::string& command) {
    const auto result = winbench::RunAndWait(command);
    EXPECT_EQ(result.exitCode, 0) << command << ": " << result.output;
}

class Detection : public ::testing::Test {
protected:
    void SetUp() override { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    void TearDown() override {
        const std::string keys[] = {"PDF.PdfCtrl.6", "PDF.PdfCtrl.5", "acroPDF.PDF", "CLSID\\" + kBrokenClsid};
        for (const std::string& key : keys) RegDeleteTreeA(HKEY_CLASSES_ROOT, key.c_str());
        CoUninitialize();
    }
};

}  // namespace

TEST_F(Detection, ReaderControlsAreTriedNewestFirst) {
    EXPECT_EQ(GetAcrobatProgID(), kHeader + Entry("Looking for v7+") + Entry("Looking for v5") + Entry("Looking for v6"));
    EXPECT_FALSE(AcrobatIsInstalled());

    SetClassesValue("PDF.PdfCtrl.6\\CLSID", kReaderClsid);
    EXPECT_EQ(GetAcrobatProgID(), "PDF.PdfCtrl.6");
    EXPECT_EQ(AcrobatErrorText(), kHeader + Entry("Looking for v7+") + Entry("Looking for v5"));
    EXPECT_TRUE(AcrobatIsInstalled());

    // A version 5 control whose server is gone is noted and skipped.
    SetClassesValue("PDF.PdfCtrl.5\\CLSID", kBrokenClsid);
    SetClassesValue("CLSID\\" + kBrokenClsid + "\\InprocServer32", "C:\\corvan-tests\\missing\\reader.dll");
    EXPECT_EQ(GetAcrobatProgID(), "PDF.PdfCtrl.6");
    EXPECT_EQ(AcrobatErrorText(), kHeader + Entry("Looking for v7+") + Entry("Looking for v5"));

    SetClassesValue("acroPDF.PDF\\CLSID", kReaderClsid);
    EXPECT_EQ(GetAcrobatProgID(), "acroPDF.PDF");
    EXPECT_EQ(AcrobatErrorText(), kHeader);
}

// Asked both directly and as a script asks the public class: created by
// ProgID from the registered server and called by name, late bound.
TEST_F(Detection, LegacyReleasesAreFoundThroughTheWindowsInstaller) {
    std::string server = winbench::OutDir();
    if (!server.empty() && server.back() != '\\') server += '\\';
    server += "CorvanInstaller.ocx";
    Succeeds("regsvr32 /s \"" + server + "\"");
    CLSID clsid{};
    ASSERT_EQ(CLSIDFromProgID(L"CorvanInstaller.clsTalo", &clsid), S_OK);
    IDispatch* scripted = nullptr;
    ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&scripted)),
              S_OK);
    auto askScripted = [scripted] {
        LPOLESTR names[] = {const_cast<LPOLESTR>(L"LegacyTaloIsInstalled")};
        DISPID id = 0;
        EXPECT_EQ(scripted->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), S_OK);
        DISPPARAMS none{};
        VARIANT result;
        VariantInit(&result);
        EXPECT_EQ(scripted->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, &result, nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(result.vt, VT_BOOL);
        return result.boolVal;
    };
    testing_support::ScriptedDesktop desktop;
    clsTalo talo(&desktop);
    EXPECT_FALSE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), std::vector<std::string>(6));
    EXPECT_EQ(askScripted(), VARIANT_FALSE);

    Succeeds("msiexec /i \"" + TestFolder() + "legacy_talo_first.msi\" /qn");
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{kFirstRelease, "", "", "", "", ""}));
    EXPECT_EQ(desktop.pumps, 1);
    EXPECT_EQ(askScripted(), VARIANT_TRUE);

    Succeeds("msiexec /i \"" + TestFolder() + "legacy_talo_second.msi\" /qn");
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{kFirstRelease, "", "", "", kSecondRelease, "4"}));

    Succeeds("msiexec /x " + kFirstRelease + " /qn");
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{"", "", "", "", kSecondRelease, "4"}));

    Succeeds("msiexec /x " + kSecondRelease + " /qn");
    EXPECT_FALSE(talo.LegacyTaloIsInstalled());
    scripted->Release();
    Succeeds("regsvr32 /s /u \"" + server + "\"");
}
