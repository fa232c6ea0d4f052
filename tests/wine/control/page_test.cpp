// The control as pages and browsers find it: registered by regsvr32, safe
// for scripting, driven by name with its events heard, locked to the
// extranet's https pages inside a browser; and what it shows on a real
// desktop: its panel drawn through IViewObject::Draw and read pixel by pixel
// against the layout, its window in a container, and the status report
// window with the clipboard.
#include <gtest/gtest.h>

#include <objsafe.h>
#include <olectl.h>
#include <servprov.h>
#include <shlguid.h>

#include <cstdlib>
#include <functional>

#include "control/PanelPainter.h"
#include "control/panel_layout.h"
#include "harness.h"
#include "probe_server.h"

using namespace control_tests;

namespace {

using Texts = std::vector<std::string>;

// Script hosts find the events through the class information.
TEST_F(Page, SafetyClassInformationAndConnectionPointsAnswerAsABrowserExpects) {
    auto classInfo = control.As<IProvideClassInfo2>(IID_IProvideClassInfo2);
    ASSERT_TRUE(classInfo);
    GUID events = GUID_NULL;
    ASSERT_EQ(classInfo->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
    EXPECT_TRUE(IsEqualGUID(events, DIID___ManageClient));
    auto safety = control.As<IObjectSafety>(IID_IObjectSafety);
    ASSERT_TRUE(safety);
    const DWORD both = INTERFACESAFE_FOR_UNTRUSTED_CALLER | INTERFACESAFE_FOR_UNTRUSTED_DATA;
    const struct {
        const IID* iid;
        HRESULT get;
        DWORD options;  // supported and enabled
        HRESULT setBoth;
    } cases[] = {{&IID_IDispatch, S_OK, both, S_OK},
                 {&IID__ManageClient, S_OK, both, S_OK},
                 {&IID_IPersistPropertyBag, S_OK, INTERFACESAFE_FOR_UNTRUSTED_DATA, E_FAIL},
                 {&IID_IOleObject, E_NOINTERFACE, 0, E_NOINTERFACE}};
    for (const auto& c : cases) {
        DWORD supported = 1, enabled = 1;
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(*c.iid, &supported, &enabled), c.get);
        EXPECT_EQ(supported, c.options);
        EXPECT_EQ(enabled, c.options);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(*c.iid, both, both), c.setBoth);
    }
    // One connection point, the events'.
    auto container = control.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ComPtr<IConnectionPoint> first, other;
    EXPECT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, other.Put()), CONNECT_E_NOCONNECTION);
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(container->EnumConnectionPoints(points.Put()), S_OK);
    ASSERT_EQ(points->Next(1, first.Put(), nullptr), S_OK);
    EXPECT_EQ(points->Next(1, other.Put(), nullptr), S_FALSE);
    IID iid;
    first->GetConnectionInterface(&iid);
    EXPECT_TRUE(IsEqualIID(iid, DIID___ManageClient));
}

