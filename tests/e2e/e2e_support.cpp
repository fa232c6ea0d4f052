#include "e2e_support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <msi.h>

#include "common/text.h"
#include "control/bstr_text.h"
#include "engine/clsInstall.h"
#include "scripted_desktop.h"
#include "settings/modCorvanInstaller_Global.h"
#include "test_packages.h"
#include "wine_bench.h"

namespace e2e {

namespace {

constexpr char kTestMsiProduct[] = "{5C0A3E51-8B7D-4E29-9D1B-2F6A1C3E7D40}";
constexpr char kWindowsKey[] = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr char kVersionVectorKey[] = "SOFTWARE\\Microsoft\\Internet Explorer\\Version Vector";

std::string RegistryText(HKEY root, const std::string& key, const char* name, bool* found = nullptr) {
    char data[1024] = {};
    DWORD size = sizeof data, type = 0;
    const LSTATUS status = RegGetValueA(root, key.c_str(), name, RRF_RT_REG_SZ | RRF_RT_REG_DWORD, &type, data, &size);
    if (found) *found = status == ERROR_SUCCESS;
    if (status != ERROR_SUCCESS) return "-";
    if (type == REG_DWORD) return std::to_string(*reinterpret_cast<DWORD*>(data));
    return data;
}

void SetRegistryText(HKEY root, const std::string& key, const char* name, const std::string& text) {
    RegSetKeyValueA(root, key.c_str(), name, REG_SZ, text.c_str(), static_cast<DWORD>(text.size() + 1));
}

bool KeyExists(HKEY root, const char* key) {
    HKEY opened;
    if (RegOpenKeyExA(root, key, 0, KEY_READ, &opened) != ERROR_SUCCESS) return false;
    RegCloseKey(opened);
    return true;
}

// The questions of this thread go to the answerer that lives now.
thread_local std::deque<std::string>* currentAnswers = nullptr;
thread_local std::vector<std::string>* currentTitles = nullptr;

LRESULT CALLBACK AnswerHook(int code, WPARAM wparam, LPARAM lparam) {
    HWND dialog = reinterpret_cast<HWND>(wparam);
    char className[16] = "";
    if (code == HCBT_ACTIVATE && currentAnswers && GetClassNameA(dialog, className, sizeof className) &&
        std::string(className) == "#32770" && GetDlgItem(dialog, 0xFFFF)) {
        char title[256] = "";
        GetWindowTextA(dialog, title, sizeof title);
        currentTitles->push_back(title);
        std::string answer = currentAnswers->empty() ? "" : currentAnswers->front();
        if (!currentAnswers->empty()) currentAnswers->pop_front();
        int button = answer == "Yes" ? IDYES : answer == "No" ? IDNO : IDOK;
        for (int fallback : {button, IDOK, IDNO, IDCANCEL})
            if (GetDlgItem(dialog, fallback)) {
                button = fallback;
                break;
            }
        PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(dialog, button)));
    }
    return CallNextHookEx(nullptr, code, wparam, lparam);
}

class SilentEvents : public corvan::InstallEngineEvents {
    void InstallerError(const std::string&) override {}
    void ProgressUpdate(float) override {}
    void StatusMsgChange(const std::string&) override {}
    void InstallationStatus(const std::string&) override {}
    void FTPStatus(float, const std::string&) override {}
};

void PutText(IDispatch* control, const wchar_t* name, const std::string& text) {
    corvan::com::Bstr value(text.c_str());
    VARIANT argument;
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = value.Get();
    control_tests::Call(control, name, DISPATCH_PROPERTYPUT, &argument);
}

}  // namespace

std::vector<ScenarioText> LoadScenarios(const std::string& name) {
    const char* root = std::getenv("CORVAN_ROOT");
    std::ifstream file(std::string(root ? root : ".") + "\\tests\\e2e\\" + name);
    std::vector<ScenarioText> scenarios;
    std::string text;
    for (int number = 1; std::getline(file, text); ++number) {
        while (!text.empty() && (text.back() == '\r' || text.back() == ' ')) text.pop_back();
        if (text.empty() || text.front() == '#') continue;
        const size_t blank = text.find(' ');
        Line line{number, text.substr(0, blank), blank == std::string::npos ? "" : text.substr(blank + 1)};
        if (line.keyword == "scenario")
            scenarios.push_back({line.text, {}});
        else if (!scenarios.empty())
            scenarios.back().lines.push_back(line);
    }
    if (scenarios.empty()) scenarios.push_back({"scenario_file_not_found", {{0, "missing", name}}});
    return scenarios;
}

std::string Crc32Text(const std::string& bytes) {
    uint32_t crc = 0xFFFFFFFFu;
    for (unsigned char byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    char text[16];
    std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(~crc));
    return text;
}

