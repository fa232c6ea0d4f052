#include "wine_bench.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace winbench {

namespace {

const char kVersionKey[] = "Software\\Wine";
const char kProductKey[] = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

bool ReadString(HKEY root, const char* key, const char* name, std::string& value) {
    char buffer[512];
    DWORD size = sizeof buffer;
    if (RegGetValueA(root, key, name, RRF_RT_REG_SZ, nullptr, buffer, &size) != ERROR_SUCCESS) return false;
    value.assign(buffer);
    return true;
}

void WriteString(HKEY root, const char* key, const char* name, const std::string& value) {
    if (RegSetKeyValueA(root, key, name, REG_SZ, value.c_str(), static_cast<DWORD>(value.size() + 1)) != ERROR_SUCCESS)
        throw std::runtime_error(std::string("cannot write ") + key);
}

}  // namespace

std::string OutDir() {
    const char* dir = std::getenv("CORVAN_OUT_DIR");
    return dir ? dir : "";
}

ScratchFolder::ScratchFolder(const std::string& name) {
    CreateDirectoryA("C:\\corvan-tests", nullptr);
    path_ = "C:\\corvan-tests\\" + name + "\\";
    RemoveTree(path_);
    CreateDirectoryA(path_.c_str(), nullptr);
}

ScratchFolder::~ScratchFolder() { RemoveTree(path_); }

void RemoveTree(const std::string& folder) {
    std::string base = folder;
    if (!base.empty() && base.back() != '\\') base += '\\';
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA((base + "*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            std::string name = found.cFileName;
            if (name == "." || name == "..") continue;
            std::string full = base + name;
            if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                RemoveTree(full);
            } else {
                SetFileAttributesA(full.c_str(), FILE_ATTRIBUTE_NORMAL);
                DeleteFileA(full.c_str());
            }
        } while (FindNextFileA(search, &found));
        FindClose(search);
    }
    RemoveDirectoryA(base.c_str());
}

std::string ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

void WriteFileBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool FileExists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

ScopedWindowsVersion::ScopedWindowsVersion(const std::string& wineVersion, const std::string& productName) {
    hadVersion_ = ReadString(HKEY_CURRENT_USER, kVersionKey, "Version", oldVersion_);
    hadProduct_ = ReadString(HKEY_LOCAL_MACHINE, kProductKey, "ProductName", oldProduct_);
    WriteString(HKEY_CURRENT_USER, kVersionKey, "Version", wineVersion);
    WriteString(HKEY_LOCAL_MACHINE, kProductKey, "ProductName", productName);
}

ScopedWindowsVersion::~ScopedWindowsVersion() {
    if (hadVersion_) WriteString(HKEY_CURRENT_USER, kVersionKey, "Version", oldVersion_);
    else RegDeleteKeyValueA(HKEY_CURRENT_USER, kVersionKey, "Version");
    if (hadProduct_) WriteString(HKEY_LOCAL_MACHINE, kProductKey, "ProductName", oldProduct_);
    else RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kProductKey, "ProductName");
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
    startup.hStdOutput = output;
    startup.hStdError = output;
    PROCESS_INFORMATION process{};
    std::string command = commandLine;
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
        CloseHandle(process.hThread);
        if (WaitForSingleObject(process.hProcess, timeoutMs) == WAIT_OBJECT_0) {
            DWORD exitCode = 0;
            GetExitCodeProcess(process.hProcess, &exitCode);
            result.exitCode = static_cast<int>(exitCode);
        } else {
            TerminateProcess(process.hProcess, 1);
        }
        CloseHandle(process.hProcess);
    }
    CloseHandle(output);
    result.output = ReadFileBytes(name);
    DeleteFileA(name);
    return result;
}

ChildResult RunCaseInChild(const std::string& fullTestName) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    return RunAndWait(std::string("\"") + self + "\" --gtest_also_run_disabled_tests --gtest_filter=" + fullTestName);
}

}  // namespace winbench
