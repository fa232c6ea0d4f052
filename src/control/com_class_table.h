#pragma once
#include <windows.h>
#include <unknwn.h>

namespace corvan::com {

// Creates one new object of a public class and returns its `riid`.
using CreateInstanceFunction = HRESULT (*)(REFIID riid, void** out);

// What the class factory and self-registration need to know of a public
// class of the library.
struct PublicClass {
    const CLSID* clsid;
    const char* name;                      // "ManageClient"
    const char* progId;                    // "CorvanInstaller.ManageClient.1"
    const char* versionIndependentProgId;  // "CorvanInstaller.ManageClient"
    CreateInstanceFunction create;
    bool isControl;  // an ActiveX control a page embeds (Control key, categories)
};

// Every public class, in the order of the table.
const PublicClass* PublicClassesBegin();
const PublicClass* PublicClassesEnd();

// nullptr when the CLSID is not one of ours.
const PublicClass* FindPublicClass(REFCLSID clsid);

}  // namespace corvan::com
