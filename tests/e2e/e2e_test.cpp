// Whole runs of the shipped control through its COM surface, as the page
// drives it, against the test server with real packages, reading the files
// and the registry afterwards. The scenarios are data (scenarios.txt,
// faults.txt); this file only knows how to do and check each kind of line.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include <windows.h>
#include <msi.h>

#include "common/text.h"
#include "installer_folder.h"
#include "probe_server.h"
#include "session_log.h"
#include "test_packages.h"

using control_tests::Call;
using control_tests::ComPtr;
using control_tests::CreateControl;
using Texts = std::vector<std::string>;

namespace e2e {
namespace {

constexpr char kTalo[] = "C:\\TALO\\";
constexpr char kLocalList[] = "C:\\TALO\\SC_Install.scl";
constexpr char kUninstallList[] = "C:\\TALO\\SC_Uninstall.scl";
constexpr char kTestMsiProduct[] = "{5C0A3E51-8B7D-4E29-9D1B-2F6A1C3E7D40}";
constexpr char kWindowsKey[] = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr char kVersionVectorKey[] = "SOFTWARE\\Microsoft\\Internet Explorer\\Version Vector";

using control_tests::Line;
using control_tests::Split;
struct ScenarioText : control_tests::Block {
    std::string server;  // the control file its pages load, beside this program; "" the registered one
};
void PrintTo(const ScenarioText& scenario, std::ostream* out) { *out << scenario.name; }

std::vector<ScenarioText> LoadScenarios(const std::string& name, const std::string& server) {
    std::vector<ScenarioText> scenarios;
    for (const auto& block : control_tests::LoadBlocks("tests\\e2e\\" + name, "scenario"))
        scenarios.push_back({block, server});
    return scenarios;
}

std::string Join(const Texts& parts, const std::string& separator) {
    std::string text;
    for (const std::string& part : parts) text += (text.empty() ? "" : separator) + part;
    return text;
}

// The "name=value" pairs of a line.
std::map<std::string, std::string> Pairs(const std::string& text, char separator = ' ') {
    std::map<std::string, std::string> pairs;
    for (const std::string& part : Split(text, std::string(1, separator)))
        pairs[corvan::Trim(part.substr(0, part.find('=')))] = part.find('=') == std::string::npos ? "" : part.substr(part.find('=') + 1);
    return pairs;
}

std::string Sorted(const std::string& words) {
    Texts sorted = Split(words, " ");
    std::sort(sorted.begin(), sorted.end());
    return Join(sorted, " ");
}

std::string RegistryText(HKEY root, const std::string& key, const char* name) {  // "-" when missing; a DWORD bare
    const std::string text = winbench::RegText(root, key, name).value_or("-");
    return text.rfind("dword:", 0) == 0 ? text.substr(6) : text;
}

void SetRegistryText(HKEY root, const std::string& key, const char* name, const std::string& text) {
    RegSetKeyValueA(root, key.c_str(), name, REG_SZ, text.c_str(), static_cast<DWORD>(text.size() + 1));
}

// "a b c\": the names in a folder, folders ending in "\"; "-" when the folder is missing.
std::string FolderEntries(const std::string& folder) {
    std::error_code error;
    std::string names;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        names += " " + entry.path().filename().string() + (entry.is_directory() ? "\\" : "");
    return error ? "-" : Sorted(names);
}

std::optional<std::string> ListFile(const char* path) {  // its bytes; nothing when missing
    return winbench::FileExists(path) ? std::optional(winbench::ReadFileBytes(path)) : std::nullopt;
}

// ---- the packages as rows -------------------------------------------------

struct PackageKind {
    const char *shortName, *file, *installSwitch, *uninstallSwitch, *registerFlag;
};
const PackageKind kKinds[] = {
    {"msi", testpackages::kMsi, "/qn", "/qn", "0"},         {"exe", testpackages::kExe, "/install", "/uninstall", "0"},
    {"dll", testpackages::kDll, "", "", "1"},               {"tlb", testpackages::kTlb, "", "", "1"},
    {"cab", testpackages::kCab, "", "", "0"},               {"mdb", testpackages::kMdb, "", "", "0"},
};

const PackageKind* Kind(const std::string& name) {
    for (const PackageKind& kind : kKinds)
        if (name == kind.shortName || name == kind.file) return &kind;
    return nullptr;
}
std::string FileOf(const std::string& name) { return Kind(name) ? Kind(name)->file : name; }

// The package (by short name) of each row of a list file; "-" when missing.
std::string ListPackages(const std::string& path) {
    if (!winbench::FileExists(path)) return "-";
    Texts packages;
    for (const std::string& row : Split(winbench::ReadFileBytes(path), "\r\n")) {
        const Texts fields = Split(row, ",");
        if (fields.size() > 2) packages.push_back(Kind(fields[2]) ? Kind(fields[2])->shortName : fields[2]);
    }
    return Join(packages, ",");
}

// An installer address that fails the way `kind` says: "refused" (a port
// nobody listens on), "unresolved" (a host no name server knows),
// "untrusted" (the test server with a certificate from an unknown authority).
std::string FailingInstallerUrl(const std::string& kind, const std::string& name) {
    const std::string path = "installer/" + name + "/";
    if (kind == "refused") return "https://127.0.0.1:1/" + path;
    if (kind == "unresolved") return "https://" + name + ".invalid/" + path;
    const char* untrusted = std::getenv("CORVAN_HTTPS_UNTRUSTED_URL");
    if (kind == "untrusted" && untrusted) return untrusted + path;
    return "(no failing address " + kind + ")";
}

// "exe{flag=1;changed}" as the server's row; publishes the file it names.
std::string PublishRow(const testserver::InstallerFolder& folder, const std::string& entry) {
    const size_t brace = entry.find('{');
    const PackageKind* kind = Kind(corvan::Trim(entry.substr(0, brace)));
    if (!kind) throw std::runtime_error("no package called " + entry);
    std::map<std::string, std::string> changes =
        brace == std::string::npos ? Pairs("") : Pairs(entry.substr(brace + 1, entry.rfind('}') - brace - 1), ';');
    const testpackages::Package package = testpackages::Get(kind->file);
    // Bytes past the end of a program or a database change nothing but its checksum.
    const std::string bytes = winbench::ReadFileBytes(package.path) + (changes.count("changed") ? "a newer build" : "");
    folder.Write(kind->file, bytes);
    auto field = [&changes](const char* name, const std::string& fallback) {
        return changes.count(name) ? changes[name] : fallback;
    };
    // A row may name a Source that fails: the file is published all the same.
    const std::string source = changes.count("source") ? FailingInstallerUrl(changes["source"], folder.Name()) : folder.URL();
    return Join({field("os", "ALL"), source, kind->file, "1.0", "01/01/2005", field("crc", testpackages::Crc32Text(bytes)),
                 "Test package", field("product", ""), field("flag", "0"), kind->installSwitch, kind->uninstallSwitch, "",
                 kTalo, field("group", ""), field("register", kind->registerFlag), "0", ""},
                ",");
}

// ---- the page and the person at the screen --------------------------------

// The message boxes of this thread while the control is called: each answered with
// the next answer ("Yes", "No", "OK"; OK or No when none is left), its
// title noted.
struct Screen {
    std::deque<std::string> answers;
    Texts titles;
};
thread_local Screen* currentScreen = nullptr;

LRESULT CALLBACK AnswerHook(int code, WPARAM wparam, LPARAM lparam) {
    HWND dialog = reinterpret_cast<HWND>(wparam);
    char className[16] = "", title[256] = "";
    if (code == HCBT_ACTIVATE && currentScreen && GetClassNameA(dialog, className, sizeof className) &&
        std::string(className) == "#32770" && GetDlgItem(dialog, 0xFFFF)) {
        GetWindowTextA(dialog, title, sizeof title);
        currentScreen->titles.push_back(title);
        std::deque<std::string>& answers = currentScreen->answers;
        const std::string answer = answers.empty() ? "" : answers.front();
        if (!answers.empty()) answers.pop_front();
        int button = answer == "Yes" ? IDYES : answer == "No" ? IDNO : IDOK;
        for (int fallback : {button, IDOK, IDNO, IDCANCEL})
            if (GetDlgItem(dialog, fallback)) {
                button = fallback;
                break;
            }
        PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(dialog, button)));
    }
    return CallNextHookEx(nullptr, code, wparam, lparam);
}

}  // namespace

