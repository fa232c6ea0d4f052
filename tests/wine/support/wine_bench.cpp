#include "wine_bench.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace winbench {

std::string OutDir() { return std::getenv("CORVAN_OUT_DIR") ? std::getenv("CORVAN_OUT_DIR") : ""; }

std::string BesideThisProgram(const std::string& file) {
    char self[MAX_PATH];
    const std::string path(self, GetModuleFileNameA(nullptr, self, MAX_PATH));
    return path.substr(0, path.find_last_of('\\') + 1) + file;
}

ScratchFolder::ScratchFolder(const std::string& name) : path_("C:\\corvan-tests\\" + name + "\\") {
    CreateDirectoryA("C:\\corvan-tests", nullptr);
    RemoveTree(path_);
    CreateDirectoryA(path_.c_str(), nullptr);
}

ScratchFolder::~ScratchFolder() { RemoveTree(path_); }

void RemoveTree(const std::string& folder) {
    const std::string base = folder.empty() || folder.back() == '\\' ? folder : folder + "\\";
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA((base + "*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileA(search, &found)) {
        const std::string name = found.cFileName, full = base + name;
        if (name == "." || name == "..") continue;
        if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) RemoveTree(full);
        else SetFileAttributesA(full.c_str(), FILE_ATTRIBUTE_NORMAL), DeleteFileA(full.c_str());
    }
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
    RemoveDirectoryA(base.c_str());
}

std::string ReadFileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void WriteFileBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool FileExists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

std::optional<std::string> RegText(HKEY root, const std::string& key, const char* name) {
    char data[1024] = {};
    DWORD type = 0, size = sizeof data - 1;
    if (RegGetValueA(root, key.c_str(), name, RRF_RT_ANY, &type, data, &size) != ERROR_SUCCESS) return {};
    if (type == REG_DWORD) return "dword:" + std::to_string(*reinterpret_cast<DWORD*>(data));
    return type == REG_SZ ? std::string(data) : "(type " + std::to_string(type) + ")";
}

ChildResult RunAndWait(const std::string& commandLine, DWORD timeoutMs) {
    ChildResult result;
    char folder[MAX_PATH], name[MAX_PATH];
    GetTempPathA(sizeof folder, folder);
    GetTempFileNameA(folder, "out", 0, name);
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    HANDLE output = CreateFileA(name, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = startup.hStdError = output;
    PROCESS_INFORMATION process{};
    std::string command = commandLine;
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
        DWORD exitCode = 0;
        if (WaitForSingleObject(process.hProcess, timeoutMs) == WAIT_OBJECT_0 && GetExitCodeProcess(process.hProcess, &exitCode))
            result.exitCode = static_cast<int>(exitCode);
        else
            TerminateProcess(process.hProcess, 1);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(output);
    result.output = ReadFileBytes(name);
    DeleteFileA(name);
    return result;
}

ChildResult RunCaseInChild(const std::string& fullTestName, const std::string& wineVersion,
                           const std::string& productName) {
    struct Value {
        HKEY root;
        const char *key, *name;
        std::optional<std::string> text, old = {};
    } values[] = {{HKEY_CURRENT_USER, "Software\\Wine", "Version", wineVersion},
                  {HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", "ProductName", productName}};
    auto put = [](const Value& v, const std::optional<std::string>& text) {
        if (!text) RegDeleteKeyValueA(v.root, v.key, v.name);
        else RegSetKeyValueA(v.root, v.key, v.name, REG_SZ, text->c_str(), static_cast<DWORD>(text->size() + 1));
    };
    for (Value& v : values) {
        v.old = RegText(v.root, v.key, v.name);
        put(v, v.text);
    }
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    ChildResult child = RunAndWait(std::string("\"") + self + "\" --gtest_also_run_disabled_tests --gtest_filter=" + fullTestName);
    for (const Value& v : values) put(v, v.old);
    if (child.exitCode == 0 && child.output.find("[  PASSED  ] 1 test.") == std::string::npos) child.exitCode = -2;
    return child;
}

}  // namespace winbench
