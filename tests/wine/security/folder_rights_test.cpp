// The folder grants as the engine runs them on Windows XP SP2: with Wine's
// own cacls.exe, with a recording stand-in, with a file that is no program,
// and with no cacls.exe at all.
#include <gtest/gtest.h>

#include <windows.h>

#include "scripted_desktop.h"
#include "security/clsCorvanSecurity.h"
#include "settings/modCorvanInstaller_Global.h"
#include "status_recorder.h"
#include "wine_bench.h"

namespace {

enum class Cacls { WineOwn, Recording, NotAProgram, Missing };

const char kOverrides[] = "Software\\Wine\\DllOverrides";

std::string SystemCaclsPath() {
    char folder[MAX_PATH] = {};
    GetSystemDirectoryA(folder, sizeof folder);
    return std::string(folder) + "\\cacls.exe";
}

std::string RecordingCaclsPath() {
    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string path = self;
    return path.substr(0, path.find_last_of('\\') + 1) + "recording_cacls.exe";
}

// Puts a stand-in where the configurator looks for cacls.exe and Wine's own
// back afterwards. The path is the one the configurator asks for, so in a
// 32-bit test the file-system redirection takes both to syswow64. Wine runs
// the system folder's cacls.exe as its built-in one unless told otherwise.
class SystemCacls {
public:
    explicit SystemCacls(Cacls kind) : kind_(kind) {
        if (kind_ == Cacls::WineOwn) return;
        EXPECT_TRUE(MoveFileExA(path_.c_str(), saved_.c_str(), MOVEFILE_REPLACE_EXISTING));
        if (kind_ == Cacls::Recording) {
            EXPECT_TRUE(CopyFileA(RecordingCaclsPath().c_str(), path_.c_str(), FALSE));
            EXPECT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, kOverrides, "cacls.exe", REG_SZ, "native", 7), ERROR_SUCCESS);
        } else if (kind_ == Cacls::NotAProgram) {
            winbench::WriteFileBytes(path_, "not a program\r\n");
        }
    }
    ~SystemCacls() {
        if (kind_ == Cacls::WineOwn) return;
        DeleteFileA(path_.c_str());
        EXPECT_TRUE(MoveFileA(saved_.c_str(), path_.c_str()));
        RegDeleteKeyValueA(HKEY_CURRENT_USER, kOverrides, "cacls.exe");
    }
    SystemCacls(const SystemCacls&) = delete;
    SystemCacls& operator=(const SystemCacls&) = delete;

private:
    Cacls kind_;
    std::string path_ = SystemCaclsPath();
    std::string saved_ = path_ + ".corvan-saved";
};

const std::string kCacls = "C:\\windows\\system32\\cacls.exe ";
const std::string kTooLong = "C:\\" + std::string(40000, 'x') + "\\";  // no process takes such a command line
const std::string kBlanks = "C:\\corvan tests\\with blank\\";

struct Scenario {
    const char* name;
    Cacls cacls;
    std::string folder1, folder3;
    const char* exitCode;
    std::vector<bool> started;  // the six grants in order; none: no cacls.exe
    std::string commands;  // what the recording stand-in was given, one line each
};

const Scenario kScenarios[] = {
    {"Wine's cacls.exe", Cacls::WineOwn, "", "", "0", {true, true, true, true, true, true}, ""},
    {"a stand-in that exits with a failure code",
     Cacls::Recording, "", "", "5", {true, true, true, true, true, true},
     kCacls + " /E /G Everyone:f\n" + kCacls + "* /E /G Everyone:f\n" + kCacls + "c:\\TALO\\ /E /G Everyone:f\n" +
         kCacls + "c:\\TALO\\* /E /G Everyone:f\n" + kCacls + " /E /G Everyone:f\n" + kCacls + "* /E /G Everyone:f\n"},
    {"a first folder no process can be given and a third with blanks",
     Cacls::Recording, kTooLong, kBlanks, "0", {false, false, true, true, true, true},
     kCacls + "c:\\TALO\\ /E /G Everyone:f\n" + kCacls + "c:\\TALO\\* /E /G Everyone:f\n" + kCacls + kBlanks +
         " /E /G Everyone:f\n" + kCacls + kBlanks + "* /E /G Everyone:f\n"},
    {"a cacls.exe that is no program", Cacls::NotAProgram, "", "", "0", {false, false, false, false, false, false}, ""},
    {"no cacls.exe", Cacls::Missing, "", "", "0", {}, ""},
};

std::vector<std::string> ExpectedStatuses(const Scenario& scenario) {
    if (scenario.started.empty())
        return {"Unable to set security rights on Corvan Connect folders. Please notify the help desk."};
    std::vector<std::string> statuses;
    const std::string folders[] = {scenario.folder1, "c:\\TALO\\", scenario.folder3};
    for (size_t i = 0; i < 3; ++i) {
        const std::string step = "Configurator: setting security on " + folders[i];
        statuses.push_back(step);
        statuses.push_back(step + (scenario.started[2 * i] ? "...Success" : "...Failed"));
        statuses.push_back(step + " contents");
        statuses.push_back(step + " contents" + (scenario.started[2 * i + 1] ? "...Success" : "...Failed"));
    }
    statuses.push_back("Configurator: Successfully set security for Windows version 5.2, Service Pack 2.");
    return statuses;
}

}  // namespace

TEST(FolderRights, GrantsEveryFolderOnWindowsXPServicePack2) {
    winbench::ScopedWindowsVersion xp("winxp64", "Microsoft Windows XP");
    const winbench::ChildResult child = winbench::RunCaseInChild("FolderRights.DISABLED_Scenarios");
    EXPECT_EQ(child.exitCode, 0) << child.output.substr(0, 20000);
    EXPECT_NE(child.output.find("[  PASSED  ] 1 test."), std::string::npos) << child.output.substr(0, 20000);
}

// Run by the case above in a process that sees Windows XP x64 SP2.
TEST(FolderRights, DISABLED_Scenarios) {
    corvan::InstallerSettings& settings = corvan::modCorvanInstaller_Global();
    settings.Load();
    winbench::ScratchFolder scratch("security-cacls");
    const std::string log = scratch.Path() + "cacls.log";
    SetEnvironmentVariableA("CORVAN_CACLS_LOG", log.c_str());
    for (const Scenario& scenario : kScenarios) {
        SCOPED_TRACE(scenario.name);
        settings.SecuredFolder1 = scenario.folder1;
        settings.SecuredFolder3 = scenario.folder3;
        SetEnvironmentVariableA("CORVAN_CACLS_EXIT", scenario.exitCode);
        DeleteFileA(log.c_str());
        SystemCacls cacls(scenario.cacls);

        security_tests::StatusRecorder recorder;
        testing_support::ScriptedDesktop desktop;
        corvan::clsCorvanSecurity security(desktop, &recorder);
        security.SetXPSP2SecurityConfig();

        EXPECT_EQ(recorder.messages, ExpectedStatuses(scenario));
        EXPECT_EQ(desktop.pointers, (std::vector<int>{corvan::vbHourglass, corvan::vbDefault}));
        EXPECT_EQ(desktop.pumps, 0);
        if (scenario.cacls == Cacls::Recording) {
            EXPECT_EQ(winbench::ReadFileBytes(log), scenario.commands);
        }
    }
    settings.SecuredFolder1.clear();
    settings.SecuredFolder3.clear();
}
