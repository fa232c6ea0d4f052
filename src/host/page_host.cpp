#include "host/page_host.h"

#include <cmath>
#include <cstdio>

namespace corvan::host {

namespace {

constexpr char kProgId[] = "CorvanInstaller.ManageClient";
constexpr char kViewerProperty[] = "vbAcceleratorVBTRACER" "_TRACEWIN";
constexpr char kWindowClass[] = "CorvanClientHost";
constexpr UINT kProgressTimerMs = 100;

std::string Narrow(const wchar_t* text, int length = -1) {
    if (!text) return {};
    int size = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string result(size > 0 ? size : 0, '\0');
    if (size > 0) WideCharToMultiByte(CP_ACP, 0, text, length, result.data(), size, nullptr, nullptr);
    if (length < 0 && !result.empty()) result.pop_back();  // the terminator
    return result;
}

std::string Narrow(BSTR text) { return text ? Narrow(text, static_cast<int>(SysStringLen(text))) : std::string(); }

BSTR Wide(const std::string& text) {
    int size = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(size));
    if (result) MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), result, size);
    return result;
}

std::string SystemMessage(HRESULT hr) {
    char* text = nullptr;
    FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   static_cast<DWORD>(hr), 0, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string message = text ? text : "";
    LocalFree(text);
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r' || message.back() == ' '))
        message.pop_back();
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lX", static_cast<unsigned long>(hr));
    return message.empty() ? std::string(code) : message + " (" + code + ")";
}

std::string WindowText(HWND window) {
    char text[2048] = "";
    GetWindowTextA(window, text, sizeof text);
    return text;
}

// A thread hook has no place for our data: the one host of the process.
PageHost* questionHost = nullptr;

LRESULT CALLBACK QuestionHook(int code, WPARAM wparam, LPARAM lparam) {
    if (code == HCBT_ACTIVATE && questionHost) questionHost->AnswerQuestion(reinterpret_cast<HWND>(wparam));
    return CallNextHookEx(nullptr, code, wparam, lparam);
}

LRESULT CALLBACK HostWindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* host = reinterpret_cast<PageHost*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (host && message == WM_COPYDATA) {
        const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lparam);
        if (data && data->lpData) host->TraceLine(std::string(static_cast<const char*>(data->lpData), data->cbData));
        return TRUE;
    }
    if (host && message == WM_TIMER) {
        host->ShowProgress();
        return 0;
    }
    return DefWindowProcA(window, message, wparam, lparam);
}

}  // namespace

PageHost::PageHost(const HostOptions& options, ConsoleOutput& out) : options_(options), out_(out) {
    // One hidden top-level window: the progress timer's, and, with /trace, the
    // trace viewer the control looks for among the top-level windows.
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = HostWindowProc;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = kWindowClass;
    RegisterClassA(&windowClass);
    traceViewer_ = CreateWindowExA(0, kWindowClass, "CorvanClient", WS_OVERLAPPED, 0, 0, 0, 0, nullptr, nullptr,
                                   windowClass.hInstance, nullptr);
    if (traceViewer_) {
        SetWindowLongPtrA(traceViewer_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        if (options_.trace) SetPropA(traceViewer_, kViewerProperty, reinterpret_cast<HANDLE>(1));
    }
    questionHost = this;
    questionHook_ = SetWindowsHookExA(WH_CBT, QuestionHook, nullptr, GetCurrentThreadId());
}

PageHost::~PageHost() {
    Unadvise();
    progress_ = {};
    control_ = {};
    if (questionHook_) UnhookWindowsHookEx(questionHook_);
    questionHost = nullptr;
    if (traceViewer_) {
        RemovePropA(traceViewer_, kViewerProperty);
        DestroyWindow(traceViewer_);
    }
    if (localServer_) FreeLibrary(localServer_);
}

std::string PageHost::CreateControl() {
    std::string failure = options_.local ? CreateFromBesideProgram() : CreateRegistered();
    if (!failure.empty()) return failure;
    progress_ = control_.As<IManageClientProgress>(IID_IManageClientProgress);
    Advise();
    return {};
}

std::string PageHost::CreateRegistered() {
    CLSID clsid;
    wchar_t progId[64];
    MultiByteToWideChar(CP_ACP, 0, kProgId, -1, progId, 64);
    HRESULT hr = CLSIDFromProgID(progId, &clsid);
    if (SUCCEEDED(hr))
        hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID__ManageClient, control_.PutVoid());
    if (FAILED(hr))
        return std::string("the control ") + kProgId + " could not be created: " + SystemMessage(hr) +
               ". Register CorvanInstaller.ocx with regsvr32, or use /local.";
    return {};
}

std::string PageHost::CreateFromBesideProgram() {
    char path[MAX_PATH];
    DWORD length = GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string ocx(path, length);
    ocx = ocx.substr(0, ocx.find_last_of("\\/") + 1) + "CorvanInstaller.ocx";
    localServer_ = LoadLibraryA(ocx.c_str());
    if (!localServer_)
        return "'" + ocx + "' could not be loaded: " + SystemMessage(HRESULT_FROM_WIN32(GetLastError()));
    using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
    auto getClassObject =
        reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(GetProcAddress(localServer_, "DllGetClassObject")));
    if (!getClassObject) return "'" + ocx + "' is not a COM server (it has no DllGetClassObject).";
    ComPtr<IClassFactory> factory;
    HRESULT hr = getClassObject(CLSID_ManageClient, IID_IClassFactory, factory.PutVoid());
    if (SUCCEEDED(hr)) hr = factory->CreateInstance(nullptr, IID__ManageClient, control_.PutVoid());
    if (FAILED(hr)) return "the control in '" + ocx + "' could not be created: " + SystemMessage(hr);
    return {};
}

