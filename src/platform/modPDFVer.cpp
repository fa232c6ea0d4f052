#include "platform/modPDFVer.h"

#include "platform/create_object.h"

namespace corvan {
namespace {
// Kept after each detection so that the diagnostics gathered on the way to
// a working control can still be shown.
std::string errorText;
}  // namespace

const std::string& AcrobatErrorText() { return errorText; }

std::string GetAcrobatProgID() {
    errorText =
        "There was an error while loading the Acrobat Internet Control.\r\n"
        "Please reinstall acrobat, or upgrade to the latest version.\r\n\r\n";
    auto note = [](const std::string& label, const ObjectCreation& attempt) {
        errorText += label + " - " + std::to_string(attempt.number) + ": " + attempt.description + "\r\n\r\n";
    };

    const ObjectCreation latest = CreateAutomationObject("acroPDF.PDF");
    if (latest.object && latest.number == 0) return "acroPDF.PDF";
    note("Looking for v7+", latest);

    for (int n = 5; n <= 6; ++n) {
        const std::string progId = "PDF.PdfCtrl." + std::to_string(n);
        const ObjectCreation older = CreateAutomationObject(progId);
        if (older.object && older.number == 0) return progId;
        note("Looking for v" + std::to_string(n), older);
    }
    return errorText;
}

bool AcrobatIsInstalled() { return GetAcrobatProgID().find("PDF") != std::string::npos; }

}  // namespace corvan
