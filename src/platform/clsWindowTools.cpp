#include "platform/clsWindowTools.h"

#include <windows.h>
#include <objbase.h>

#include <algorithm>
#include <vector>

#include "common/failure.h"
#include "common/text.h"
#include "platform/clsRegistry.h"
#include "platform/group_walk.h"
#include "platform/guid_text.h"
#include "platform/reg_variant.h"

namespace corvan {
namespace {

constexpr int32_t kLocalMachine = static_cast<int32_t>(0x80000002u);

std::string Environment(const char* name) {
    char small[512];
    DWORD length = GetEnvironmentVariableA(name, small, sizeof small);
    if (length == 0) return {};
    if (length < sizeof small) return std::string(small, length);
    std::string value(length, '\0');
    length = GetEnvironmentVariableA(name, value.data(), length);
    value.resize(length);
    return value;
}

// An unset variable stays empty rather than turning into a bare "\".
std::string WithTrailingBackslash(std::string folder) {
    if (!folder.empty() && folder.back() != '\\') folder += '\\';
    return folder;
}

std::string RemoveAll(std::string text, const std::string& word) {
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at)) text.erase(at, word.size());
    return text;
}

}  // namespace

clsWindowTools::clsWindowTools() {
    OSVERSIONINFOA info{};
    info.dwOSVersionInfoSize = sizeof info;  // 148 bytes
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const BOOL ok = GetVersionExA(&info);
#pragma GCC diagnostic pop
    if (ok != 1) return;  // every version text stays empty
    platformId_ = static_cast<int32_t>(info.dwPlatformId);
    versionName_ = ProductName();
    versionNo_ = std::to_string(info.dwMajorVersion) + "." + std::to_string(info.dwMinorVersion);
    buildNo_ = std::to_string(info.dwBuildNumber & 0xFFFF);
    const char* pack = info.szCSDVersion;
    const char* end = std::find(pack, pack + sizeof info.szCSDVersion, '\0');
    if (end != pack + sizeof info.szCSDVersion) servicePack_.assign(pack, end);
}

clsWindowTools::~clsWindowTools() = default;

clsRegistry& clsWindowTools::Registry() const {
    if (!registry_) registry_ = std::make_unique<clsRegistry>();
    return *registry_;
}

std::string clsWindowTools::ProductName() const {
    auto read = [this](const char* key) {
        const RegVariant value = Registry().GetRegSetting(kLocalMachine, key, "ProductName", RegVariant::String(""));
        return value.DisplayText();
    };
    std::string name = read("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion");
    if (name.empty()) name = read("SOFTWARE\\Microsoft\\Windows\\CurrentVersion");  // Windows 98 and ME
    return RemoveAll(name, "Microsoft");
}

std::string clsWindowTools::VersionName() const { return Trim(versionName_); }
std::string clsWindowTools::VersionNo() const { return Trim(versionNo_); }
std::string clsWindowTools::ServicePack() const { return Trim(servicePack_); }
std::string clsWindowTools::BuildNo() const { return Trim(buildNo_); }

std::string clsWindowTools::UserName() const { return Environment("username"); }
std::string clsWindowTools::ComputerName() const { return Environment("computername"); }
std::string clsWindowTools::UserDNSDomain() const { return Environment("userdnsdomain"); }
std::string clsWindowTools::Domain() const { return Environment("userdomain"); }
std::string clsWindowTools::SystemDrive() const { return "C:\\"; }
std::string clsWindowTools::CommandShell() const { return Environment("comspec"); }
std::string clsWindowTools::WindowsDirectory() const { return WithTrailingBackslash(Environment("windir")); }
std::string clsWindowTools::SystemRoot() const { return WithTrailingBackslash(Environment("systemroot")); }
std::string clsWindowTools::ProgramFiles() const { return WithTrailingBackslash(Environment("programfiles")); }

std::string clsWindowTools::WindowsSystem32() const {
    std::string buffer(255, ' ');
    GetSystemDirectoryA(buffer.data(), static_cast<UINT>(buffer.size()));
    // The text still holds the path's terminating NUL once the blanks go, so
    // the backslash is always appended and the NUL removed afterwards.
    std::string folder = Trim(buffer);
    if (folder.empty() || folder.back() != '\\') folder += '\\';
    folder.erase(std::remove(folder.begin(), folder.end(), '\0'), folder.end());
    return folder;
}

bool clsWindowTools::IsAdmin() const {
    HANDLE token = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) &&
        !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        return false;
    }
    struct TokenCloser {
        HANDLE h;
        ~TokenCloser() { CloseHandle(h); }
    } closer{token};

    DWORD size = 0;
    GetTokenInformation(token, TokenGroups, nullptr, 0, &size);
    if (size == 0) return false;
    std::vector<DWORD> buffer((size + sizeof(DWORD) - 1) / sizeof(DWORD));
    if (GetTokenInformation(token, TokenGroups, buffer.data(), size, &size) != 1) return false;
    const auto* groups = reinterpret_cast<const TOKEN_GROUPS*>(buffer.data());

    SID_IDENTIFIER_AUTHORITY nt = SECURITY_NT_AUTHORITY;
    PSID administrators = nullptr;
    if (!AllocateAndInitializeSid(&nt, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0,
                                  &administrators)) {
        return false;
    }
    struct SidFreer {
        PSID s;
        ~SidFreer() { FreeSid(s); }
    } freer{administrators};
    if (!IsValidSid(administrators)) return false;

    // Attributes are not looked at: a deny-only Administrators group still
    // counts.
    return AnyGroupIsAdministrators(groups->GroupCount, [&](size_t index) {
        PSID sid = groups->Groups[index].Sid;
        return sid && IsValidSid(sid) && EqualSid(sid, administrators);
    });
}

std::string clsWindowTools::GenerateGUID() const {
    GUID guid{};
    if (CoCreateGuid(&guid) != S_OK) return {};
    return GuidText(guid.Data1, guid.Data2, guid.Data3, guid.Data4);
}

std::string clsWindowTools::HomeDrive() const {
    try {
        return Environment("HomeDrive") + "\\";
    } catch (...) {
        return "C:\\";
    }
}

}  // namespace corvan
