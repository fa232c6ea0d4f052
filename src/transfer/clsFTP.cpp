#include "transfer/clsFTP.h"

#include "common/conversions.h"
#include "transfer/block_reader.h"
#include "transfer/part_file.h"

namespace corvan {

namespace {

// The fixed block of a transfer: the first block is always counted and
// written whole, NUL-padded, whatever the server sent.
constexpr DWORD kBlock = 1024;
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

// Reads the body after its first block, block by block, handing each block
// to `take`. False when the body broke off: a read failed, or fewer bytes
// came than the server announced.
template <typename Take>
bool ReadRest(BlockReader& reader, char* block, DWORD firstDelivered, double announced, Take&& take) {
    double received = firstDelivered;
    DWORD last = firstDelivered;
    while (last > 0) {
        if (!reader.Next(block, last)) return false;
        received += last;
        if (!take(last)) return false;
    }
    return announced <= 0 || received >= announced;
}

}  // namespace

clsFTP::clsFTP(Desktop* desktop, clsFTPEvents* listener)
    : desktop_(desktop),
      listener_(listener),
      session_(InternetOpenA(kTransferAgent, INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, kDontCache)) {}

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

unique_hinternet clsFTP::OpenRequest(const std::string& URL) {
    if (!session_) return {};
    unique_hinternet request(InternetOpenUrlA(session_.Get(), URL.c_str(), nullptr, 0, kDontCache, 0));
    if (!request) return {};
    // WinINet hands over an error page like any other body; a file that the
    // server does not have must not become a file on the PC.
    DWORD status = 0, size = sizeof status;
    if (HttpQueryInfoA(request.Get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr) &&
        status >= 400)
        return {};
    return request;
}

void clsFTP::RaiseFileProgress(float percent, const std::string& status) {
    if (listener_) listener_->FileProgress(percent, status);
}

void clsFTP::ReportBlock(double total) {
    if (currentFileSize_ != 0) RaiseFileProgress(static_cast<float>(total / currentFileSize_), ProgressText(total, currentFileSize_));
}

void clsFTP::LetMessagesRun() {
    if (desktop_) desktop_->DoEventsAfterBlock();
}

bool clsFTP::DownloadFile(const std::string& URL, const std::string& Destination) {
    stillExecuting_ = true;
    struct Finished {
        bool& flag;
        ~Finished() { flag = false; }
    } finished{stillExecuting_};

    currentFileSize_ = 0;
    unique_hinternet request = OpenRequest(URL);
    if (!request) return false;
    currentFileSize_ = AnnouncedLength(request.Get());

    char block[kBlock] = {};
    DWORD delivered = 0;
    BlockReader reader(request.Get(), kBlock);
    if (!reader.Next(block, delivered)) return false;
    double total = kBlock;
    ReportBlock(total);

    PartFile file;
    if (!file.Open(Destination) || !file.Write(block, kBlock)) return false;
    bool whole = ReadRest(reader, block, delivered, currentFileSize_, [&](DWORD count) {
        if (!file.Write(block, count)) return false;
        total += count;
        ReportBlock(total);
        LetMessagesRun();
        return true;
    });
    if (!whole || !file.Commit()) return false;
    RaiseFileProgress(1.0f, ProgressText(total, currentFileSize_));
    return true;
}

std::string clsFTP::OpenURL(const std::string& URL) {
    std::string text;
    double total = 0;
    currentFileSize_ = 0;
    unique_hinternet request = OpenRequest(URL);
    if (request) {
        currentFileSize_ = AnnouncedLength(request.Get());
        char block[kBlock] = {};
        DWORD delivered = 0;
        BlockReader reader(request.Get(), kBlock);
        if (reader.Next(block, delivered)) {
            total = kBlock;
            ReportBlock(total);
            text.assign(block, kBlock);
            bool whole = ReadRest(reader, block, delivered, currentFileSize_, [&](DWORD count) {
                text.append(block, count);
                total += count;
                ReportBlock(total);
                LetMessagesRun();
                return true;
            });
            // Half a packing list is worse than none: the caller treats an
            // empty text as a failed fetch.
            if (!whole) text.clear();
        }
    }
    RaiseFileProgress(1.0f, ProgressText(total, currentFileSize_));
    return text;
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
