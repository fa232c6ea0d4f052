// Component registration against the prefix's registry, with real modules
// and type libraries built by the test build.
#include <gtest/gtest.h>

#include <chrono>
#include <optional>

#include "engine/RegisterControls.h"
#include "engine/registration_pass.h"
#include "test_packages.h"
#include "wine_bench.h"

namespace RegisterControls = corvan::RegisterControls;

namespace {

const std::string kNotAModule = "Not an exectuable file, or the file is corrupt (LoadLibrary failed).";
const std::string kTypeLibKey = "TypeLib\\{6D3B8E21-4A7C-4F19-9E52-B0C8D1A3F764}";
// Where the test type library's path is registered in this process's bitness.
const std::string kTypeLibPathKey = kTypeLibKey + (sizeof(void*) == 8 ? "\\1.0\\0\\win64" : "\\1.0\\0\\win32");
const std::string kServerKey = testpackages::kSelfRegisteringKey;  // under HKCU; "Module" names the copy registered

std::optional<std::string> RegisteredServer() { return winbench::RegText(HKEY_CURRENT_USER, kServerKey, "Module"); }
std::optional<std::string> RegisteredTypeLib() { return winbench::RegText(HKEY_CLASSES_ROOT, kTypeLibPathKey, nullptr); }

struct EventLog : corvan::InstallEngineEvents {
    void InstallerError(const std::string& message) override { lines.push_back("error " + message); }
    void ProgressUpdate(float fraction) override { lines.push_back("progress " + std::to_string(fraction)); }
    void StatusMsgChange(const std::string& message) override {
        lines.push_back("status " + message);
        if (failure) throw *failure;
    }
    void InstallationStatus(const std::string& message) override { lines.push_back("installation " + message); }
    void FTPStatus(float, const std::string& message) override { lines.push_back("ftp " + message); }
    std::vector<std::string> lines;
    std::optional<corvan::Failure> failure;  // raised from the status handler
};

// What a pass over seven rows raises: for each row, "<name>+" registered,
// "<name>-" failed or "" left alone, then its progress.
std::vector<std::string> PassLines(const std::string& verb, const std::vector<std::string>& rows) {
    std::vector<std::string> lines;
    for (size_t i = 0; i < rows.size(); ++i) {
        const std::string& row = rows[i];
        if (!row.empty()) lines.push_back("status " + verb + row.substr(0, row.size() - 1));
        if (!row.empty()) lines.push_back(row.back() == '+' ? "status Registration: Successful" : "status Registration: Failed");
        if (!row.empty() && row.back() == '-') lines.push_back("status Error: " + kNotAModule);
        lines.push_back("progress " + std::to_string(static_cast<float>((i + 1) / static_cast<double>(rows.size()))));
    }
    return lines;
}

// The components built by the test build, copied into a scratch folder under
// the names the cases use.
class Registration : public ::testing::Test {
protected:
    void SetUp() override {
        ClearRegistrations();
        for (const auto& [built, name] : std::vector<std::pair<std::string, std::string>>{
                 {testpackages::Get(testpackages::kDll).path, "registering.dll"},
                 {testpackages::Get(testpackages::kDll).path, "CONTROL.OCX"},
                 {testpackages::Get(testpackages::kDll).path, "registering.bin"},
                 {winbench::BesideThisProgram("test_slow_self_registering.dll"), "slow.dll"},
                 {winbench::BesideThisProgram("test_typelib_holder.dll"), "typelib.dll"},
                 {testpackages::Get(testpackages::kTlb).path, "CAPS.TLB"},
                 {testpackages::Get(testpackages::kTlb).path, "library.olb"},
             }) {
            ASSERT_TRUE(CopyFileA(built.c_str(), (folder.Path() + name).c_str(), FALSE)) << built;
        }
        winbench::WriteFileBytes(folder.Path() + "notamodule.dll", "This is a text, not a module.\r\n");
    }
    void TearDown() override { ClearRegistrations(); }

    static void ClearRegistrations() {
        RegDeleteTreeA(HKEY_CURRENT_USER, kServerKey.c_str());
        RegDeleteTreeA(HKEY_CLASSES_ROOT, kTypeLibKey.c_str());
    }

    winbench::ScratchFolder folder{"registration"};
};

enum class Call { RegisterFile, CallDllServer, RegisterTypeLibFile };
enum class Check { Nothing, Server, TypeLib };

struct ModuleCase {
    Call call;
    const char* file;
    bool unregister;
    const char* expected;  // the returned text; "?" for the system's words, never empty
    Check check;           // looked at afterwards:
    bool registered;       // it names this file, or it is gone
};

// In order: each registration is undone by a later case.
const ModuleCase kModuleCases[] = {
    {Call::RegisterFile, "registering.dll", false, "", Check::Server, true},
    {Call::RegisterFile, "registering.dll", true, "", Check::Server, false},
    {Call::RegisterFile, "CONTROL.OCX", false, "", Check::Server, true},
    {Call::RegisterFile, "CONTROL.OCX", true, "", Check::Server, false},
    // Not a control or library: nothing runs, and that is a success.
    {Call::RegisterFile, "registering.bin", false, "", Check::Server, false},
    // A library without the entries that holds a type library.
    {Call::CallDllServer, "typelib.dll", false,
     "File was loaded, but the DllRegisterServer entry point was not found.", Check::Nothing, false},
    {Call::CallDllServer, "typelib.dll", true,
     "File was loaded, but the DllUnregisterServer entry point was not found.", Check::Nothing, false},
    {Call::RegisterFile, "typelib.dll", false, "", Check::TypeLib, true},
    {Call::RegisterFile, "typelib.dll", true, "", Check::TypeLib, false},
    {Call::RegisterFile, "CAPS.TLB", false, "", Check::TypeLib, true},
    {Call::RegisterTypeLibFile, "CAPS.TLB", true, "", Check::TypeLib, false},
    {Call::RegisterFile, "library.olb", false, "", Check::TypeLib, true},
    {Call::RegisterFile, "library.olb", true, "", Check::TypeLib, false},
    // Neither a module nor a type library: the module's own text wins.
    {Call::RegisterFile, "notamodule.dll", false, kNotAModule.c_str(), Check::Nothing, false},
    {Call::RegisterTypeLibFile, "notamodule.dll", false, "?", Check::Nothing, false},
    {Call::RegisterTypeLibFile, "missing.tlb", true, "?", Check::Nothing, false},
};

}  // namespace

