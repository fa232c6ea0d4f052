#include "control/OleControl.h"

#include "common/this_module.h"

namespace corvan::com {

namespace {

constexpr char kWindowClass[] = "CorvanInstallerManageClient";

// 8000 x 1905 twips, the panel's least width and its fixed height, in
// HIMETRIC units.
constexpr LONG kDefaultWidth = 8000 * 2540 / 1440;
constexpr LONG kDefaultHeight = 1905 * 2540 / 1440;

template <typename T>
void ReleaseAndClear(T*& pointer) {
    if (pointer) pointer->Release();
    pointer = nullptr;
}

}  // namespace

OleControl::OleControl() : extent_{kDefaultWidth, kDefaultHeight} {}

OleControl::~OleControl() {
    if (window_) DestroyWindow(window_);
    ReleaseAndClear(inPlaceSite_);
    ReleaseAndClear(site_);
    ReleaseAndClear(adviseHolder_);
    ReleaseAndClear(viewSink_);
}

void* OleControl::FindOleInterface(REFIID riid) {
    if (IsEqualIID(riid, IID_IOleObject)) return static_cast<IOleObject*>(this);
    if (IsEqualIID(riid, IID_IOleWindow) || IsEqualIID(riid, IID_IOleInPlaceObject))
        return static_cast<IOleInPlaceObject*>(this);
    if (IsEqualIID(riid, IID_IOleInPlaceActiveObject)) return static_cast<IOleInPlaceActiveObject*>(this);
    if (IsEqualIID(riid, IID_IOleControl)) return static_cast<IOleControl*>(this);
    if (IsEqualIID(riid, IID_IViewObject) || IsEqualIID(riid, IID_IViewObject2))
        return static_cast<IViewObject2*>(this);
    if (IsEqualIID(riid, IID_IPersist) || IsEqualIID(riid, IID_IPersistStreamInit))
        return static_cast<IPersistStreamInit*>(this);
    if (IsEqualIID(riid, IID_IPersistPropertyBag)) return static_cast<IPersistPropertyBag*>(this);
    return nullptr;
}

STDMETHODIMP OleControl::SetClientSite(IOleClientSite* site) {
    if (site) site->AddRef();
    ReleaseAndClear(site_);
    site_ = site;
    return S_OK;
}

STDMETHODIMP OleControl::GetClientSite(IOleClientSite** site) {
    if (!site) return E_POINTER;
    *site = site_;
    if (site_) site_->AddRef();
    return S_OK;
}

STDMETHODIMP OleControl::Close(DWORD) {
    InPlaceDeactivate();
    if (adviseHolder_) adviseHolder_->SendOnClose();
    return S_OK;
}

STDMETHODIMP OleControl::DoVerb(LONG verb, LPMSG, IOleClientSite* activeSite, LONG, HWND parent, LPCRECT position) {
    switch (verb) {
        case OLEIVERB_PRIMARY:
        case OLEIVERB_SHOW:
        case OLEIVERB_INPLACEACTIVATE:
        case OLEIVERB_UIACTIVATE: {
            HRESULT hr = ActivateInPlace(activeSite ? activeSite : site_, parent);
            if (SUCCEEDED(hr) && position) SetObjectRects(position, position);
            return hr;
        }
        case OLEIVERB_HIDE:
            if (window_) ShowWindow(window_, SW_HIDE);
            return S_OK;
        default:
            return OLEOBJ_S_INVALIDVERB;
    }
}

HRESULT OleControl::ActivateInPlace(IOleClientSite* site, HWND parent) {
    if (window_) {
        ShowWindow(window_, SW_SHOW);
        return S_OK;
    }
    if (!site) return E_UNEXPECTED;
    IOleInPlaceSite* inPlace = nullptr;
    if (FAILED(site->QueryInterface(IID_IOleInPlaceSite, reinterpret_cast<void**>(&inPlace)))) return E_NOINTERFACE;
    if (inPlace->CanInPlaceActivate() != S_OK) {
        inPlace->Release();
        return E_FAIL;
    }
    inPlace->OnInPlaceActivate();

    RECT position = {0, 0, 0, 0}, clip = {0, 0, 0, 0};
    IOleInPlaceFrame* frame = nullptr;
    IOleInPlaceUIWindow* document = nullptr;
    OLEINPLACEFRAMEINFO frameInfo = {};
    frameInfo.cb = sizeof frameInfo;
    inPlace->GetWindowContext(&frame, &document, &position, &clip, &frameInfo);
    ReleaseAndClear(frame);
    ReleaseAndClear(document);
    HWND siteWindow = nullptr;
    if (SUCCEEDED(inPlace->GetWindow(&siteWindow)) && siteWindow) parent = siteWindow;

    static ATOM registered = [] {
        WNDCLASSA windowClass = {};
        windowClass.style = CS_HREDRAW | CS_VREDRAW;
        windowClass.lpfnWndProc = &OleControl::WindowProc;
        windowClass.hInstance = ThisModule();
        windowClass.hCursor = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
        windowClass.lpszClassName = kWindowClass;
        return RegisterClassA(&windowClass);
    }();
    (void)registered;
    window_ = CreateWindowExA(0, kWindowClass, "", WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, position.left,
                              position.top, position.right - position.left, position.bottom - position.top, parent,
                              nullptr, ThisModule(), nullptr);
    if (!window_) {
        // Read before the site is told: its own calls may set another.
        const DWORD code = GetLastError();
        inPlace->OnInPlaceDeactivate();
        inPlace->Release();
        return HRESULT_FROM_WIN32(code);
    }
    SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    inPlaceSite_ = inPlace;
    return S_OK;
}

STDMETHODIMP OleControl::InPlaceDeactivate() {
    if (window_) {
        SetWindowLongPtrA(window_, GWLP_USERDATA, 0);
        DestroyWindow(window_);
        window_ = nullptr;
    }
    if (inPlaceSite_) {
        inPlaceSite_->OnInPlaceDeactivate();
        ReleaseAndClear(inPlaceSite_);
    }
    return S_OK;
}

STDMETHODIMP OleControl::SetObjectRects(LPCRECT position, LPCRECT) {
    if (!position) return E_POINTER;
    if (window_)
        MoveWindow(window_, position->left, position->top, position->right - position->left,
                   position->bottom - position->top, TRUE);
    return S_OK;
}

STDMETHODIMP OleControl::EnumVerbs(IEnumOLEVERB** verbs) { return OleRegEnumVerbs(ControlClsid(), verbs); }

STDMETHODIMP OleControl::GetUserClassID(CLSID* clsid) { return GetClassID(clsid); }

STDMETHODIMP OleControl::GetUserType(DWORD form, LPOLESTR* userType) {
    return OleRegGetUserType(ControlClsid(), form, userType);
}

STDMETHODIMP OleControl::SetExtent(DWORD aspect, SIZEL* size) {
    if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    if (!size) return E_POINTER;
    extent_ = *size;
    return S_OK;
}

STDMETHODIMP OleControl::GetExtent(DWORD aspect, SIZEL* size) {
    if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    if (!size) return E_POINTER;
    *size = extent_;
    return S_OK;
}

STDMETHODIMP OleControl::Advise(IAdviseSink* sink, DWORD* connection) {
    if (!adviseHolder_ && FAILED(CreateOleAdviseHolder(&adviseHolder_))) return E_OUTOFMEMORY;
    return adviseHolder_->Advise(sink, connection);
}

STDMETHODIMP OleControl::Unadvise(DWORD connection) {
    return adviseHolder_ ? adviseHolder_->Unadvise(connection) : OLE_E_NOCONNECTION;
}

STDMETHODIMP OleControl::EnumAdvise(IEnumSTATDATA** advise) {
    if (!advise) return E_POINTER;
    *advise = nullptr;
    return adviseHolder_ ? adviseHolder_->EnumAdvise(advise) : S_OK;
}

STDMETHODIMP OleControl::GetMiscStatus(DWORD, DWORD* status) {
    if (!status) return E_POINTER;
    *status = kControlMiscStatus;
    return S_OK;
}

STDMETHODIMP OleControl::GetWindow(HWND* window) {
    if (!window) return E_POINTER;
    *window = window_;
    return window_ ? S_OK : E_FAIL;
}

STDMETHODIMP OleControl::GetControlInfo(CONTROLINFO* info) {
    if (!info) return E_POINTER;
    info->cb = sizeof *info;
    info->hAccel = nullptr;
    info->cAccel = 0;
    info->dwFlags = 0;
    return S_OK;
}

STDMETHODIMP OleControl::Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC hdc, LPCRECTL bounds, LPCRECTL,
                              BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) {
    if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    // Without a window (a script host) there is nothing to draw on.
    if (!window_ || !hdc || !bounds) return S_OK;
    RECT area = {bounds->left, bounds->top, bounds->right, bounds->bottom};
    Paint(hdc, area);
    return S_OK;
}