TEST_F(Page, CallsByNameDriveTheEngineEveryAdvisedSinkHearsAndTheServerUnloadsOnceLetGoEvenDuringARun) {
    EventSink second;
    DWORD secondCookie = 0;
    ASSERT_EQ(point->Advise(&second, &secondCookie), S_OK);
    Put(L"UsersGroups", "Dealers");
    EXPECT_EQ(Get(L"UsersGroups"), "Dealers");
    EXPECT_EQ(V_VT(&static_cast<const VARIANT&>(Run(Long(0)))), VT_EMPTY);
    ASSERT_EQ(point->Unadvise(secondCookie), S_OK);
    EXPECT_EQ(point->Unadvise(secondCookie), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(V_VT(&static_cast<const VARIANT&>(Run(Long(6)))), VT_EMPTY);
    EXPECT_EQ(second.heard, Texts{"2:Complete"});
    EXPECT_EQ(second.references, 1u);

    Put(L"URL", "https://h/a/b/page.asp");
    Put(L"URL", "no slash here");
    VARIANT result = Session("status|INSTALL\nInstallationStatus|Preparing\nInstallerError|something broke\nneed|True\n", 5);
    EXPECT_EQ(V_VT(&result), VT_BOOL);
    EXPECT_EQ(V_BOOL(&result), VARIANT_TRUE);
    EXPECT_EQ(Journal(), "PrepInstaller(1,False) url=https://h/a/b/\n");
    EXPECT_EQ(sink.heard, (Texts{"2:Complete", "2:Complete", "2:Preparing", "1:something broke", "2:Complete"}));
    EXPECT_EQ(Get(L"Status"), "INSTALL");
    // A by-reference Integer from a VB page works as well as a script's Long.
    SHORT mode = 3;
    VARIANT byReference;
    V_VT(&byReference) = VT_I2 | VT_BYREF;
    V_I2REF(&byReference) = &mode;
    EXPECT_EQ(V_VT(&static_cast<const VARIANT&>(Run(byReference))), VT_BOOL);
    EXPECT_NE(Journal().find("PrepInstaller(3,False)"), std::string::npos);
    VARIANT need = Call(control.Get(), L"NeedToInstall");
    EXPECT_EQ(V_VT(&need), VT_BOOL);
    EXPECT_EQ(V_BOOL(&need), VARIANT_TRUE);

    auto canUnloadNow =
        reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(reinterpret_cast<void*>(ProbeExport("DllCanUnloadNow")));
    ASSERT_TRUE(canUnloadNow);
    EXPECT_EQ(canUnloadNow(), S_FALSE);

    // A page may let go of the control from inside one of its events: the run
    // still finishes on a live object, and the control goes once Run returns.
    struct LettingGo : EventSink {
        std::function<void()> letGo;
        STDMETHODIMP Invoke(DISPID id, REFIID riid, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                            EXCEPINFO* exception, UINT* argumentError) override {
            EventSink::Invoke(id, riid, locale, flags, params, result, exception, argumentError);
            if (heard.back() == "2:Preparing") letGo();
            return S_OK;
        }
    } lettingGo;
    lettingGo.letGo = [this] {
        point = nullptr;
        control = nullptr;
    };
    DWORD letCookie = 0;
    ASSERT_TRUE(Advise(control.Get(), lettingGo, letCookie));
    point->Unadvise(cookie);
    result = Session("InstallationStatus|Preparing\nStatusMsgChange|still running\n");
    EXPECT_EQ(V_VT(&result), VT_BOOL);
    EXPECT_EQ(lettingGo.heard, (Texts{"2:Preparing", "2:Complete"}));
    EXPECT_EQ(canUnloadNow(), S_OK);
    EXPECT_EQ(sink.references, 1u);
    EXPECT_EQ(lettingGo.references, 1u);
}

bool KeyExists(const std::string& path) {
    HKEY key;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

// What creation by the class factory does not show: how a browser finds the
// control safe, where it lives, and that unregistering takes it all away.
TEST_F(Page, Regsvr32RegistersAndUnregistersTheShippedControl) {
    const std::string ocx = winbench::OutDir() + "\\CorvanInstaller.ocx";
    ASSERT_TRUE(Regsvr32(ocx));
    const std::string clsid = "CLSID\\{96764B85-C202-4377-A836-2C40554474D9}";
    const std::string typeLib = std::string("TypeLib\\{E11AB144-7A14-4294-9F2D-2574EFBE0FC2}\\1.0\\0\\") +
                                (sizeof(void*) == 8 ? "win64" : "win32");
    const auto server = winbench::RegText(HKEY_CLASSES_ROOT, clsid + "\\InprocServer32", nullptr);
    EXPECT_NE(server.value_or("").find("CorvanInstaller.ocx"), std::string::npos);
    for (const auto& row : Table("page.txt", "registered")) {
        std::string key = row[0];
        for (const auto& [name, text] : {std::pair{"{clsid}", clsid}, std::pair{"{typelib}", typeLib}})
            if (key.rfind(name, 0) == 0) key.replace(0, strlen(name), text);
        if (row[2].empty()) {
            EXPECT_TRUE(KeyExists(key)) << row.where;
        } else {
            EXPECT_EQ(winbench::RegText(HKEY_CLASSES_ROOT, key, row[1].c_str()), row[2]) << row.where;
        }
    }
    ASSERT_TRUE(Regsvr32(ocx, true));
    for (const std::string& key : {clsid, std::string("CorvanInstaller.ManageClient"),
                                   std::string("CorvanInstaller.ManageClient.1"), typeLib})
        EXPECT_FALSE(KeyExists(key)) << key;
}

// A browser's site: a container's, with the browser object behind it whose
// LocationURL (dispid 211) is the page.
class BrowserSite : public Site, public IServiceProvider, public IDispatch {
public:
    std::string location;
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        if (IsEqualIID(riid, IID_IServiceProvider)) *out = static_cast<IServiceProvider*>(this);
        else if (IsEqualIID(riid, IID_IDispatch)) *out = static_cast<IDispatch*>(this);
        else return Site::QueryInterface(riid, out);
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return Site::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return Site::Release(); }
    STDMETHODIMP QueryService(REFGUID service, REFIID riid, void** out) override {
        return IsEqualGUID(service, SID_SWebBrowserApp) ? QueryInterface(riid, out) : E_NOINTERFACE;
    }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { *count = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) override {
        if (id != 211 || !(flags & DISPATCH_PROPERTYGET) || !result) return DISP_E_MEMBERNOTFOUND;
        V_VT(result) = VT_BSTR;
        V_BSTR(result) = corvan::com::ToBstr(location);
        return S_OK;
    }
};

// Inside a browser only https pages of the approved hosts (the built-in ones
// or the machine's policy in the registry) run the control.
TEST_F(Page, InsideABrowserOnlyHttpsPagesOfApprovedHostsRunTheControl) {
    const char kPolicy[] = "SOFTWARE\\Policies\\Talo\\Installer";
    auto ole = control.As<IOleObject>(IID_IOleObject);
    BrowserSite site;
    ASSERT_EQ(ole->SetClientSite(static_cast<IOleClientSite*>(&site)), S_OK);
    for (const auto& row : Table("page.txt", "browser")) {
        const std::string &page = row[0], &policy = row[1], &installer = row[2], &refusal = row[3];
        SCOPED_TRACE(row.where);
        RegDeleteKeyA(HKEY_LOCAL_MACHINE, kPolicy);
        if (!policy.empty()) {
            ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, kPolicy, "ApprovedHosts", REG_SZ, policy.c_str(),
                                      static_cast<DWORD>(policy.size() + 1)),
                      ERROR_SUCCESS);
        }
        winbench::RemoveTree("C:\\TALO");
        sink.heard.clear();
        site.location = page;
        if (!installer.empty()) Put(L"URL", installer);
        VARIANT result = Session("");
        const std::string journal = Journal();
        if (refusal.empty()) {
            EXPECT_NE(journal.find("PrepInstaller(1,False)"), std::string::npos) << journal;
            continue;
        }
        ASSERT_FALSE(sink.heard.empty());
        EXPECT_EQ(sink.heard[0].rfind("1:The Corvan Connect client manager refused ", 0), 0u) << sink.heard[0];
        EXPECT_NE(sink.heard[0].find(refusal), std::string::npos) << sink.heard[0];
        if (!installer.empty()) {  // the refused address is never used; the run goes to the installer it had
            EXPECT_EQ(journal.find("evil.test"), std::string::npos) << journal;
            continue;
        }
        EXPECT_EQ(V_VT(&result), VT_BOOL);
        EXPECT_EQ(V_BOOL(&result), VARIANT_FALSE);
        EXPECT_EQ(journal.find("PrepInstaller"), std::string::npos) << journal;
        EXPECT_FALSE(winbench::FileExists("C:\\TALO\\SC_Install.log"));
        VARIANT need = Call(control.Get(), L"NeedToInstall");
        EXPECT_EQ(V_BOOL(&need), VARIANT_FALSE);
        EXPECT_EQ(Journal().find("NeedToInstall()"), std::string::npos);
    }
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, kPolicy);
    ole->SetClientSite(nullptr);
}