void PageHost::Advise() {
    auto container = control_.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    if (container && SUCCEEDED(container->FindConnectionPoint(DIID___ManageClient, point_.Put())))
        point_->Advise(this, &cookie_);
}

void PageHost::Unadvise() {
    if (point_ && cookie_) point_->Unadvise(cookie_);
    point_ = {};
    cookie_ = 0;
}

int PageHost::Execute() {
    if (options_.groups) {
        BSTR groups = Wide(*options_.groups);
        control_->put_UsersGroups(groups);
        SysFreeString(groups);
    }
    if (options_.url) {
        BSTR url = Wide(*options_.url);
        control_->put_URL(&url);
        SysFreeString(url);
    }
    if (traceViewer_ && progress_) timer_ = SetTimer(traceViewer_, 1, kProgressTimerMs, nullptr);

    int code;
    if (options_.check) {
        VARIANT_BOOL needed = VARIANT_FALSE;
        HRESULT hr = control_->NeedToInstall(&needed);
        out_.Settle();
        if (FAILED(hr)) {
            out_.Line("error: NeedToInstall failed: " + SystemMessage(hr));
            code = exit_code::kRunFailed;
        } else {
            code = needed ? exit_code::kInstallNeeded : exit_code::kDone;
        }
    } else {
        short mode = static_cast<short>(options_.mode);
        VARIANT result;
        VariantInit(&result);
        HRESULT hr = control_->Run(&mode, &result);
        ShowProgress();
        out_.Settle();
        if (FAILED(hr)) out_.Line("error: Run failed: " + SystemMessage(hr));
        bool succeeded = SUCCEEDED(hr) && V_VT(&result) == VT_BOOL && V_BOOL(&result) == VARIANT_TRUE;
        code = succeeded ? exit_code::kDone : exit_code::kRunFailed;
        VariantClear(&result);
    }
    if (timer_) KillTimer(traceViewer_, timer_);
    timer_ = 0;
    return code;
}

void PageHost::ShowProgress() {
    if (!progress_ || options_.quiet) return;
    float fraction = 0, transfer = 0;
    BSTR caption = nullptr, transferText = nullptr;
    if (FAILED(progress_->GetProgress(&fraction, &caption, &transfer, &transferText))) return;
    std::string text = Narrow(caption), download = Narrow(transferText);
    SysFreeString(caption);
    SysFreeString(transferText);
    if (text.empty()) return;
    char percent[16];
    double shown = std::isfinite(fraction) ? std::fmin(std::fmax(fraction, 0.0), 1.0) * 100.0 : 0.0;
    std::snprintf(percent, sizeof percent, "[%3d%%] ", static_cast<int>(shown + 0.5));
    // A download under way shows its own line's text and share too.
    if (!download.empty() && std::isfinite(transfer) && transfer > 0 && transfer < 1) {
        char share[16];
        std::snprintf(share, sizeof share, "%d%%", static_cast<int>(transfer * 100 + 0.5));
        text += " (" + download + " " + share + ")";
    }
    out_.Status(percent + text);
}

STDMETHODIMP PageHost::QueryInterface(REFIID riid, void** out) {
    if (!out) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, DIID___ManageClient)) {
        *out = static_cast<IDispatch*>(this);
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP PageHost::GetTypeInfoCount(UINT* count) {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
}

STDMETHODIMP PageHost::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) {
    std::string text;
    if (params && params->cArgs == 1) {
        const VARIANT& argument = params->rgvarg[0];
        if (V_VT(&argument) == (VT_BSTR | VT_BYREF) && V_BSTRREF(&argument)) text = Narrow(*V_BSTRREF(&argument));
        else if (V_VT(&argument) == VT_BSTR) text = Narrow(V_BSTR(&argument));
    }
    if (id == 1) {
        ++errors_;
        out_.Line("error: " + text);
    } else if (id == 2) {
        ShowProgress();
        if (!options_.quiet) out_.Line("status: " + text);
    }
    return S_OK;
}

void PageHost::AnswerQuestion(HWND dialog) {
    char className[16] = "";
    GetClassNameA(dialog, className, sizeof className);
    // A message box: a dialog whose text is the static control 0xFFFF.
    HWND textControl = GetDlgItem(dialog, 0xFFFF);
    if (std::string(className) != "#32770" || !textControl) return;
    static const int yes[] = {IDYES, IDOK, IDRETRY}, no[] = {IDNO, IDCANCEL, IDOK};
    int button = 0;
    for (int candidate : options_.answerYes ? yes : no)
        if (GetDlgItem(dialog, candidate)) {
            button = candidate;
            break;
        }
    static const char* const names[] = {"", "OK", "Cancel", "Abort", "Retry", "Ignore", "Yes", "No"};
    std::string body = WindowText(textControl);
    for (char& c : body)
        if (c == '\r' || c == '\n') c = ' ';
    out_.Line("question: " + WindowText(dialog) + ": " + body + " -> " +
              (button > 0 && button <= 7 ? names[button] : "(no button)"));
    if (button) PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(dialog, button)));
}

void PageHost::TraceLine(const std::string& text) {
    std::string line = text;
    while (!line.empty() && (line.back() == '\t' || line.back() == '\r' || line.back() == '\n')) line.pop_back();
    out_.Line("trace: " + line);
}

}  // namespace corvan::host
