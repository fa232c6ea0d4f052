#pragma once
#include <cstdint>
#include <string>

#include <windows.h>
#include <wininet.h>

#include "common/desktop.h"
#include "transfer/internet_handle.h"
#include "transfer/retry_policy.h"
#include "transfer/transfer_texts.h"

namespace corvan {

// What a session tells its owner.
class clsFTPEvents {
public:
    virtual ~clsFTPEvents() = default;
    virtual void FileProgress(float Percent, const std::string& status) = 0;
    // The handler may change the text.
    virtual void StatusChange(std::string& status, int32_t code) = 0;
};

// protocal takes WinINet's own service numbers: INTERNET_SERVICE_FTP (1),
// INTERNET_SERVICE_GOPHER (2), INTERNET_SERVICE_HTTP (3).

// One WinINet session: downloads a URL into a file or a text, block by
// block, with progress events, and words WinINet's numbers as text. Every
// wait for the server is bounded by the policy's time-outs and the page's
// messages run meanwhile; a download that fails for a passing reason is
// tried again (MAXTRIES attempts in all), a broken-off body continued where
// it stopped when the server takes range requests.
class clsFTP {
public:
    // `desktop` lets pending window messages run between blocks; without one
    // nothing is pumped.
    explicit clsFTP(Desktop* desktop = nullptr, clsFTPEvents* listener = nullptr);
    ~clsFTP();
    clsFTP(const clsFTP&) = delete;
    clsFTP& operator=(const clsFTP&) = delete;

    void SetListener(clsFTPEvents* listener) { listener_ = listener; }

    // Connects with the session's Port and protocal; true when WinINet gave
    // a connection handle.
    bool OpenFTP(const std::string& FTarget, const std::string& Login, const std::string& Password);

    int32_t Port();
    void Port(int32_t value) { port_ = value; }
    int32_t protocal() const { return protocal_; }
    void protocal(int32_t value) { protocal_ = value; }
    const std::string& Login() const { return login_; }
    void Login(const std::string& value) { login_ = value; }
    const std::string& Password() const { return password_; }
    void Password(const std::string& value) { password_ = value; }
    // The connection handle of the last OpenFTP as the 32-bit value
    // scripts see; 0 before.
    int32_t InternetHandle() const;
    bool StillExecuting() const { return stillExecuting_; }
    // Open fields of the session: a host may reset them between transfers.
    double dwCurrentFileSize() const { return currentFileSize_; }
    void dwCurrentFileSize(double value) { currentFileSize_ = value; }
    double pub_BytesSent() const { return counters_.pub_BytesSent; }
    void pub_BytesSent(double value) { counters_.pub_BytesSent = value; }
    double pub_BytesRecieved() const { return counters_.pub_BytesRecieved; }
    void pub_BytesRecieved(double value) { counters_.pub_BytesRecieved = value; }

    // Downloads URL into the file Destination. False, with the file as it
    // was, when the URL cannot be opened, the server answers with an HTTP
    // error, the file cannot be written or the body ends early, after the
    // retries such a failure allows.
    bool DownloadFile(const std::string& URL, const std::string& Destination);

    // Downloads URL into a text; empty when it cannot be had whole.
    std::string OpenURL(const std::string& URL);

    static double FtpFileGetFileSize(const WIN32_FIND_DATAA& WFD);
    static std::string StripNull(const std::string& item) { return corvan::StripNull(item); }

    // Sets lErrorCode to 0 and returns the text for the code it held.
    std::string GetErr(int32_t& lErrorCode);

    void FtpCallbackStatus(HINTERNET hInternet, DWORD_PTR dwContext, DWORD dwInternetStatus, LPVOID lpvStatusInfo,
                           DWORD dwStatusInfoLength);

    INTERNET_STATUS_CALLBACK SetStatusCallBack(HINTERNET hInternet, INTERNET_STATUS_CALLBACK lpfnInternetCallBack);
    void RemoveStatusCallback(HINTERNET hCallBack);

    // Where the bytes of a download go.
    struct Body {
        virtual ~Body() = default;
        // Forgets what was taken: the server sends the body again from its start.
        virtual bool Restart() = 0;
        virtual bool Take(const char* bytes, size_t count) = 0;
    };

private:
    void RaiseFileProgress(float percent, const std::string& status);
    void ReportBlock(double total);
    void LetMessagesRun();
    // What the attempts at one download have got so far.
    struct Fetched {
        uint64_t held = 0;       // bytes of the body taken, the first block's padding left out
        double total = 0;        // the running count the progress events report
        bool resumable = false;  // what is held may be continued by a range request
        std::string validator;   // the first answer's ETag or date, sent back with a range request
    };
    // Why an attempt failed, and whether another may fare better.
    struct AttemptFailure {
        bool transient = false;
        std::string reason;
    };

    // Fetches URL into `body` with its retries; `total` is the running count
    // the progress events report. False when the download failed for good.
    bool Fetch(const std::string& URL, Body& body, double& total);
    bool Attempt(const std::string& URL, Body& body, Fetched& fetched, AttemptFailure& failure);

    Desktop* desktop_;
    clsFTPEvents* listener_;
    TransferPolicy policy_;
    unique_hinternet session_;
    unique_hinternet connection_;  // closed before the session it belongs to
    int32_t protocal_ = 0;
    int32_t port_ = 0;
    std::string login_, password_;
    bool stillExecuting_ = false;
    double currentFileSize_ = 0;
    TransferCounters counters_;
};

// The agent name the installer server sees.
inline constexpr char kTransferAgent[] = "Corvan Connect Installer";

}  // namespace corvan
