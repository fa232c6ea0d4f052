#pragma once
#include <atomic>

#include <windows.h>
#include <unknwn.h>

namespace corvan::com {

// Objects and server locks alive in this module; DllCanUnloadNow asks.
void LockModule();
void UnlockModule();
bool ModuleInUse();

// The reference counting every COM object of this library shares. Derived
// names the class that lists its interfaces in FindInterface(riid), which
// returns the right base pointer or nullptr.
template <typename Derived, typename... Interfaces>
class ComObject : public Interfaces... {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        if (!out) return E_POINTER;
        *out = static_cast<Derived*>(this)->FindInterface(riid);
        if (!*out) return E_NOINTERFACE;
        static_cast<IUnknown*>(*out)->AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        ULONG left = --references_;
        if (left == 0) delete static_cast<Derived*>(this);
        return left;
    }

protected:
    ComObject() { LockModule(); }
    virtual ~ComObject() { UnlockModule(); }
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

private:
    std::atomic<ULONG> references_{1};
};

}  // namespace corvan::com
