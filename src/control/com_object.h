#pragma once
#include <atomic>
#include <new>

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

// A new T, handed out as `riid`: the body of a public class's creation
// function.
template <typename T>
HRESULT CreateComInstance(REFIID riid, void** out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    T* object = new (std::nothrow) T();
    if (!object) return E_OUTOFMEMORY;
    HRESULT hr = object->QueryInterface(riid, out);
    object->Release();
    return hr;
}

}  // namespace corvan::com