STDMETHODIMP OleControl::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
    if (sink) sink->AddRef();
    ReleaseAndClear(viewSink_);
    viewSink_ = sink;
    viewAspects_ = aspects;
    viewFlags_ = flags;
    return S_OK;
}

STDMETHODIMP OleControl::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
    if (aspects) *aspects = viewAspects_;
    if (flags) *flags = viewFlags_;
    if (sink) {
        *sink = viewSink_;
        if (viewSink_) viewSink_->AddRef();
    }
    return S_OK;
}

STDMETHODIMP OleControl::GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) {
    return GetExtent(aspect, size);
}

STDMETHODIMP OleControl::GetClassID(CLSID* clsid) {
    if (!clsid) return E_POINTER;
    *clsid = ControlClsid();
    return S_OK;
}

STDMETHODIMP OleControl::GetSizeMax(ULARGE_INTEGER* size) {
    if (!size) return E_POINTER;
    size->QuadPart = 0;
    return S_OK;
}

void OleControl::UnregisterWindowClass() { UnregisterClassA(kWindowClass, ThisModule()); }

LRESULT CALLBACK OleControl::WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* control = reinterpret_cast<OleControl*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (message == WM_PAINT && control) {
        PAINTSTRUCT paint;
        HDC dc = BeginPaint(window, &paint);
        RECT client;
        GetClientRect(window, &client);
        control->Paint(dc, client);
        EndPaint(window, &paint);
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace corvan::com
