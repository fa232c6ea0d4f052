#include "control/connection_point.h"

#include <vector>

#include <olectl.h>

#include "control/com_guard.h"

namespace corvan::com {

ConnectionPoint::ConnectionPoint(IConnectionPointContainer& container, REFIID eventIid)
    : container_(container), eventIid_(eventIid) {}

ConnectionPoint::~ConnectionPoint() { UnadviseAll(); }

void ConnectionPoint::UnadviseAll() {
    std::map<DWORD, IDispatch*> sinks;
    sinks.swap(sinks_);
    for (auto& [cookie, sink] : sinks) sink->Release();
}

void ConnectionPoint::Invoke(DISPID dispid, DISPPARAMS& params) {
    // A sink may unadvise, or advise another, while it handles the event.
    std::vector<IDispatch*> sinks;
    for (auto& [cookie, sink] : sinks_) {
        sink->AddRef();
        sinks.push_back(sink);
    }
    for (IDispatch* sink : sinks) {
        sink->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
        sink->Release();
    }
}

void ConnectionPoint::Fire(DISPID dispid, BSTR text) {
    // A sink may unadvise, or advise another, while it handles the event.
    std::vector<IDispatch*> sinks;
    for (auto& [cookie, sink] : sinks_) {
        sink->AddRef();
        sinks.push_back(sink);
    }
    for (IDispatch* sink : sinks) {
        BSTR argument = SysAllocStringLen(text, SysStringLen(text));
        VARIANT value;
        VariantInit(&value);
        V_VT(&value) = VT_BSTR | VT_BYREF;
        V_BSTRREF(&value) = &argument;
        DISPPARAMS params = {&value, nullptr, 1, 0};
        sink->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
        SysFreeString(argument);
        sink->Release();
    }
}

HRESULT ConnectionPoint::FindAsOnlyPoint(REFIID riid, IConnectionPoint** point) {
    if (!point) return E_POINTER;
    *point = nullptr;
    if (!IsEqualIID(riid, eventIid_)) return CONNECT_E_NOCONNECTION;
    *point = this;
    AddRef();
    return S_OK;
}

HRESULT ConnectionPoint::EnumerateAsOnlyPoint(IEnumConnectionPoints** points) {
    if (!points) return E_POINTER;
    *points = new (std::nothrow) ConnectionPointEnumerator({this});
    return *points ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP ConnectionPoint::QueryInterface(REFIID riid, void** out) {
    if (!out) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IConnectionPoint)) {
        *out = static_cast<IConnectionPoint*>(this);
        AddRef();
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) ConnectionPoint::AddRef() { return container_.AddRef(); }
STDMETHODIMP_(ULONG) ConnectionPoint::Release() { return container_.Release(); }

STDMETHODIMP ConnectionPoint::GetConnectionInterface(IID* iid) {
    if (!iid) return E_POINTER;
    *iid = eventIid_;
    return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (!container) return E_POINTER;
    *container = &container_;
    container_.AddRef();
    return S_OK;
}

STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (!sink || !cookie) return E_POINTER;
    *cookie = 0;
    IDispatch* dispatch = nullptr;
    if (FAILED(sink->QueryInterface(eventIid_, reinterpret_cast<void**>(&dispatch))) &&
        FAILED(sink->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch))))
        return CONNECT_E_CANNOTCONNECT;
    *cookie = nextCookie_++;
    sinks_[*cookie] = dispatch;
    return S_OK;
}

STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) {
    auto found = sinks_.find(cookie);
    if (found == sinks_.end()) return CONNECT_E_NOCONNECTION;
    IDispatch* sink = found->second;
    sinks_.erase(found);
    sink->Release();
    return S_OK;
}

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** connections) {
    if (!connections) return E_POINTER;
    *connections = nullptr;
    return E_NOTIMPL;
}

ConnectionPointEnumerator::ConnectionPointEnumerator(std::vector<IConnectionPoint*> points, size_t position)
    : points_(std::move(points)), position_(position) {
    for (IConnectionPoint* point : points_) point->AddRef();
}

ConnectionPointEnumerator::~ConnectionPointEnumerator() {
    for (IConnectionPoint* point : points_) point->Release();
}

void* ConnectionPointEnumerator::FindInterface(REFIID riid) {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IEnumConnectionPoints))
        return static_cast<IEnumConnectionPoints*>(this);
    return nullptr;
}

STDMETHODIMP ConnectionPointEnumerator::Next(ULONG count, IConnectionPoint** points, ULONG* fetched) {
    if (!points || (count > 1 && !fetched)) return E_POINTER;
    ULONG given = 0;
    while (given < count && position_ < points_.size()) {
        points[given] = points_[position_++];
        points[given++]->AddRef();
    }
    if (fetched) *fetched = given;
    return given == count ? S_OK : S_FALSE;
}

STDMETHODIMP ConnectionPointEnumerator::Skip(ULONG count) {
    size_t left = points_.size() - position_;
    position_ += count < left ? count : left;
    return count <= left ? S_OK : S_FALSE;
}

STDMETHODIMP ConnectionPointEnumerator::Reset() {
    position_ = 0;
    return S_OK;
}

STDMETHODIMP ConnectionPointEnumerator::Clone(IEnumConnectionPoints** copy) {
    if (!copy) return E_POINTER;
    *copy = nullptr;
    return Guarded([&] {
        *copy = new ConnectionPointEnumerator(points_, position_);
        return S_OK;
    });
}

}  // namespace corvan::com