HWND WindowOf(IDispatch* control) {
    VARIANT handle = Call(control, L"hwnd", DISPATCH_PROPERTYGET);
    EXPECT_EQ(V_VT(&handle), VT_I4);
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(V_I4(&handle)));
}

// What a device context shows, read back pixel by pixel.
struct Picture {
    int width = 0;
    std::vector<uint32_t> pixels;  // 0xXXRRGGBB, top row first

    COLORREF At(int x, int y) const {
        const uint32_t p = pixels[static_cast<size_t>(y) * width + x];
        return RGB((p >> 16) & 0xFF, (p >> 8) & 0xFF, p & 0xFF);
    }
};

// Lets `draw` paint into a white width x height memory bitmap and reads it;
// kept as <name>.bmp in the Windows build's pictures folder, for people to look at.
Picture Capture(const std::string& name, int width, int height, const std::function<void(HDC)>& draw) {
    BITMAPINFO format = {{sizeof format.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    RECT all = {0, 0, width, height};
    FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    draw(dc);
    GdiFlush();
    const auto* first = static_cast<const uint32_t*>(bits);
    Picture picture{width, std::vector<uint32_t>(first, first + static_cast<size_t>(width) * height)};
    const DWORD header = sizeof(BITMAPFILEHEADER) + sizeof format.bmiHeader, bytes = width * height * 4;
    const BITMAPFILEHEADER file = {0x4D42, header + bytes, 0, 0, header};
    std::string data(reinterpret_cast<const char*>(&file), sizeof file);
    data.append(reinterpret_cast<const char*>(&format.bmiHeader), sizeof format.bmiHeader);
    data.append(static_cast<const char*>(bits), bytes);
    const char* build = std::getenv("CORVAN_WINDOWS_BUILD");
    const std::string folder = std::string(build ? build : ".") + "\\pictures";
    CreateDirectoryA(folder.c_str(), nullptr);
    winbench::WriteFileBytes(folder + "\\" + name + ".bmp", data);
    SelectObject(dc, old);
    DeleteDC(dc);
    DeleteObject(bitmap);
    return picture;
}

constexpr COLORREF kBlue = RGB(0, 90, 168), kWhite = RGB(255, 255, 255);

RECT Pixels(const corvan::TwipsRect& r) {
    const int x = corvan::ScreenDpiX(), y = corvan::ScreenDpiY();
    return {corvan::TwipsToPixels(r.left, x), corvan::TwipsToPixels(r.top, y), corvan::TwipsToPixels(r.Right(), x),
            corvan::TwipsToPixels(r.Bottom(), y)};
}

// A bar read along row y: the pixels inside its border (blue or white) and
// the blue run at their start; the run is -1 when anything but white follows.
std::pair<int, int> BarRow(const Picture& picture, const RECT& bar, int y) {
    auto plain = [&](int x) { return picture.At(x, y) == kBlue || picture.At(x, y) == kWhite; };
    int left = bar.left, right = bar.right, x = bar.left;
    while (left < right && !plain(left)) ++left;
    while (right > left && !plain(right - 1)) --right;
    for (x = left; x < right && picture.At(x, y) == kBlue;) ++x;
    const int filled = x - left;
    for (; x < right; ++x)
        if (picture.At(x, y) != kWhite) return {right - left, -1};
    return {right - left, filled};
}

// The bars are filled where the layout puts them, by the share the rules give,
// on every row; an uninstall shows no transfer line. (The captions' texts are
// pinned by the unit tests.)
TEST_F(Page, WithoutAWindowItDrawsWhatTheLayoutComputes) {
    const corvan::PanelLayout layout = corvan::LayOutPanel(corvan::kPanelMinWidth);
    auto view = control.As<IViewObject2>(IID_IViewObject2);
    const SIZE size = corvan::PanelPixels(corvan::kPanelMinWidth);
    const struct {
        const char* picture;
        LONG mode;
        const char* script;
        int overall, transfer;  // -1: hidden
    } cases[] = {
        {"panel-0", 1, "StatusMsgChange|Preparing the installation...\nFTPStatus|0|SC_Install.scl\n", 1, 1},
        {"panel-50", 1, "StatusMsgChange|Installing CorvanClient.msi\nProgressUpdate|0.5\nFTPStatus|0.5|CorvanClient.msi\n", 50, 50},
        {"panel-100", 1, "StatusMsgChange|The installation is complete.\nProgressUpdate|1\nFTPStatus|1|Reports.mdb\n", 99, 100},
        {"panel-uninstall", 3, "StatusMsgChange|Removing Reports.mdb\nProgressUpdate|0.5\n", 50, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.picture);
        Session(c.script, c.mode);
        const Picture picture = Capture(c.picture, size.cx, size.cy, [&](HDC dc) {
            RECTL bounds = {0, 0, size.cx, size.cy};
            EXPECT_EQ(view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0), S_OK);
        });
        for (const auto& [area, percent] : {std::pair(Pixels(layout.picStatusbar), c.overall),
                                            std::pair(Pixels(layout.picFTP), c.transfer)}) {
            const int middle = (area.top + area.bottom) / 2;
            const auto [inside, filled] = BarRow(picture, area, middle);
            if (percent < 0) {
                for (int x = area.left; x < area.right; ++x) ASSERT_EQ(picture.At(x, area.top + 2), kWhite);
                continue;
            }
            ASSERT_GT(inside, 100);
            EXPECT_NEAR(filled, inside * percent / 100.0, 1.0) << "filled " << filled << " of " << inside;
            for (int y = area.top + 1; y < area.bottom - 1; ++y) EXPECT_EQ(BarRow(picture, area, y).second, filled) << y;
        }
    }
}

constexpr int kText = 100, kPrint = 101, kCopy = 102, kClose = 103;

HWND StatusWindow() { return FindWindowA("CorvanInstallerStatusReport", nullptr); }

std::string TextOf(HWND window) {
    std::string text(static_cast<size_t>(GetWindowTextLengthA(window)) + 1, '\0');
    text.resize(static_cast<size_t>(GetWindowTextA(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

std::string ReportText() { return TextOf(GetDlgItem(StatusWindow(), kText)); }

void Click(int button) { SendMessageA(GetDlgItem(StatusWindow(), button), BM_CLICK, 0, 0); }

// The message box that a click on a button of the status window shows,
// answered with OK from a timer of its modal loop: "<title>: <text>".
std::string shownBox;

void CALLBACK AnswerBox(HWND, UINT, UINT_PTR timer, DWORD) {
    HWND box = FindWindowA("#32770", nullptr);
    if (!box || !IsWindowVisible(box)) return;
    shownBox = TextOf(box) + ": " + TextOf(GetDlgItem(box, 0xFFFF));  // the box's text has the id 0xFFFF
    KillTimer(nullptr, timer);
    PostMessageA(box, WM_COMMAND, IDOK, 0);
}

std::string ClickAndAnswer(int button) {
    shownBox = "(no box)";
    const UINT_PTR timer = SetTimer(nullptr, 0, 20, AnswerBox);
    Click(button);
    KillTimer(nullptr, timer);
    return shownBox;
}

std::string ClipboardText() {
    std::string text = "(no text)";
    if (!OpenClipboard(nullptr)) return "(clipboard busy)";
    if (HANDLE data = GetClipboardData(CF_TEXT)) text = static_cast<const char*>(GlobalLock(data)), GlobalUnlock(data);
    CloseClipboard();
    return text;
}

// A visible page window with the control activated in place in it, as a
// browser shows it; closed and gone with the object.
struct ActivePage {
    explicit ActivePage(IUnknown* control) {
        site.page = CreateWindowExA(0, "STATIC", "page", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 300, nullptr,
                                    nullptr, nullptr, nullptr);
        control->QueryInterface(IID_IOleObject, ole.PutVoid());
        if (!ole) return;
        ole->SetClientSite(&site);
        RECT position = Site::kPosition;
        ole->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, site.page, &position);
        auto inPlace = ole.As<IOleInPlaceObject>(IID_IOleInPlaceObject);
        if (inPlace) inPlace->GetWindow(&window);
    }
    ~ActivePage() {
        if (ole) ole->Close(OLECLOSE_NOSAVE);
        if (ole) ole->SetClientSite(nullptr);
        DestroyWindow(site.page);
    }

    Site site;
    ComPtr<IOleObject> ole;
    HWND window = nullptr;  // the control's own
};

// In place the control gets a window of the rules' size inside the page,
// which owns its status report while it lives; the report keeps its lines.
TEST_F(Page, InPlaceItGetsAWindowInThePageAndShowsItsStatusReportThere) {
    Session("StatusMsgChange|Downloading SC_Install.scl\nInstallerError|The server is busy\n");
    HWND window = StatusWindow();
    ASSERT_TRUE(window);
    EXPECT_FALSE(IsWindowVisible(window));
    const std::string before = ReportText();
    EXPECT_NE(before.find(" : Downloading SC_Install.scl\r\n"), std::string::npos) << before;
    EXPECT_EQ(WindowOf(control.Get()), nullptr);
    {
        ActivePage page(control.Get());
        EXPECT_EQ(page.site.activations, 1);
        ASSERT_TRUE(IsWindow(page.window));
        EXPECT_EQ(WindowOf(control.Get()), page.window);
        EXPECT_EQ(GetParent(page.window), page.site.page);
        EXPECT_TRUE(IsWindowVisible(page.window));
        SIZEL proposed = {corvan::TwipsToHimetric(5000), corvan::TwipsToHimetric(3000)}, kept = {};
        ASSERT_EQ(page.ole->SetExtent(DVASPECT_CONTENT, &proposed), S_OK);
        ASSERT_EQ(page.ole->GetExtent(DVASPECT_CONTENT, &kept), S_OK);
        EXPECT_EQ(HimetricToTwips(kept.cx), 8000);
        EXPECT_EQ(HimetricToTwips(kept.cy), 1905);
        EXPECT_EQ(page.site.lastPosition.right - page.site.lastPosition.left, corvan::PanelPixels(8000).cx);

        Call(control.Get(), L"ShowUpdates");
        EXPECT_TRUE(IsWindowVisible(window));
        EXPECT_EQ(GetWindow(window, GW_OWNER), page.site.page);
        EXPECT_EQ(ReportText(), before);
        Click(kClose);
        EXPECT_FALSE(IsWindowVisible(window));
        Session("StatusMsgChange|Registering CorvanGrid.ocx\n");
        Call(control.Get(), L"ShowUpdates");
        EXPECT_TRUE(IsWindowVisible(window));
        ASSERT_EQ(page.ole->Close(OLECLOSE_NOSAVE), S_OK);
        EXPECT_EQ(page.site.deactivations, 1);
        EXPECT_FALSE(IsWindow(page.window));
        EXPECT_EQ(WindowOf(control.Get()), nullptr);
        page.ole->SetClientSite(nullptr);
        EXPECT_EQ(page.site.references, 1u);
    }
    // The page's window took its owned window with it; the report stays.
    Call(control.Get(), L"ShowUpdates");
    ASSERT_TRUE(StatusWindow());
    const std::string after = ReportText();
    EXPECT_EQ(after.substr(0, before.size()), before);
    EXPECT_NE(after.find(" : Registering CorvanGrid.ocx\r\n", before.size()), std::string::npos) << after;
    EXPECT_EQ(ClickAndAnswer(kCopy), "Copied...: The Status Report has been copied to the Clipboard.");
    EXPECT_EQ(ClipboardText(), after);
    EXPECT_EQ(ClickAndAnswer(kPrint).rfind("Not printed...: ", 0), 0u);  // the prefix has no printer
    Click(kClose);
}

}  // namespace