// ---- one scenario -----------------------------------------------------------

class Scenario : public ::testing::TestWithParam<ScenarioText> {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
        ASSERT_TRUE(control_tests::Regsvr32(winbench::OutDir() + "\\CorvanInstaller.ocx"));
    }
    static void TearDownTestSuite() {
        control_tests::Regsvr32(winbench::OutDir() + "\\CorvanInstaller.ocx", true);
        OleUninitialize();
    }

    void SetUp() override {
        Clean();
        // The page's installer folder, and two for the alternate installer
        // URLs of a control that takes them from the environment.
        for (const std::string role : {"primary", "alt1", "alt2"}) {
            folders_[role] = std::make_unique<testserver::InstallerFolder>(GetParam().name + (role == "primary" ? "" : "-" + role));
            ASSERT_TRUE(folders_[role]->Available()) << "the http fixture did not start";
        }
        folder_ = folders_["primary"].get();
        SetEnvironmentVariableA("CORVAN_TEST_ALT_URL_SOURCE_1", folders_["alt1"]->URL().c_str());
        SetEnvironmentVariableA("CORVAN_TEST_ALT_URL_SOURCE_2", folders_["alt2"]->URL().c_str());
        commandRecord_ = "C:\\corvan-tests\\e2e-" + GetParam().name + "-commands.txt";
        CreateDirectoryA("C:\\corvan-tests", nullptr);
        DeleteFileA(commandRecord_.c_str());
        SetEnvironmentVariableA("CORVAN_COMMAND_RECORD", commandRecord_.c_str());
    }
    void TearDown() override {
        if (unregistered_) control_tests::Regsvr32(winbench::OutDir() + "\\CorvanInstaller.ocx");
        Clean();
        folders_.clear();
    }

    // The machine as every scenario starts: no C:\TALO, no C:\Temp, no
    // InstallComplete, no marks of the test packages, the test msi not
    // installed, no file held open, Windows and Internet Explorer as the
    // prefix had them.
    void Clean() {
        for (HANDLE held : held_) CloseHandle(held);
        held_.clear();
        if (MsiQueryProductStateA(kTestMsiProduct) == INSTALLSTATE_DEFAULT)
            winbench::RunAndWait(std::string("msiexec.exe /x ") + kTestMsiProduct + " /qn");
        for (const char* path : {"C:\\TALO", "C:\\Temp"})
            if (!DeleteFileA(path)) winbench::RemoveTree(path);
        RegDeleteTreeA(HKEY_LOCAL_MACHINE, "Software\\Talo");
        RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\Corvan Tests");
        RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kVersionVectorKey, "IE");
        if (oldProduct_) SetRegistryText(HKEY_LOCAL_MACHINE, kWindowsKey, "ProductName", *oldProduct_);
        oldProduct_.reset();
    }

    std::string InstallerUrl() const { return pageUrl_.empty() ? folders_.at("primary")->URL() : pageUrl_; }
    // {primary}, {alt1}, {alt2}: the URLs of the scenario's installer folders.
    std::string Expand(std::string text) const {
        for (const auto& [role, folder] : folders_)
            for (size_t at; (at = text.find("{" + role + "}")) != std::string::npos;)
                text.replace(at, role.size() + 2, folder->URL());
        return text;
    }
    static Texts Log() { return winbench::FileExists("C:\\TALO\\SC_Install.log") ? control_tests::LogMessages() : Texts(); }
    void KeepRunLog(size_t from) {  // the install log's lines since `from`
        const Texts log = Log();
        runLog_.assign(log.begin() + static_cast<ptrdiff_t>(std::min(from, log.size())), log.end());
    }
    Texts Heard(const char* kind) const {  // "1:" errors, "2:" statuses
        Texts texts;
        for (const std::string& event : heard_)
            if (event.rfind(kind, 0) == 0) texts.push_back(event.substr(2));
        return texts;
    }

    void CallControl(const wchar_t* method, VARIANT* argument, const std::string& expected);
    void RunClient(const std::string& arguments, const std::string& expected);
    std::string Observed(const std::string& keyword, const std::string& name, const std::string& wanted);
    void Do(const Line& line);

    std::map<std::string, std::unique_ptr<testserver::InstallerFolder>> folders_;
    testserver::InstallerFolder* folder_ = nullptr;  // the one setting-up and checking lines mean
    std::vector<HANDLE> held_;  // files held open, sharing nothing, as a virus scanner or an open program does
    std::optional<std::string> oldProduct_;
    std::string pageUrl_, commandRecord_, groups_, clientOutput_;
    bool unregistered_ = false;
    DWORD lastRunMs_ = 0;
    std::map<std::string, std::optional<std::string>> listsBefore_;
    Screen screen_;
    Texts heard_, runLog_;  // of the last run: events ("1:error"), install log lines
};

