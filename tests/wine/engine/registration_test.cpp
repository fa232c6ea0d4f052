#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <windows.h>

#include "engine/RegisterControls.h"
#include "engine/registration_pass.h"
#include "wine_bench.h"

namespace RegisterControls = corvan::RegisterControls;

namespace {

const std::string kNotAModule = "Not an exectuable file, or the file is corrupt (LoadLibrary failed).";
const std::string kServerKeys = "CorvanTests.Registered";
const std::string kTypeLibKey = "TypeLib\\{5DCFA656-5C77-44C7-BC1D-5157D85D9C59}";
// Where the test type library's path is registered in this process's bitness.
const std::string kTypeLibPathKey = kTypeLibKey + (sizeof(void*) == 8 ? "\\1.0\\0\\win64" : "\\1.0\\0\\win32");

std::string ServerKey(const std::string& file) { return kServerKeys + "\\" + file; }

std::optional<std::string> ClassesValue(const std::string& key, const char* name = nullptr) {
    char data[1024];
    DWORD size = sizeof data;
    if (RegGetValueA(HKEY_CLASSES_ROOT, key.c_str(), name, RRF_RT_REG_SZ, nullptr, data, &size) != ERROR_SUCCESS)
        return std::nullopt;
    return std::string(data);
}

std::string BesideThisProgram(const std::string& file) {
    char self[MAX_PATH];
    const std::string path(self, GetModuleFileNameA(nullptr, self, MAX_PATH));
    return path.substr(0, path.find_last_of('\\') + 1) + file;
}

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

std::string Progress(int position, int count) {
    return "progress " + std::to_string(static_cast<float>(position / static_cast<double>(count)));
}

// The components built by the test build, copied into a scratch folder under
// the names the cases use.
class Registration : public ::testing::Test {
protected:
    void SetUp() override {
        ClearRegistrations();
        for (const auto& [built, name] : std::vector<std::pair<std::string, std::string>>{
                 {"test_registering_server.dll", "registering.dll"},
                 {"test_registering_server.dll", "CONTROL.OCX"},
                 {"test_registering_server.dll", "registering.bin"},
                 {"test_slow_registering_server.dll", "slow.dll"},
                 {"test_typelib_holder.dll", "typelib.dll"},
                 {"registration_test.tlb", "shared.tlb"},
                 {"registration_test.tlb", "CAPS.TLB"},
                 {"registration_test.tlb", "library.olb"},
             }) {
            ASSERT_TRUE(CopyFileA(BesideThisProgram(built).c_str(), (folder.Path() + name).c_str(), FALSE)) << built;
        }
        winbench::WriteFileBytes(folder.Path() + "notamodule.dll", "This is a text, not a module.\r\n");
    }
    void TearDown() override { ClearRegistrations(); }

    static void ClearRegistrations() {
        RegDeleteTreeA(HKEY_CLASSES_ROOT, kServerKeys.c_str());
        RegDeleteTreeA(HKEY_CLASSES_ROOT, kTypeLibKey.c_str());
    }

