#include "security/clsCorvanSecurity.h"

#include <windows.h>

#include "common/failure.h"
#include "common/text.h"
#include "files/clsShell.h"
#include "platform/clsRegistry.h"
#include "platform/clsWindowTools.h"
#include "security/registry_line.h"
#include "security/trust_table.h"
#include "settings/modCorvanInstaller_Global.h"

namespace corvan {
namespace {

// As the scripting runtime's FileExists: any file, hidden or system ones
// included, but not a folder.
bool FileExists(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

clsCorvanSecurity::clsCorvanSecurity(Desktop& desktop, clsCorvanSecurityEvents* listener)
    : desktop_(desktop), listener_(listener) {}

clsCorvanSecurity::~clsCorvanSecurity() = default;

clsWindowTools& clsCorvanSecurity::Tools() {
    if (!tools_) tools_ = std::make_unique<clsWindowTools>();
    return *tools_;
}

clsShell& clsCorvanSecurity::Shell() {
    if (!shell_) shell_ = std::make_unique<clsShell>();
    return *shell_;
}

clsRegistry& clsCorvanSecurity::Registry() {
    if (!registry_) registry_ = std::make_unique<clsRegistry>();
    return *registry_;
}

void clsCorvanSecurity::Raise(const std::string& message) {
    if (listener_) listener_->StatusMessageChange(message);
}

bool clsCorvanSecurity::Grant(const std::string& commandLine) {
    // Hidden, waited for without limit; the launcher tells only whether the
    // program started, so cacls.exe's own exit code is never seen.
    int32_t timeoutMs = -1;
    return Shell().Execute(commandLine, Tools().WindowsSystem32(), timeoutMs, 0, NORMAL_PRIORITY_CLASS);
}

void clsCorvanSecurity::SetXPSP2SecurityConfig() {
    try {
        desktop_.SetMousePointer(vbHourglass);
        const std::string cacls = Tools().WindowsSystem32() + "cacls.exe";
        if (!FileExists(cacls)) {
            Raise("Unable to set security rights on Corvan Connect folders. Please notify the help desk.");
        } else {
            // The folders are passed unquoted, as they always have been: an
            // empty one leaves cacls.exe the wildcard alone, in its current
            // folder, and a folder with blanks reaches it as several words.
            const InstallerSettings& settings = modCorvanInstaller_Global();
            const std::string folders[] = {settings.SecuredFolder1, settings.Root, settings.SecuredFolder3};
            for (const std::string& folder : folders) {
                const std::string step = "Configurator: setting security on " + folder;
                Raise(step);
                Raise(step + (Grant(cacls + " " + folder + " /E /G Everyone:f") ? "...Success" : "...Failed"));
                const std::string contents = step + " contents";
                Raise(contents);
                Raise(contents + (Grant(cacls + " " + folder + "* /E /G Everyone:f") ? "...Success" : "...Failed"));
            }
            // Said whatever the grants gave: each one has already reported
            // its own outcome.
            Raise("Configurator: Successfully set security for Windows version " + Tools().VersionNo() + ", " +
                  Tools().ServicePack() + ".");
        }
    } catch (...) {
        // The step that failed ends the method; what was granted stays.
    }
    try {
        desktop_.SetMousePointer(vbDefault);
    } catch (...) {
    }
}

void clsCorvanSecurity::SetRegistryTrustConfig() {
    try {
        desktop_.SetMousePointer(vbHourglass);
        std::vector<std::string> table = security::BuildTrustTable();
        for (std::string& text : table) text = security::WithoutLineFeedReturns(text);
        for (const std::string& text : table) {
            if (Trim(text).empty()) continue;
            const security::RegistryLine line = security::SplitRegistryLine(text);
            // A line that cannot be written (no such hive, a key refused, a
            // number too large for 32 bits) is reported and the rest still
            // go in: the machine's lines fail for a user without
            // administrator rights while the user's own lines take effect.
            bool written = false;
            if (line.complete) {
                try {
                    written = Registry().SetRegValue(security::HiveRootKey(line.hive), line.key, line.valueName,
                                                     security::RegistryData(line.data), RegVariant::String(""));
                } catch (const Failure&) {
                    written = false;
                }
            }
            Raise(security::UpdatingMessage(line, written));
        }
        Raise("Registry Edit Complete.");
    } catch (...) {
        // The step that failed ends the method; the lines written stay.
    }
    try {
        desktop_.SetMousePointer(vbDefault);
        desktop_.DoEvents();
    } catch (...) {
    }
}

}  // namespace corvan
