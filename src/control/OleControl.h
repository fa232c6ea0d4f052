#pragma once
#include <windows.h>
#include <ole2.h>
#include <ocidl.h>

#include "control/ControlSurface.h"
#include "control/panel_layout.h"

namespace corvan::com {

// The control wants its site before it is loaded and is activated in place
// as soon as it is visible; registration writes the same value.
inline constexpr DWORD kControlMiscStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE | OLEMISC_INSIDEOUT |
                                            OLEMISC_ACTIVATEWHENVISIBLE | OLEMISC_SETCLIENTSITEFIRST;

// The OLE control interfaces a browser uses to create, initialise and
// activate a windowed control in place, and the panel they show. A script
// host never activates it: the control then has no window and its window
// handle is 0, but a container may still draw it into its own device context.
// The panel keeps its size rules (height 1905 twips, width at least 8000)
// whichever way the container sizes it. The most derived class supplies
// IUnknown.
class OleControl : public IOleObject,
                   public IOleInPlaceObject,
                   public IOleInPlaceActiveObject,
                   public IOleControl,
                   public IViewObject2,
                   public IPersistStreamInit,
                   public IPersistPropertyBag,
                   public SurfaceView {
public:
    HWND Window() const { return window_; }

    // The module forgets its window class when it is unloaded.
    static void UnregisterWindowClass();

    // IOleObject
    STDMETHODIMP SetClientSite(IOleClientSite* site) override;
    STDMETHODIMP GetClientSite(IOleClientSite** site) override;
    STDMETHODIMP SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    STDMETHODIMP Close(DWORD saveOption) override;
    STDMETHODIMP SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP GetClipboardData(DWORD, IDataObject**) override { return E_NOTIMPL; }
    STDMETHODIMP DoVerb(LONG verb, LPMSG, IOleClientSite* activeSite, LONG, HWND parent, LPCRECT position) override;
    STDMETHODIMP EnumVerbs(IEnumOLEVERB** verbs) override;
    STDMETHODIMP Update() override { return S_OK; }
    STDMETHODIMP IsUpToDate() override { return S_OK; }
    STDMETHODIMP GetUserClassID(CLSID* clsid) override;
    STDMETHODIMP GetUserType(DWORD form, LPOLESTR* userType) override;
    STDMETHODIMP SetExtent(DWORD aspect, SIZEL* size) override;
    STDMETHODIMP GetExtent(DWORD aspect, SIZEL* size) override;
    STDMETHODIMP Advise(IAdviseSink* sink, DWORD* connection) override;
    STDMETHODIMP Unadvise(DWORD connection) override;
    STDMETHODIMP EnumAdvise(IEnumSTATDATA** advise) override;
    STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;
    STDMETHODIMP SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

    // IOleWindow, IOleInPlaceObject, IOleInPlaceActiveObject
    STDMETHODIMP GetWindow(HWND* window) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP InPlaceDeactivate() override;
    STDMETHODIMP UIDeactivate() override { return S_OK; }
    STDMETHODIMP SetObjectRects(LPCRECT position, LPCRECT clip) override;
    STDMETHODIMP ReactivateAndUndo() override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(LPMSG) override { return S_FALSE; }
    STDMETHODIMP OnFrameWindowActivate(BOOL) override { return S_OK; }
    STDMETHODIMP OnDocWindowActivate(BOOL) override { return S_OK; }
    STDMETHODIMP ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return S_OK; }
    STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }

    // IOleControl
    STDMETHODIMP GetControlInfo(CONTROLINFO* info) override;
    STDMETHODIMP OnMnemonic(MSG*) override { return E_NOTIMPL; }
    STDMETHODIMP OnAmbientPropertyChange(DISPID) override { return S_OK; }
    STDMETHODIMP FreezeEvents(BOOL) override { return S_OK; }

    // IViewObject2
    STDMETHODIMP Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC hdc, LPCRECTL bounds, LPCRECTL,
                      BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) override;
    STDMETHODIMP GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE**) override { return E_NOTIMPL; }
    STDMETHODIMP Freeze(DWORD, LONG, void*, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP Unfreeze(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
    STDMETHODIMP GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
    STDMETHODIMP GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) override;

    // IPersist, IPersistStreamInit, IPersistPropertyBag: the control keeps no
    // persistent properties, so loading and saving have nothing to carry.
    STDMETHODIMP GetClassID(CLSID* clsid) override;
    STDMETHODIMP IsDirty() override { return S_FALSE; }
    STDMETHODIMP Load(LPSTREAM) override { return S_OK; }
    STDMETHODIMP Save(LPSTREAM, BOOL) override { return S_OK; }
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override;
    STDMETHODIMP InitNew() override { return S_OK; }
    STDMETHODIMP Load(IPropertyBag*, IErrorLog*) override { return S_OK; }
    STDMETHODIMP Save(IPropertyBag*, BOOL, BOOL) override { return S_OK; }

protected:
    OleControl();
    virtual ~OleControl();

    // The interfaces above for FindInterface; nullptr when not one of them.
    void* FindOleInterface(REFIID riid);

    virtual REFCLSID ControlClsid() const = 0;
    // What the panel shows.
    virtual ControlSurface& Surface() = 0;

    // SurfaceView: a changed part is invalidated, and painted at once when
    // it must be refreshed; a container drawing the control is told.
    void SurfaceChanged(SurfacePart part, bool refresh) override;

private:
    HRESULT ActivateInPlace(IOleClientSite* site, HWND parent);
    // The size rules, then the window placed and the bars drawn again.
    void Resize(int widthTwips, const RECT* requested);
    void RedrawAfterLayout();
    void ShowVersionLine();
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    IOleClientSite* site_ = nullptr;
    IOleInPlaceSite* inPlaceSite_ = nullptr;
    IOleAdviseHolder* adviseHolder_ = nullptr;
    IAdviseSink* viewSink_ = nullptr;
    DWORD viewAspects_ = 0, viewFlags_ = 0;
    PanelSize size_;  // twips
    HWND window_ = nullptr;
    bool resizing_ = false;
    bool versionShown_ = false;
};

}  // namespace corvan::com