    winbench::ScratchFolder folder{"registration"};
};

enum class Call { RegisterFile, CallDllServer, RegisterTypeLibFile };

struct ModuleCase {
    Call call;
    const char* file;
    bool unregister;
    const char* expected;     // the returned text; "?" for the system's words, never empty
    std::string key;          // checked afterwards under HKEY_CLASSES_ROOT; empty: nothing to check
    bool registered;          // the key holds this file's path, or is gone
};

// In order: each registration is undone by a later case.
const ModuleCase kModuleCases[] = {
    {Call::RegisterFile, "registering.dll", false, "", ServerKey("registering.dll"), true},
    {Call::RegisterFile, "registering.dll", true, "", ServerKey("registering.dll"), false},
    {Call::RegisterFile, "CONTROL.OCX", false, "", ServerKey("CONTROL.OCX"), true},
    {Call::RegisterFile, "CONTROL.OCX", true, "", ServerKey("CONTROL.OCX"), false},
    // Not a control or library: nothing runs, and that is a success.
    {Call::RegisterFile, "registering.bin", false, "", ServerKey("registering.bin"), false},
    // A library without the entries that holds a type library.
    {Call::CallDllServer, "typelib.dll", false,
     "File was loaded, but the DllRegisterServer entry point was not found.", "", false},
    {Call::CallDllServer, "typelib.dll", true,
     "File was loaded, but the DllUnregisterServer entry point was not found.", "", false},
    {Call::RegisterFile, "typelib.dll", false, "", kTypeLibPathKey, true},
    {Call::RegisterFile, "typelib.dll", true, "", kTypeLibPathKey, false},
    {Call::RegisterFile, "shared.tlb", false, "", kTypeLibPathKey, true},
    {Call::RegisterFile, "shared.tlb", true, "", kTypeLibPathKey, false},
    {Call::RegisterFile, "CAPS.TLB", false, "", kTypeLibPathKey, true},
    {Call::RegisterTypeLibFile, "CAPS.TLB", true, "", kTypeLibPathKey, false},
    {Call::RegisterFile, "library.olb", false, "", kTypeLibPathKey, true},
    {Call::RegisterFile, "library.olb", true, "", kTypeLibPathKey, false},
    // Neither a module nor a type library: the module's own text wins.
    {Call::RegisterFile, "notamodule.dll", false, kNotAModule.c_str(), "", false},
    {Call::RegisterTypeLibFile, "notamodule.dll", false, "?", "", false},
    {Call::RegisterTypeLibFile, "missing.tlb", true, "?", "", false},
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
        if (c.key.empty()) continue;
        if (c.registered)
            EXPECT_EQ(ClassesValue(c.key), path);
        else
            EXPECT_EQ(ClassesValue(c.key), std::nullopt);
    }
    // Routines that use COM find their thread in an apartment, as under
    // regsvr32.
    RegisterControls::RegisterFile(folder.Path() + "registering.dll", false);
    EXPECT_EQ(ClassesValue(ServerKey("registering.dll"), "Apartment"), "given");
}

TEST_F(Registration, ARoutineThatHangsIsLeftRunningAfterTheBoundedWait) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(RegisterControls::RegisterFile(folder.Path() + "slow.dll", false), "");
    const double waited = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("bounded registration wait: %.2f s\n", waited);
    EXPECT_GE(waited, 9.0);
    EXPECT_LT(waited, 14.0);
    EXPECT_EQ(ClassesValue(ServerKey("slow.dll")), std::nullopt);

    // The routine goes on in its still-loaded library and finishes its work.
    for (int i = 0; i < 200 && !ClassesValue(ServerKey("slow.dll")); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(ClassesValue(ServerKey("slow.dll")), folder.Path() + "slow.dll");
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
    EXPECT_EQ(registering.lines, (std::vector<std::string>{
                                     "status Registering registering.dll", "status Registration: Successful",
                                     Progress(1, 7),
                                     "status Registering notamodule.dll", "status Registration: Failed",
                                     "status Error: " + kNotAModule, Progress(2, 7),
                                     "status Registering CONTROL.OCX", "status Registration: Successful",
                                     Progress(3, 7),
                                     "status Registering CAPS.TLB", "status Registration: Successful",
                                     Progress(4, 7), Progress(5, 7), Progress(6, 7), Progress(7, 7),
                                 }));
    // The olb after it and the library that does not ask were left alone.
    EXPECT_EQ(ClassesValue(kTypeLibPathKey), folder.Path() + "CAPS.TLB");

    EventLog removing;
    EXPECT_EQ(corvan::Registration(colItems, true, removing), "");
    EXPECT_EQ(removing.lines, (std::vector<std::string>{
                                  "status Removing Registration for registering.dll",
                                  "status Registration: Successful", Progress(1, 7),
                                  "status Removing Registration for notamodule.dll", "status Registration: Failed",
                                  "status Error: " + kNotAModule, Progress(2, 7),
                                  Progress(3, 7),  // its own uninstall command unregisters it
                                  "status Removing Registration for CAPS.TLB", "status Registration: Successful",
                                  Progress(4, 7), Progress(5, 7), Progress(6, 7), Progress(7, 7),
                              }));
    EXPECT_EQ(ClassesValue(ServerKey("registering.dll")), std::nullopt);
    EXPECT_EQ(ClassesValue(ServerKey("CONTROL.OCX")), folder.Path() + "CONTROL.OCX");
    EXPECT_EQ(ClassesValue(kTypeLibPathKey), std::nullopt);

    // A failure inside the walk ends it and is reported with its context.
    EventLog failing;
    failing.failure = corvan::RuntimeError(corvan::error::kInvalidProcedureCall, "Collection");
    EXPECT_EQ(corvan::Registration(colItems, false, failing), "");
    EXPECT_EQ(failing.lines, (std::vector<std::string>{
                                 "status Registering registering.dll",
                                 "error 5 - Collection - Invalid procedure call or argument - clsInsall.Registration()",
                             }));
}
