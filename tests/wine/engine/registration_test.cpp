// Registration against the prefix's registry, of modules and type libraries built by the test build.
#include <gtest/gtest.h>

#include <chrono>
#include <optional>

#include "engine/RegisterControls.h"
#include "engine/registration_pass.h"
#include "harness.h"
#include "test_packages.h"
#include "wine_bench.h"

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
    void FTPStatus(float, const std::string&) override {}
    std::vector<std::string> lines;
    std::optional<corvan::Failure> failure;  // raised from the status handler
};

// What a pass raises for rows marked "+" registered, "-" failed, "" left alone.
std::vector<std::string> PassLines(const std::string& verb, const std::vector<std::pair<std::string, std::string>>& rows) {
    std::vector<std::string> lines;
    for (size_t i = 0; i < rows.size(); ++i) {
        const auto& [file, mark] = rows[i];
        if (!mark.empty()) lines.push_back("status " + verb + file);
        if (!mark.empty()) lines.push_back(mark == "+" ? "status Registration: Successful" : "status Registration: Failed");
        if (mark == "-") lines.push_back("status Error: " + kNotAModule);
        lines.push_back("progress " + std::to_string(static_cast<float>((i + 1) / static_cast<double>(rows.size()))));
    }
    return lines;
}

// The built components, copied under the names the cases use.
class Registration : public ::testing::Test {
protected:
    void SetUp() override {
        ClearRegistrations();
        for (const auto& row : Table("registration.txt", "files")) {
            const std::string built = row[0] == "dll"   ? testpackages::Get(testpackages::kDll).path
                                      : row[0] == "tlb" ? testpackages::Get(testpackages::kTlb).path
                                                        : winbench::BesideThisProgram(row[0]);
            ASSERT_TRUE(CopyFileA(built.c_str(), (folder.Path() + row[1]).c_str(), FALSE)) << built;
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

TEST_F(Registration, RegistersAndUnregistersEachKindOfFile) {
    for (const auto& row : Table("registration.txt", "modules")) {
        SCOPED_TRACE(row.where);
        const std::string path = folder.Path() + row[1];
        const bool unregister = row[2] == "unregister";
        const std::string result = row[0] == "RegisterFile"    ? RegisterControls::RegisterFile(path, unregister)
                                   : row[0] == "CallDllServer" ? RegisterControls::CallDllServer(path, unregister)
                                                               : RegisterControls::RegisterTypeLibFile(path, unregister);
        if (row[3] == "?") {
            EXPECT_FALSE(result.empty());
            EXPECT_NE(result, kNotAModule);
        } else {
            EXPECT_EQ(result, row[3]);
        }
        const auto registered = row[4].rfind("server", 0) == 0 ? RegisteredServer() : RegisteredTypeLib();
        if (!row[4].empty()) {
            EXPECT_EQ(registered.value_or("-"), row[4].back() == '-' ? "-" : path);
        }
    }
    // Routines that use COM find their thread in an apartment, as under regsvr32.
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
    corvan::KeyedCollection<corvan::ItemRecord> colItems;
    std::vector<std::pair<std::string, std::string>> registered, removed;
    for (const auto& row : Table("registration.txt", "pass")) {
        corvan::ItemRecord item;
        item.FileName(row[0]);
        item.InstallFolder(folder.Path());
        item.Register(static_cast<int16_t>(std::stoi(row[1])));
        item.UninstallSwitch(row[2]);
        colItems.Add(folder.Path() + row[0], item);
        registered.push_back({row[0], row[3]});
        removed.push_back({row[0], row[4]});
    }
    EventLog registering;
    EXPECT_EQ(corvan::Registration(colItems, false, registering), "");  // the last registration succeeded
    EXPECT_EQ(registering.lines, PassLines("Registering ", registered));
    EXPECT_EQ(RegisteredServer(), folder.Path() + "CONTROL.OCX");
    EXPECT_EQ(RegisteredTypeLib(), folder.Path() + "CAPS.TLB");

    EventLog removing;
    EXPECT_EQ(corvan::Registration(colItems, true, removing), "");
    EXPECT_EQ(removing.lines, PassLines("Removing Registration for ", removed));
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
