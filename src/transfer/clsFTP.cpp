#include "transfer/clsFTP.h"

#include <algorithm>

#include "common/conversions.h"
#include "logging/write_log.h"
#include "settings/modCorvanInstaller_Global.h"
#include "transfer/download_attempt.h"
#include "transfer/part_file.h"
#include "transfer/pumping_wait.h"

namespace corvan {

namespace {

// The fixed block of a transfer: the first block is always counted and
// written whole, NUL-padded, whatever the server sent.
constexpr DWORD kBlock = DownloadAttempt::kBlockSize;
constexpr DWORD kDontCache = 0x04000000;

double AnnouncedLength(HINTERNET request) {
    char answer[kBlock] = {};
    DWORD size = sizeof answer;
    HttpQueryInfoA(request, HTTP_QUERY_CONTENT_LENGTH, answer, &size, nullptr);
    try {
        return LenientNumber(StripNull(std::string(answer, sizeof answer)));
    } catch (const std::exception&) {
        return 0;
    }
}

std::string Header(HINTERNET request, DWORD info) {
    char answer[1024] = {};
    DWORD size = sizeof answer - 1;
    if (!HttpQueryInfoA(request, info, answer, &size, nullptr)) return "";
    return StripNull(std::string(answer, size));
}

// 0 for an answer that is not HTTP's.
DWORD StatusOf(HINTERNET request) {
    DWORD status = 0, size = sizeof status;
    if (!HttpQueryInfoA(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr)) return 0;
    return status;
}

// The socket codes that Wine passes through, worded as WinINet's own.
std::string ReasonText(DWORD error) {
    int32_t code = static_cast<int32_t>(error);
    switch (error) {
        case 10053: code = 12030; break;
        case 10054: code = 12031; break;
        case 10060: code = 12002; break;
        case 10061: code = 12029; break;
    }
    return ErrorTextForCode(code, [] { return std::optional<std::string>(); });
}

// Failed and repeated downloads go to the install log; a log that cannot be
// written never fails the download.
void LogTransfer(const std::string& message) {
    try {
        WriteLog(message);
    } catch (...) {
    }
}

class FileBody : public clsFTP::Body {
public:
    explicit FileBody(const std::string& destination) : destination_(destination) {}
    bool Restart() override { return !opened_ || file_.Restart(); }
    bool Take(const char* bytes, size_t count) override {
        if (!opened_) opened_ = file_.Open(destination_);
        return opened_ && file_.Write(bytes, count);
    }
    bool Commit() { return opened_ && file_.Commit(); }

private:
    std::string destination_;
    PartFile file_;
    bool opened_ = false;
};

class TextBody : public clsFTP::Body {
public:
    bool Restart() override {
        text.clear();
        return true;
    }
    bool Take(const char* bytes, size_t count) override {
        text.append(bytes, count);
        return true;
    }
    std::string text;
};

}  // namespace

clsFTP::clsFTP(Desktop* desktop, clsFTPEvents* listener)
    : desktop_(desktop),
      listener_(listener),
      policy_(ProcessTransferPolicy()),
      session_(InternetOpenA(kTransferAgent, INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, kDontCache)) {
    // Handles made from the session take these over on Windows; Wine's do
    // not, so each download sets them again on its own connection.
    if (session_) {
        for (auto [option, value] : {std::pair{INTERNET_OPTION_CONNECT_TIMEOUT, policy_.connectTimeoutMs},
                                     std::pair{INTERNET_OPTION_SEND_TIMEOUT, policy_.sendTimeoutMs},
                                     std::pair{INTERNET_OPTION_RECEIVE_TIMEOUT, policy_.receiveTimeoutMs}}) {
            DWORD ms = value;
            InternetSetOptionA(session_.Get(), option, &ms, sizeof ms);
        }
    }
}

clsFTP::~clsFTP() = default;

bool clsFTP::OpenFTP(const std::string& FTarget, const std::string& Login, const std::string& Password) {
    connection_.Reset(InternetConnectA(session_.Get(), FTarget.c_str(), static_cast<INTERNET_PORT>(Port()),
                                       Login.c_str(), Password.c_str(), static_cast<DWORD>(protocal_), 0, 0));
    return connection_.Valid();
}

int32_t clsFTP::Port() {
    if (port_ == 0) port_ = 21;
    return port_;
}

int32_t clsFTP::InternetHandle() const {
    return static_cast<int32_t>(reinterpret_cast<intptr_t>(connection_.Get()));
}

void clsFTP::RaiseFileProgress(float percent, const std::string& status) {
    if (listener_) listener_->FileProgress(percent, status);
}

void clsFTP::ReportBlock(double total) {
    if (currentFileSize_ != 0) RaiseFileProgress(static_cast<float>(total / currentFileSize_), ProgressText(total, currentFileSize_));
}

void clsFTP::LetMessagesRun() {
    if (desktop_) desktop_->DoEvents();
}

// One attempt at URL: true when the body came whole. Otherwise `failure`
// says why, and whether another attempt may fare better; a body that cannot
// be written is final.
bool clsFTP::Attempt(const std::string& URL, Body& body, Fetched& fetched, AttemptFailure& failure) {
    const bool resuming = fetched.resumable && fetched.held > 0;
    DownloadAttempt request(session_.Get(), URL, resuming ? RangeRequestHeaders(fetched.held, fetched.validator) : "",
                            policy_, desktop_);
    HINTERNET answer = request.WaitForAnswer();
    if (!answer) {
        failure = {IsTransientError(request.Error()), ReasonText(request.Error())};
        return false;
    }
    const DWORD status = StatusOf(answer);
    if (status >= 400) {
        // WinINet hands over an error page like any other body; a file the
        // server does not have must not become a file on the PC.
        failure = {IsTransientStatus(status), "the server answered " + std::to_string(status)};
        return false;
    }
    const auto start = ContentRangeStart(Header(answer, HTTP_QUERY_CONTENT_RANGE));
    const bool continues = resuming && status == 206 && start && *start == fetched.held;
    if (resuming && status == 206 && !continues) {
        fetched.resumable = false;  // ask for the whole body next time
        failure = {true, "the server sent another part of the file"};
        return false;
    }
    auto unwritable = [&] {
        failure = {false, "the file could not be written"};
        return false;
    };
    char block[kBlock] = {};
    DWORD last = 1;  // a part goes on with what is held
    if (!continues) {
        // A whole body: the first answer, or a server that sends it all again.
        if ((fetched.held > 0 || fetched.total > 0) && !body.Restart()) return unwritable();
        fetched = {};
        currentFileSize_ = AnnouncedLength(answer);
        fetched.validator = Header(answer, HTTP_QUERY_ETAG);
        if (fetched.validator.empty()) fetched.validator = Header(answer, HTTP_QUERY_LAST_MODIFIED);
        fetched.resumable = status == 200 && Header(answer, HTTP_QUERY_ACCEPT_RANGES) != "none";
        if (!request.NextBlock(block, last)) {
            failure = {true, ReasonText(request.Error())};
            return false;
        }
        fetched.total = kBlock;
        ReportBlock(fetched.total);
        if (!body.Take(block, kBlock)) return unwritable();
        fetched.held = last;
        // Going on after a short first block would leave its padding inside the file.
        if (last < kBlock) fetched.resumable = false;
    }
    while (last > 0) {
        if (!request.NextBlock(block, last)) {
            failure = {true, ReasonText(request.Error())};
            return false;
        }
        if (!body.Take(block, last)) return unwritable();
        fetched.held += last;
        fetched.total += last;
        ReportBlock(fetched.total);
        LetMessagesRun();
    }
    if (currentFileSize_ <= 0 || static_cast<double>(fetched.held) >= currentFileSize_) return true;
    failure = {true, "the answer broke off after " + std::to_string(fetched.held) + " bytes"};
    return false;
}

bool clsFTP::Fetch(const std::string& URL, Body& body, double& total) {
    if (!session_) return false;
    const int tries = std::max<int>(1, modCorvanInstaller_Global().MaxTries);
    Fetched fetched;
    for (int attempt = 1;; ++attempt) {
        AttemptFailure failure;
        const bool whole = Attempt(URL, body, fetched, failure);
        total = fetched.total;
        if (whole) return true;
        if (!failure.transient || attempt >= tries) {
            // A failure at the first attempt is the caller's to word.
            if (attempt > 1)
                LogTransfer("Download of " + URL + " failed after " + std::to_string(attempt) +
                            " attempts: " + failure.reason);
            return false;
        }
        const DWORD pause = RetryDelayMs(policy_, attempt + 1);
        LogTransfer("Download of " + URL + " failed: " + failure.reason + "; trying again in " +
                    std::to_string(pause) + " ms, attempt " + std::to_string(attempt + 1) + " of " +
                    std::to_string(tries) +
                    (fetched.resumable && fetched.held > 0 ? ", from byte " + std::to_string(fetched.held) : ""));
        PauseLettingMessagesRun(desktop_, pause);
    }
}

bool clsFTP::DownloadFile(const std::string& URL, const std::string& Destination) {
    stillExecuting_ = true;
    struct Finished {
        bool& flag;
        ~Finished() { flag = false; }
    } finished{stillExecuting_};

    currentFileSize_ = 0;
    FileBody file(Destination);
    double total = 0;
    if (!Fetch(URL, file, total) || !file.Commit()) return false;
    RaiseFileProgress(1.0f, ProgressText(total, currentFileSize_));
    return true;
}

std::string clsFTP::OpenURL(const std::string& URL) {
    currentFileSize_ = 0;
    TextBody text;
    double total = 0;
    // Half a packing list is worse than none: the caller treats an empty
    // text as a failed fetch.
    if (!Fetch(URL, text, total)) text.text.clear();
    RaiseFileProgress(1.0f, ProgressText(total, currentFileSize_));
    return text.text;
}

double clsFTP::FtpFileGetFileSize(const WIN32_FIND_DATAA& WFD) {
    return static_cast<double>(static_cast<int32_t>(WFD.nFileSizeHigh)) * 4294967296.0 +
           static_cast<double>(static_cast<int32_t>(WFD.nFileSizeLow));
}

std::string clsFTP::GetErr(int32_t& lErrorCode) {
    const int32_t code = lErrorCode;
    lErrorCode = 0;
    return ErrorTextForCode(code, []() -> std::optional<std::string> {
        char response[260] = {};
        DWORD error = 0, length = sizeof response;
        if (!InternetGetLastResponseInfoA(&error, response, &length)) return std::nullopt;
        return std::string(response, sizeof response);
    });
}

void clsFTP::FtpCallbackStatus(HINTERNET, DWORD_PTR, DWORD dwInternetStatus, LPVOID lpvStatusInfo,
                               DWORD dwStatusInfoLength) {
    StatusNotice notice = DescribeStatus(counters_, currentFileSize_, dwInternetStatus, lpvStatusInfo, dwStatusInfoLength);
    if (notice.progress) RaiseFileProgress(*notice.progress, notice.text);
    if (listener_) listener_->StatusChange(notice.text, static_cast<int32_t>(dwInternetStatus));
}

INTERNET_STATUS_CALLBACK clsFTP::SetStatusCallBack(HINTERNET hInternet, INTERNET_STATUS_CALLBACK lpfnInternetCallBack) {
    return InternetSetStatusCallback(hInternet, lpfnInternetCallBack);
}

void clsFTP::RemoveStatusCallback(HINTERNET hCallBack) { InternetSetStatusCallback(hCallBack, nullptr); }

}  // namespace corvan