TEST_F(Registration, RegistersAndUnregistersEachKindOfFile) {
    for (const ModuleCase& c : kModuleCases) {
        const std::string path = folder.Path() + c.file;
        SCOPED_TRACE(std::string(c.file) + (c.unregister ? " unregister" : " register"));
        const std::string result = c.call == Call::RegisterFile    ? RegisterControls::RegisterFile(path, c.unregister)
                                   : c.call == Call::CallDllServer ? RegisterControls::CallDllServer(path, c.unregister)
                                                                   : RegisterControls::RegisterTypeLibFile(path, c.unregister);
        if (std::string(c.expected) == "?") {
            EXPECT_FALSE(result.empty());
            EXPECT_NE(result, kNotAModule);
        } else {
            EXPECT_EQ(result, c.expected);
        }
        const std::optional<std::string> registered = c.registered ? std::optional(path) : std::nullopt;
        if (c.check != Check::Nothing) {
            EXPECT_EQ(c.check == Check::Server ? RegisteredServer() : RegisteredTypeLib(), registered);
        }
    }
    // Routines that use COM find their thread in an apartment, as under
    // regsvr32.
    RegisterControls::RegisterFile(folder.Path() + "registering.dll", false);
    EXPECT_EQ(winbench::RegText(HKEY_CURRENT_USER, kServerKey, "Apartment"), "given");
}

TEST_F(Registration, ARoutineThatHangsIsLeftRunningAfterTheBoundedWait) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(RegisterControls::RegisterFile(folder.Path() + "slow.dll", false), "");
    const double waited = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_GE(waited, 9.0);
    EXPECT_LT(waited, 14.0);
    EXPECT_EQ(RegisteredServer(), std::nullopt);

    // The routine goes on in its still-loaded library and finishes its work.
    winbench::WaitFor([] { return RegisteredServer().has_value(); }, 10000);
    EXPECT_EQ(RegisteredServer(), folder.Path() + "slow.dll");
}

TEST_F(Registration, ThePassRegistersWhatAsksForItAndCountsEveryItem) {
    struct Row {
        const char* file;
        int16_t registerFlag;
        const char* uninstallSwitch;
    };
    const Row rows[] = {
        {"registering.dll", 1, ""},  {"notamodule.dll", 1, ""}, {"CONTROL.OCX", 1, "/u"}, {"CAPS.TLB", 1, "  "},
        {"library.olb", 1, ""},      {"typelib.dll", 0, ""},    {"readme", 1, ""},
    };
    corvan::KeyedCollection<corvan::ItemRecord> colItems;
    for (const Row& row : rows) {
        corvan::ItemRecord item;
        item.FileName(row.file);
        item.InstallFolder(folder.Path());
        item.Register(row.registerFlag);
        item.UninstallSwitch(row.uninstallSwitch);
        colItems.Add(folder.Path() + row.file, item);
    }

    EventLog registering;
    EXPECT_EQ(corvan::Registration(colItems, false, registering), "");  // the last registration succeeded
    EXPECT_EQ(registering.lines, PassLines("Registering ", {"registering.dll+", "notamodule.dll-", "CONTROL.OCX+",
                                                            "CAPS.TLB+", "", "", ""}));
    // The olb after it and the library that does not ask were left alone.
    EXPECT_EQ(RegisteredServer(), folder.Path() + "CONTROL.OCX");
    EXPECT_EQ(RegisteredTypeLib(), folder.Path() + "CAPS.TLB");

    EventLog removing;
    EXPECT_EQ(corvan::Registration(colItems, true, removing), "");
    // The control's own uninstall command unregisters it.
    EXPECT_EQ(removing.lines, PassLines("Removing Registration for ", {"registering.dll+", "notamodule.dll-", "",
                                                                       "CAPS.TLB+", "", "", ""}));
    EXPECT_EQ(RegisteredServer(), std::nullopt);
    EXPECT_EQ(RegisteredTypeLib(), std::nullopt);

    // A failure inside the walk ends it and is reported with its context.
    EventLog failing;
    failing.failure = corvan::RuntimeError(corvan::error::kInvalidProcedureCall, "Collection");
    EXPECT_EQ(corvan::Registration(colItems, false, failing), "");
    EXPECT_EQ(failing.lines, (std::vector<std::string>{
                                 "status Registering registering.dll",
                                 "error 5 - Collection - Invalid procedure call or argument - clsInsall.Registration()",
                             }));
}
