// The public classes of CorvanInstaller.ocx.
//
// Adding a public class X (for example clsFTP):
//   1. Put its interface, its event dispinterface if it has one, and its
//      coclass X (own fixed GUIDs) in src/control/X.idl, and add the line
//          #include "X.idl"
//      inside the library block of src/control/CorvanInstaller.idl.
//   2. Write its COM wrapper in src/control/XCom.h and XCom.cpp on the
//      helpers of this folder (ComObject in com_object.h, TypeInfoDispatch in
//      type_library.h, ConnectionPoint in connection_point.h for events,
//      bstr_text.h at the edge). XCom.cpp defines, in namespace
//      corvan::com,
//          HRESULT CreateX(REFIID riid, void** out);
//      (CreateComInstance<XCom> in com_object.h is its usual body; an
//      object with one event interface answers IConnectionPointContainer
//      with ConnectionPoint::FindAsOnlyPoint and EnumerateAsOnlyPoint.)
//      Every *Com.cpp file of this folder is built into the server; the
//      server links every subsystem library that exists.
//   3. Add one line to CORVAN_PUBLIC_CLASSES below:
//          CLASS(X, kAutomationClass)
//      That gives ProgID "CorvanInstaller.X.1", version-independent ProgID
//      "CorvanInstaller.X", registration and unregistration by regsvr32, and
//      creation through DllGetClassObject with CLSID_X from the IDL.
#include "control/com_class_table.h"

#include <iterator>

#include "control/CorvanInstaller_h.h"

namespace corvan::com {

namespace {
constexpr bool kControl = true;
constexpr bool kAutomationClass = false;
}  // namespace

#define CORVAN_PUBLIC_CLASSES(CLASS) \
    CLASS(ManageClient, kControl) \
    CLASS(clsTalo, kAutomationClass) \
    CLASS(clsFTP, kAutomationClass) \
    CLASS(clsCorvanSecurity, kAutomationClass)

#define CORVAN_DECLARE_CREATE(X, kind) HRESULT Create##X(REFIID riid, void** out);
CORVAN_PUBLIC_CLASSES(CORVAN_DECLARE_CREATE)
#undef CORVAN_DECLARE_CREATE

namespace {

#define CORVAN_CLASS_ENTRY(X, kind) \
    PublicClass{&CLSID_##X, #X, "CorvanInstaller." #X ".1", "CorvanInstaller." #X, &Create##X, kind},
const PublicClass kPublicClasses[] = {CORVAN_PUBLIC_CLASSES(CORVAN_CLASS_ENTRY)};
#undef CORVAN_CLASS_ENTRY

}  // namespace

const PublicClass* PublicClassesBegin() { return std::begin(kPublicClasses); }
const PublicClass* PublicClassesEnd() { return std::end(kPublicClasses); }

const PublicClass* FindPublicClass(REFCLSID clsid) {
    for (const PublicClass& entry : kPublicClasses)
        if (IsEqualCLSID(*entry.clsid, clsid)) return &entry;
    return nullptr;
}

}  // namespace corvan::com
