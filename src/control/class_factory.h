#pragma once
#include "control/com_class_table.h"
#include "control/com_object.h"

namespace corvan::com {

// The class object DllGetClassObject hands out for one public class.
class ClassFactory : public ComObject<ClassFactory, IClassFactory> {
public:
    explicit ClassFactory(CreateInstanceFunction create) : create_(create) {}

    void* FindInterface(REFIID riid);

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** out) override;
    STDMETHODIMP LockServer(BOOL lock) override;

private:
    CreateInstanceFunction create_;
};

}  // namespace corvan::com
