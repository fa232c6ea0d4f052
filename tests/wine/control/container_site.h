#pragma once
// A container's site: the page window the control is activated in, as a
// browser gives it.
#include <windows.h>
#include <ole2.h>
#include <ocidl.h>

namespace control_tests {

class Site : public IOleClientSite, public IOleInPlaceSite {
public:
    explicit Site(HWND window) : window_(window) {}
    void Window(HWND window) { window_ = window; }

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IOleClientSite))
            *out = static_cast<IOleClientSite*>(this);
        else if (IsEqualIID(riid, IID_IOleWindow) || IsEqualIID(riid, IID_IOleInPlaceSite))
            *out = static_cast<IOleInPlaceSite*>(this);
        else
            *out = nullptr;
        if (!*out) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }

    STDMETHODIMP SaveObject() override { return S_OK; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP GetContainer(IOleContainer** container) override { *container = nullptr; return E_NOINTERFACE; }
    STDMETHODIMP ShowObject() override { return S_OK; }
    STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

    STDMETHODIMP GetWindow(HWND* window) override { *window = window_; return S_OK; }
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP CanInPlaceActivate() override { return S_OK; }
    STDMETHODIMP OnInPlaceActivate() override { ++activations; return S_OK; }
    STDMETHODIMP OnUIActivate() override { return S_OK; }
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                  LPRECT clip, LPOLEINPLACEFRAMEINFO) override {
        *frame = nullptr;
        *document = nullptr;
        *position = *clip = kPosition;
        return S_OK;
    }
    STDMETHODIMP Scroll(SIZE) override { return E_NOTIMPL; }
    STDMETHODIMP OnUIDeactivate(BOOL) override { return S_OK; }
    STDMETHODIMP OnInPlaceDeactivate() override { ++deactivations; return S_OK; }
    STDMETHODIMP DiscardUndoState() override { return S_OK; }
    STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
    STDMETHODIMP OnPosRectChange(LPCRECT position) override {
        ++positionChanges;
        lastPosition = *position;
        return S_OK;
    }

    static constexpr RECT kPosition = {10, 20, 610, 147};
    ULONG references = 1;
    int activations = 0, deactivations = 0, positionChanges = 0;
    RECT lastPosition = {};

private:
    HWND window_;
};

// A visible page window with the control activated in place in it, as a
// browser shows it; closed and gone with the object.
class ActivePage {
public:
    explicit ActivePage(IUnknown* control) {
        page = CreateWindowExA(0, "STATIC", "page", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 300, nullptr,
                               nullptr, nullptr, nullptr);
        control->QueryInterface(IID_IOleObject, reinterpret_cast<void**>(&ole));
        if (!ole) return;
        site.Window(page);
        ole->SetClientSite(&site);
        RECT position = Site::kPosition;
        ole->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, page, &position);
        IOleInPlaceObject* inPlace = nullptr;
        if (SUCCEEDED(control->QueryInterface(IID_IOleInPlaceObject, reinterpret_cast<void**>(&inPlace)))) {
            inPlace->GetWindow(&window);
            inPlace->Release();
        }
    }
    ~ActivePage() {
        if (ole) {
            ole->Close(OLECLOSE_NOSAVE);
            ole->SetClientSite(nullptr);
            ole->Release();
        }
        DestroyWindow(page);
    }
    ActivePage(const ActivePage&) = delete;
    ActivePage& operator=(const ActivePage&) = delete;

    HWND page = nullptr;
    Site site{nullptr};
    IOleObject* ole = nullptr;
    HWND window = nullptr;  // the control's own window
};

}  // namespace control_tests
