#include "engine/registration_pass.h"

#include <new>

#include "common/text.h"
#include "engine/RegisterControls.h"
#include "engine/error_report.h"

namespace corvan {

std::string Registration(KeyedCollection<ItemRecord>& colItems, bool unregister, InstallEngineEvents& events) {
    std::string lastError;
    try {
        const std::string verb = unregister ? "Removing Registration for" : "Registering";
        const double itemCount = static_cast<double>(colItems.Count());
        int32_t position = 1;
        for (auto& [key, item] : colItems) {
            // Only controls, libraries and type libraries; an "olb" is left
            // alone here although RegisterFile would take it.
            const std::string extension = LowerCase(item.GetFileExtention());
            const bool registrable = extension == "ocx" || extension == "dll" || extension == "tlb";
            // An item that brings its own uninstall command unregisters
            // itself when it runs.
            if (registrable && item.Register() == 1 && (!unregister || Trim(item.UninstallSwitch()).empty())) {
                events.StatusMsgChange(verb + " " + item.FileName());
                lastError = RegisterControls::RegisterFile(item.InstallFolder() + item.FileName(), unregister);
                events.StatusMsgChange(std::string("Registration: ") +
                                       (Trim(lastError).empty() ? "Successful" : "Failed"));
                if (!lastError.empty()) events.StatusMsgChange("Error: " + lastError);
            }
            events.ProgressUpdate(static_cast<float>(position / itemCount));
            ++position;
        }
    } catch (const Failure& failure) {
        events.InstallerError(ErrorReportText(failure, " - clsInsall.Registration()"));
    } catch (const std::bad_alloc&) {
        events.InstallerError(ErrorReportText(Failure(7, "CorvanInstaller", "Out of memory"),
                                              " - clsInsall.Registration()"));
    }
    return lastError;
}

}  // namespace corvan