std::string FolderEntries(const std::string& folder) {
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA((folder + "*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return GetFileAttributesA(folder.c_str()) == INVALID_FILE_ATTRIBUTES ? "-" : "";
    std::vector<std::string> names;
    do {
        const std::string name = found.cFileName;
        if (name == "." || name == "..") continue;
        names.push_back(name + (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY ? "\\" : ""));
    } while (FindNextFileA(search, &found));
    FindClose(search);
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
    return text;
}

// The control of a server file, made by its class factory as COM would
// make it, without registering the file.
control_tests::ComPtr<IDispatch> ControlFromFile(const std::string& server) {
    control_tests::ComPtr<IDispatch> object;
    HMODULE module = LoadLibraryA(server.c_str());  // kept for the process's life
    auto getClassObject =
        module ? reinterpret_cast<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>(GetProcAddress(module, "DllGetClassObject"))
               : nullptr;
    control_tests::ComPtr<IClassFactory> factory;
    if (getClassObject && SUCCEEDED(getClassObject(CLSID_ManageClient, IID_IClassFactory, factory.PutVoid())))
        factory->CreateInstance(nullptr, IID_IDispatch, object.PutVoid());
    return object;
}

Page::Page(const std::string& installerUrl, const std::string& groups, const std::string& server) {
    control = server.empty() ? control_tests::CreateControl() : ControlFromFile(server);
    if (!control) return;
    PutText(control.Get(), L"URL", installerUrl + "default.asp");
    PutText(control.Get(), L"UsersGroups", groups);
    point = control_tests::Advise(control.Get(), sink, cookie);
}

Page::~Page() {
    if (point) point->Unadvise(cookie);
    point = nullptr;
    control = nullptr;
}

QuestionAnswerer::QuestionAnswerer(std::deque<std::string>& answers, std::vector<std::string>& titles) {
    currentAnswers = &answers;
    currentTitles = &titles;
    hook_ = SetWindowsHookExA(WH_CBT, AnswerHook, nullptr, GetCurrentThreadId());
}

QuestionAnswerer::~QuestionAnswerer() {
    if (hook_) UnhookWindowsHookEx(hook_);
    currentAnswers = nullptr;
    currentTitles = nullptr;
}

void Machine::Clean() {
    for (HANDLE holder : holders_) {
        TerminateProcess(holder, 0);
        WaitForSingleObject(holder, 5000);
        CloseHandle(holder);
    }
    holders_.clear();
    if (MsiQueryProductStateA(kTestMsiProduct) == INSTALLSTATE_DEFAULT)
        winbench::RunAndWait(std::string("msiexec.exe /x ") + kTestMsiProduct + " /qn");
    if (!DeleteFileA("C:\\TALO")) winbench::RemoveTree("C:\\TALO");
    if (!DeleteFileA("C:\\Temp")) winbench::RemoveTree("C:\\Temp");
    RegDeleteTreeA(HKEY_LOCAL_MACHINE, "Software\\Talo");
    RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\Corvan Tests");
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kVersionVectorKey, "IE");
    if (productChanged_) SetRegistryText(HKEY_LOCAL_MACHINE, kWindowsKey, "ProductName", oldProduct_);
    productChanged_ = false;
}

void Machine::ProductName(const std::string& name) {
    if (!productChanged_) oldProduct_ = RegistryText(HKEY_LOCAL_MACHINE, kWindowsKey, "ProductName");
    productChanged_ = true;
    SetRegistryText(HKEY_LOCAL_MACHINE, kWindowsKey, "ProductName", name);
}

void Machine::ExplorerVersionVector(const std::string& vector) {
    SetRegistryText(HKEY_LOCAL_MACHINE, kVersionVectorKey, "IE", vector);
}

void Machine::TempIsAFile() {
    winbench::RemoveTree("C:\\Temp");
    winbench::WriteFileBytes("C:\\Temp", "a plain file where the backup folder would go");
}

void Machine::TaloIsAFile() {
    winbench::RemoveTree("C:\\TALO");
    winbench::WriteFileBytes("C:\\TALO", "a plain file where the application folder would go");
}

void Machine::ReadOnly(const std::string& path) { SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY); }

void Machine::HoldOpen(const std::string& path) {
    const std::string event = "CorvanHoldFile" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(holders_.size());
    HANDLE held = CreateEventA(nullptr, TRUE, FALSE, event.c_str());
    // hold_file.exe is built beside this test program.
    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, MAX_PATH);
    const std::string folder(self, std::string(self).find_last_of('\\') + 1);
    std::string command = "\"" + folder + "hold_file.exe\" \"" + path + "\" " + event;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        CloseHandle(process.hThread);
        holders_.push_back(process.hProcess);
        const HANDLE either[] = {held, process.hProcess};
        WaitForMultipleObjects(2, either, FALSE, 10000);
    }
    CloseHandle(held);
}

std::string FailingInstallerUrl(const std::string& kind, const std::string& name) {
    const std::string path = "installer/" + name + "/";
    if (kind == "refused") return "https://127.0.0.1:1/" + path;
    if (kind == "unresolved") return "https://" + name + ".invalid/" + path;
    const char* untrusted = std::getenv("CORVAN_HTTPS_UNTRUSTED_URL");
    if (kind == "untrusted" && untrusted) return untrusted + path;
    return "(no failing address " + kind + ")";
}

std::string Machine::Mark(const std::string& name) const {
    if (name == "InstallComplete") return RegistryText(HKEY_LOCAL_MACHINE, "Software\\Talo\\Settings", "InstallComplete");
    if (name == "msi") return RegistryText(HKEY_CURRENT_USER, testpackages::kMsiKey, "Installed");
    if (name == "cab") return RegistryText(HKEY_CURRENT_USER, testpackages::kCabKey, "First");
    if (name == "dll") return KeyExists(HKEY_CURRENT_USER, testpackages::kSelfRegisteringKey) ? "registered" : "-";
    return "(no mark " + name + ")";
}

std::string EngineNeedToDo(const std::string& installerUrl) {
    corvan::InstallerSettings& settings = corvan::modCorvanInstaller_Global();
    settings.Load();
    settings.MasterUrlSource = installerUrl;
    testing_support::ScriptedDesktop desktop;
    SilentEvents events;
    corvan::clsInstall engine(events, desktop);
    engine.InstallFile(settings.InstallListPath());
    engine.UnInstallFile(settings.UninstallListPath());
    engine.NeedToInstall();
    return engine.NeedToDo();
}

}  // namespace e2e