// Run(mode) or NeedToInstall on a fresh page (its event sink advised, its
// URL and the user's groups set); the result "True", "False" or "Empty".
void Scenario::CallControl(const wchar_t* method, VARIANT* argument, const std::string& expected) {
    const size_t logged = Log().size();
    for (const char* list : {kLocalList, kUninstallList}) listsBefore_[list] = ListFile(list);
    screen_.titles.clear();
    ComPtr<IDispatch> control = CreateControl(GetParam().server);
    ASSERT_TRUE(control);
    control_tests::PutText(control.Get(), L"URL", InstallerUrl() + "default.asp");
    control_tests::PutText(control.Get(), L"UsersGroups", groups_);
    control_tests::EventSink sink;
    DWORD cookie = 0;
    ComPtr<IConnectionPoint> point = control_tests::Advise(control.Get(), sink, cookie);
    ASSERT_TRUE(point);
    currentScreen = &screen_;
    HHOOK hook = SetWindowsHookExA(WH_CBT, AnswerHook, nullptr, GetCurrentThreadId());
    const DWORD start = GetTickCount();
    VARIANT result = Call(control.Get(), method, DISPATCH_METHOD, argument);
    lastRunMs_ = GetTickCount() - start;
    UnhookWindowsHookEx(hook);
    currentScreen = nullptr;
    point->Unadvise(cookie);
    heard_ = sink.heard;
    EXPECT_EQ(V_VT(&result) == VT_EMPTY  ? "Empty"
              : V_VT(&result) == VT_BOOL ? (V_BOOL(&result) ? "True" : "False")
                                         : "(not a Boolean)",
              expected)
        << method;
    KeepRunLog(logged);
}

