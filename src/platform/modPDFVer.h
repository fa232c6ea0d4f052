#pragma once
#include <string>

namespace corvan {

// The ProgID of the first PDF reader control that can be created
// ("acroPDF.PDF", then "PDF.PdfCtrl.5", "PDF.PdfCtrl.6"), or, when none
// can, the reader error text: a help-desk sentence and one diagnostic entry
// per control tried. Never fails. Expects COM to be initialised on the
// calling thread, as it is on the page's thread.
std::string GetAcrobatProgID();

// The reader error text of the last detection: the help-desk sentence and
// the diagnostic entries gathered before a control could be created (all
// of them when none could).
const std::string& AcrobatErrorText();

// True when GetAcrobatProgID names a reader ("PDF" in the result, case matters).
bool AcrobatIsInstalled();

}  // namespace corvan
