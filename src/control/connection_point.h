#pragma once
#include <map>

#include <windows.h>
#include <ocidl.h>

namespace corvan::com {

// One outgoing dispinterface of an object: any number of sinks, each an
// IDispatch. It lives inside its container and shares the container's life.
class ConnectionPoint : public IConnectionPoint {
public:
    ConnectionPoint(IConnectionPointContainer& container, REFIID eventIid);
    ~ConnectionPoint();
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;

    // Calls `dispid` on every sink with one by-reference text argument.
    void Fire(DISPID dispid, BSTR text);
    size_t SinkCount() const { return sinks_.size(); }
    // Drops every sink; the container does this when it is closed.
    void UnadviseAll();

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

}  // namespace corvan::com