// CorvanClient.exe as a help desk or a deployment script runs it: the
// scenario's installer and groups unless the arguments name their own.
void Scenario::RunClient(const std::string& arguments, const std::string& expected) {
    const size_t logged = Log().size();
    std::string command = "\"" + winbench::OutDir() + "\\CorvanClient.exe\" " + arguments;
    if (arguments.find("/url") == std::string::npos) command += " /url " + folder_->URL() + "default.asp";
    if (!groups_.empty()) command += " /groups \"" + groups_ + "\"";
    const winbench::ChildResult run = winbench::RunAndWait(command);
    clientOutput_ = run.output;
    EXPECT_EQ(std::to_string(run.exitCode), expected) << command << "\n" << run.output;
    KeepRunLog(logged);
}

// What the machine shows for a checking line (`name` and `wanted` the pair
// it checks, when it checks pairs), as the line writes it.
std::string Scenario::Observed(const std::string& k, const std::string& name, const std::string& wanted) {
    if (k == "statuses") return Join(Heard("2:"), ", ");
    if (k == "boxes") return Join(screen_.titles, ", ");
    if (k == "talo") return FolderEntries(kTalo);
    if (k == "backup") return FolderEntries("C:\\Temp\\Talo\\Backup\\");
    if (k == "answers") return Join(folder_->Answers(FileOf(name)), " | ");
    if (k == "downloads") return std::to_string(folder_->Requests(FileOf(name)));
    if (k == "commands") {  // the switches the recording exe was started with
        Texts switches;
        for (const std::string& command : Split(winbench::ReadFileBytes(commandRecord_), "\r\n")) {
            if (command.empty()) continue;
            const std::string after = command.substr(command.find(testpackages::kExe) + std::strlen(testpackages::kExe));
            switches.push_back(corvan::Trim(after[0] == '"' ? after.substr(1) : after));
        }
        return Join(switches, " | ");
    }
    if (k == "registry" && name == "InstallComplete") return RegistryText(HKEY_LOCAL_MACHINE, "Software\\Talo\\Settings", "InstallComplete");
    if (k == "registry" && name == "msi") return RegistryText(HKEY_CURRENT_USER, testpackages::kMsiKey, "Installed");
    if (k == "registry" && name == "cab") return RegistryText(HKEY_CURRENT_USER, testpackages::kCabKey, "First");
    if (k == "registry" && name == "dll")
        return RegistryText(HKEY_CURRENT_USER, testpackages::kSelfRegisteringKey, "Module") == "-" ? "-" : "registered";
    if (k != "lists") return "(nothing to check for " + k + " " + name + ")";
    const char* path = name == "local" ? kLocalList : kUninstallList;
    const std::optional<std::string> now = ListFile(path);
    if (wanted == "old") return now == listsBefore_[path] ? "old" : "changed: " + now.value_or("-");
    if (wanted != "server") return ListPackages(path);
    // A download shorter than the transfer's first block of 1024 bytes keeps
    // the block's NUL padding.
    std::string got = now.value_or("-");
    while (!got.empty() && got.back() == '\0') got.pop_back();
    return got == winbench::ReadFileBytes(folder_->Path() + "SC_Install.scl") ? "server" : got;
}

