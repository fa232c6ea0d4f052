#pragma once

#include <windows.h>
#include <ocidl.h>

#include "control/CorvanInstaller_h.h"
#include "control/WindowsDesktop.h"
#include "control/com_object.h"
#include "control/connection_point.h"
#include "control/type_library.h"
#include "transfer/clsFTP.h"

namespace corvan::com {

// The connection point of the session's two events, whose arguments are a
// number and a text.
class clsFTPEventPoint : public ConnectionPoint {
public:
    using ConnectionPoint::ConnectionPoint;

    void FireFileProgress(float percent, const std::string& status);
    // Returns the text as the sinks left it.
    std::string FireStatusChange(const std::string& status, int32_t code);
};

// The COM object scripts create as CorvanInstaller.clsFTP.
class clsFTPCom : public ComObject<clsFTPCom, TypeInfoDispatch<_clsFTP, &IID__clsFTP>, IProvideClassInfo2,
                                   IConnectionPointContainer>,
                  private clsFTPEvents {
public:
    clsFTPCom();

    void* FindInterface(REFIID riid);

    // _clsFTP
    STDMETHODIMP get_Port(LONG* value) override;
    STDMETHODIMP put_Port(LONG value) override;
    STDMETHODIMP get_protocal(LONG* value) override;
    STDMETHODIMP put_protocal(LONG value) override;
    STDMETHODIMP get_Login(BSTR* value) override;
    STDMETHODIMP put_Login(BSTR value) override;
    STDMETHODIMP get_Password(BSTR* value) override;
    STDMETHODIMP put_Password(BSTR value) override;
    STDMETHODIMP get_InternetHandle(LONG* value) override;
    STDMETHODIMP get_StillExecuting(VARIANT_BOOL* value) override;
    STDMETHODIMP get_dwCurrentFileSize(double* value) override;
    STDMETHODIMP put_dwCurrentFileSize(double value) override;
    STDMETHODIMP get_pub_BytesSent(double* value) override;
    STDMETHODIMP put_pub_BytesSent(double value) override;
    STDMETHODIMP get_pub_BytesRecieved(double* value) override;
    STDMETHODIMP put_pub_BytesRecieved(double value) override;
    STDMETHODIMP OpenFTP(BSTR target, BSTR login, BSTR password, VARIANT_BOOL* result) override;
    STDMETHODIMP DownloadFile(BSTR url, BSTR destination, VARIANT_BOOL* result) override;
    STDMETHODIMP OpenURL(BSTR url, BSTR* result) override;
    STDMETHODIMP GetErr(VARIANT* code, BSTR* result) override;
    STDMETHODIMP StripNull(BSTR item, BSTR* result) override;

    // IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override;

    // IConnectionPointContainer
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
    STDMETHODIMP FindConnectionPoint(REFIID riid, IConnectionPoint** point) override;

private:
    void FileProgress(float Percent, const std::string& status) override;
    void StatusChange(std::string& status, int32_t code) override;

    WindowsDesktop desktop_;
    clsFTPEventPoint events_;
    corvan::clsFTP ftp_;
};

HRESULT CreateclsFTP(REFIID riid, void** out);

}  // namespace corvan::com
