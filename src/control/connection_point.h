#pragma once
#include <map>
#include <vector>

#include <windows.h>
#include <ocidl.h>

#include "control/com_object.h"

namespace corvan::com {

// One outgoing dispinterface of an object: any number of sinks, each an
// IDispatch. It lives inside its container and shares the container's life.
class ConnectionPoint : public IConnectionPoint {
public:
    ConnectionPoint(IConnectionPointContainer& container, REFIID eventIid);
    ~ConnectionPoint();
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;

    // Calls `dispid` on every sink with one by-reference text argument; each
    // sink gets its own copy of the text.
    void Fire(DISPID dispid, BSTR text);
    // Calls `dispid` on every sink with the same arguments.
    void Invoke(DISPID dispid, DISPPARAMS& params);
    size_t SinkCount() const { return sinks_.size(); }
    // Drops every sink; the container does this when it is closed.
    void UnadviseAll();

    // The IConnectionPointContainer answers of an object whose only event
    // interface this point serves.
    HRESULT FindAsOnlyPoint(REFIID riid, IConnectionPoint** point);
    HRESULT EnumerateAsOnlyPoint(IEnumConnectionPoints** points);

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP GetConnectionInterface(IID* iid) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

private:
    IConnectionPointContainer& container_;
    IID eventIid_;
    std::map<DWORD, IDispatch*> sinks_;
    DWORD nextCookie_ = 1;
};

// Enumerates the connection points of a container; holds a reference to
// each for its own life.
class ConnectionPointEnumerator : public ComObject<ConnectionPointEnumerator, IEnumConnectionPoints> {
public:
    explicit ConnectionPointEnumerator(std::vector<IConnectionPoint*> points, size_t position = 0);
    ~ConnectionPointEnumerator() override;

    void* FindInterface(REFIID riid);

    STDMETHODIMP Next(ULONG count, IConnectionPoint** points, ULONG* fetched) override;
    STDMETHODIMP Skip(ULONG count) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumConnectionPoints** copy) override;

private:
    std::vector<IConnectionPoint*> points_;
    size_t position_;
};

}  // namespace corvan::com