void Scenario::Do(const Line& line) {
    const std::string& k = line.keyword;
    const std::string text = Expand(line.text);
    const size_t blank = text.find(' ');
    const std::string first = text.substr(0, blank), rest = blank == std::string::npos ? "" : text.substr(blank + 1);
    // Setting up.
    if (k == "at") {
        ASSERT_TRUE(folders_.count(text)) << text;
        folder_ = folders_[text].get();
    } else if (k == "url") {
        pageUrl_ = FailingInstallerUrl(text, GetParam().name);
    } else if (k == "misbehave") {
        folder_->Misbehave(FileOf(first), rest);
    } else if (k == "readonly") {
        SetFileAttributesA(text.c_str(), FILE_ATTRIBUTE_READONLY);
    } else if (k == "hold") {
        held_.push_back(CreateFileA(text.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_NE(held_.back(), INVALID_HANDLE_VALUE) << text;
    } else if (k == "delete" || k == "plainfile") {
        ASSERT_TRUE(k == "plainfile" || winbench::FileExists(text)) << text;
        if (!DeleteFileA(text.c_str())) winbench::RemoveTree(text);
        if (k == "plainfile") winbench::WriteFileBytes(text, "a plain file where a folder would go");
    } else if (k == "publish" || k == "local") {
        std::string list;
        for (const std::string& entry : Split(text, "|")) list += PublishRow(*folder_, entry) + "\r\n";
        if (k == "local") winbench::WriteFileBytes(kLocalList, list);
        else folder_->Write("SC_Install.scl", list);
    } else if (k == "list") {
        folder_->Write("SC_Install.scl", text.empty() ? "" : text + "\r\n");
    } else if (k == "unpublish") {
        folder_->Remove(FileOf(text));
    } else if (k == "machine") {
        if (!oldProduct_) oldProduct_ = RegistryText(HKEY_LOCAL_MACHINE, kWindowsKey, "ProductName");
        SetRegistryText(HKEY_LOCAL_MACHINE, kWindowsKey, "ProductName", text);
    } else if (k == "ie") {
        SetRegistryText(HKEY_LOCAL_MACHINE, kVersionVectorKey, "IE", text);
    } else if (k == "groups") {
        groups_ = text;
    } else if (k == "answer") {
        for (const std::string& answer : Split(text, " ")) screen_.answers.push_back(answer);
    } else if (k == "unregistered") {
        ASSERT_TRUE(control_tests::Regsvr32(winbench::OutDir() + "\\CorvanInstaller.ocx", true));
        unregistered_ = true;
    // Running.
    } else if (k == "run") {
        VARIANT mode = control_tests::Long(std::stol(first));
        CallControl(L"Run", &mode, rest);
    } else if (k == "client") {
        const size_t arrow = text.rfind(" => ");
        ASSERT_NE(arrow, std::string::npos) << "client <arguments> => <exit code>";
        RunClient(text.substr(0, arrow), text.substr(arrow + 4));
    } else if (k == "need") {
        CallControl(L"NeedToInstall", nullptr, text);
    // Checking.
    } else if (k == "errors") {
        const Texts errors = Heard("1:");
        EXPECT_EQ(std::to_string(errors.size()), first) << Join(errors, "\n");
        EXPECT_NE((errors.empty() ? "" : errors.front()).find(rest), std::string::npos) << Join(errors, "\n");
    } else if (k == "log" || k == "output") {
        // These lines of the run's log, or these texts of the client's
        // output, in this order.
        size_t at = 0;
        const std::string all = k == "log" ? "\n" + Join(runLog_, "\n\n") + "\n" : clientOutput_;
        for (const std::string& wanted : Split(text, " | ")) {
            at = all.find(k == "log" ? "\n" + wanted + "\n" : wanted, at);
            ASSERT_NE(at, std::string::npos) << "not in this order: " << wanted << "\n" << all;
        }
    } else if (k == "nolog") {
        EXPECT_EQ(std::find(runLog_.begin(), runLog_.end(), text), runLog_.end()) << text;
    } else if (k == "within") {
        EXPECT_LT(lastRunMs_, std::stoul(text) * 1000) << "the run took " << lastRunMs_ << " ms";
    } else if (k == "registry" || k == "downloads" || k == "lists") {
        for (const auto& [name, wanted] : Pairs(text)) EXPECT_EQ(Observed(k, name, wanted), wanted) << name;
    } else if (k == "answers") {
        EXPECT_EQ(Observed(k, first, ""), rest);
    } else {
        EXPECT_EQ(Observed(k, "", ""), k == "talo" || k == "backup" ? Sorted(text) : text);
    }
}

TEST_P(Scenario, Runs) {
    for (const Line& line : GetParam().lines) {
        SCOPED_TRACE("line " + std::to_string(line.number) + ": " + line.keyword + " " + line.text);
        Do(line);
        if (HasFatalFailure()) return;
    }
}
INSTANTIATE_TEST_SUITE_P(Table, Scenario, ::testing::ValuesIn(LoadScenarios("scenarios.txt", "")),
                         [](const auto& info) { return info.param.name; });
// The fault matrix: the same lines, run by the control built for it.
INSTANTIATE_TEST_SUITE_P(Matrix, Scenario, ::testing::ValuesIn(LoadScenarios("faults.txt", "CorvanInstallerFaults.ocx")),
                         [](const auto& info) { return info.param.name; });

}  // namespace e2e
