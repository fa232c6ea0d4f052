#pragma once
#include <string>

#include <windows.h>
#include <ole2.h>
#include <ocidl.h>

#include "control/CorvanInstaller_h.h"
#include "control/com_ptr.h"
#include "host/console_output.h"
#include "host/host_options.h"

namespace corvan::host {

using com::ComPtr;

// Holds the control the way a page does: created by ProgID (or from the .ocx
// beside this program), its event sink advised, its questions answered and,
// on request, its trace received. Everything runs on this one thread: the
// control lets messages run during long work, which is when the host's timer,
// hook and viewer window get their turn.
class PageHost : public IDispatch {
public:
    PageHost(const HostOptions& options, ConsoleOutput& out);
    ~PageHost();
    PageHost(const PageHost&) = delete;
    PageHost& operator=(const PageHost&) = delete;

    // Empty on success, otherwise why the control could not be created.
    std::string CreateControl();

    // Sets the page's properties and runs; answers the exit code.
    int Execute();

    int Errors() const { return errors_; }

    // The event sink (__ManageClient).
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }   // lives on the host's stack
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) override;

    // Called from the question hook and the trace viewer window.
    void AnswerQuestion(HWND dialog);
    void TraceLine(const std::string& text);
    void ShowProgress();

private:
    std::string CreateRegistered();
    std::string CreateFromBesideProgram();
    void Advise();
    void Unadvise();

    const HostOptions& options_;
    ConsoleOutput& out_;
    ComPtr<_ManageClient> control_;
    ComPtr<IManageClientProgress> progress_;
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
    HMODULE localServer_ = nullptr;
    HHOOK questionHook_ = nullptr;
    HWND traceViewer_ = nullptr;
    UINT_PTR timer_ = 0;
    int errors_ = 0;
};

}  // namespace corvan::host
