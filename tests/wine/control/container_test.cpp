// A container activates the control in place in its window, as a browser
// does, and finds the control's window through hwnd.
#include <gtest/gtest.h>

#include "container_site.h"
#include "probe_server.h"

using namespace control_tests;

namespace {

HWND WindowOf(IDispatch* control) {
    VARIANT handle = Call(control, L"hwnd", DISPATCH_PROPERTYGET);
    EXPECT_EQ(V_VT(&handle), VT_I4);
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(V_I4(&handle)));
}

TEST_F(Page, InPlaceActivationGivesTheControlAWindowInsideThePage) {
    HWND page = CreateWindowExA(0, "STATIC", "page", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 300, nullptr,
                                nullptr, nullptr, nullptr);
    ASSERT_TRUE(page);
    auto ole = control.As<IOleObject>(IID_IOleObject);
    ASSERT_TRUE(ole);
    DWORD status = 0;
    ole->GetMiscStatus(DVASPECT_CONTENT, &status);
    EXPECT_TRUE(status & OLEMISC_SETCLIENTSITEFIRST);

    Site site(page);
    ASSERT_EQ(ole->SetClientSite(&site), S_OK);
    EXPECT_EQ(control.As<IPersistStreamInit>(IID_IPersistStreamInit)->InitNew(), S_OK);
    EXPECT_EQ(WindowOf(control.Get()), nullptr);

    RECT position = Site::kPosition;
    ASSERT_EQ(ole->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, page, &position), S_OK);
    EXPECT_EQ(site.activations, 1);
    HWND window = WindowOf(control.Get());
    ASSERT_TRUE(IsWindow(window));
    EXPECT_EQ(GetParent(window), page);
    EXPECT_TRUE(IsWindowVisible(window));
    HWND reported = nullptr;
    ASSERT_EQ(control.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->GetWindow(&reported), S_OK);
    EXPECT_EQ(reported, window);
    RECT placed;
    GetWindowRect(window, &placed);
    EXPECT_EQ(placed.right - placed.left, 600);
    UpdateWindow(window);

    // Drawing into a container's device context while active.
    auto view = control.As<IViewObject2>(IID_IViewObject2);
    ASSERT_TRUE(view);
    HDC dc = GetDC(page);
    RECTL bounds = {0, 0, 100, 50};
    EXPECT_EQ(view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0), S_OK);
    ReleaseDC(page, dc);

    ASSERT_EQ(ole->Close(OLECLOSE_NOSAVE), S_OK);
    EXPECT_EQ(site.deactivations, 1);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(WindowOf(control.Get()), nullptr);
    ole->SetClientSite(nullptr);
    EXPECT_EQ(site.references, 1u);
    DestroyWindow(page);
}

}  // namespace
