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
const std::string kReaderClsid = "{DE63131E-5ECC-478B-B285-AAC173613E86}";
const std::string kFirstRelease = "{7EE17AF3-3434-11D5-AC76-00010262094C}";
const std::string kSecondRelease = "{B8F23408-5FCD-4C75-A7BB-4FB1A2AED802}";

std::string TestFolder() {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string path = self;
    return path.substr(0, path.find_last_of('\\') + 1);
}

std::string Entry(const std::string& label) {
    return label + " - 429: ActiveX component can't create object\r\n\r\n";
}

void SetClassesValue(const std::string& path, const std::string& value) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegSetValueExA(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                   static_cast<DWORD>(value.size() + 1));
    RegCloseKey(key);
}

class ComTest : public ::testing::Test {
protected:
    void SetUp() override { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    void TearDown() override { CoUninitialize(); }
};

class ReaderDetection : public ComTest {
protected:
    void RegisterReader() {
        const auto result = winbench::RunAndWait("regsvr32 /s \"" + TestFolder() + "test_reader_control.dll\"");
        ASSERT_EQ(result.exitCode, 0) << result.output;
        registered_ = true;
    }
    void TearDown() override {
        if (registered_) winbench::RunAndWait("regsvr32 /s /u \"" + TestFolder() + "test_reader_control.dll\"");
        RegDeleteTreeA(HKEY_CLASSES_ROOT, "acroPDF.PDF");
        RegDeleteTreeA(HKEY_CLASSES_ROOT, "PDF.PdfCtrl.5");
        RegDeleteTreeA(HKEY_CLASSES_ROOT, "CLSID\\{90515AB4-2445-43C2-8817-6299BFA85BED}");
        ComTest::TearDown();
    }
    bool registered_ = false;
};

using LegacyDetection = ComTest;

}  // namespace

TEST_F(ReaderDetection, WithoutAReaderEveryControlIsNoted) {
    const std::string text = GetAcrobatProgID();
    EXPECT_EQ(text, kHeader + Entry("Looking for v7+") + Entry("Looking for v5") + Entry("Looking for v6"));
    EXPECT_FALSE(AcrobatIsInstalled());
}

TEST_F(ReaderDetection, VersionSixIsFoundAfterTwoDiagnostics) {
    RegisterReader();
    EXPECT_EQ(GetAcrobatProgID(), "PDF.PdfCtrl.6");
    EXPECT_EQ(AcrobatErrorText(), kHeader + Entry("Looking for v7+") + Entry("Looking for v5"));
    EXPECT_TRUE(AcrobatIsInstalled());
}

TEST_F(ReaderDetection, VersionSevenWinsWithoutDiagnostics) {
    RegisterReader();
    SetClassesValue("acroPDF.PDF\\CLSID", kReaderClsid);
    EXPECT_EQ(GetAcrobatProgID(), "acroPDF.PDF");
    EXPECT_EQ(AcrobatErrorText(), kHeader);
}

TEST_F(ReaderDetection, AControlWhoseServerIsGoneIsNotedAndSkipped) {
    RegisterReader();
    const std::string broken = "{90515AB4-2445-43C2-8817-6299BFA85BED}";
    SetClassesValue("PDF.PdfCtrl.5\\CLSID", broken);
    SetClassesValue("CLSID\\" + broken + "\\InprocServer32", "C:\\corvan-tests\\missing\\reader.dll");
    EXPECT_EQ(GetAcrobatProgID(), "PDF.PdfCtrl.6");
    EXPECT_EQ(AcrobatErrorText(), kHeader + Entry("Looking for v7+") + Entry("Looking for v5"));
}

TEST_F(LegacyDetection, LegacyReleasesAreFoundThroughTheWindowsInstaller) {
    testing_support::ScriptedDesktop desktop;
    clsTalo talo(&desktop);
    EXPECT_FALSE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), std::vector<std::string>(6));

    auto install = [](const std::string& msi) {
        const auto result = winbench::RunAndWait("msiexec /i \"" + TestFolder() + msi + "\" /qn");
        EXPECT_EQ(result.exitCode, 0) << msi << ": " << result.output;
    };
    auto remove = [](const std::string& code) {
        const auto result = winbench::RunAndWait("msiexec /x " + code + " /qn");
        EXPECT_EQ(result.exitCode, 0) << code << ": " << result.output;
    };

    install("legacy_talo_first.msi");
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{kFirstRelease, "", "", "", "", ""}));
    EXPECT_EQ(desktop.pumps, 1);

    install("legacy_talo_second.msi");
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{kFirstRelease, "", "", "", kSecondRelease, "4"}));

    remove(kFirstRelease);
    EXPECT_TRUE(talo.LegacyTaloIsInstalled());
    EXPECT_EQ(talo.FoundProducts(), (std::vector<std::string>{"", "", "", "", kSecondRelease, "4"}));

    remove(kSecondRelease);
    EXPECT_FALSE(talo.LegacyTaloIsInstalled());
}
