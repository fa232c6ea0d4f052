#include "transfer/download_attempt.h"

#include <cstring>

#include "transfer/block_reader.h"
#include "transfer/pumping_wait.h"

namespace corvan {

namespace {

constexpr DWORD kDontCache = 0x04000000;
// Blocks read ahead of the page: enough to keep a fast line busy while the
// page writes and reports, little enough to hold in memory.
constexpr size_t kBlocksAhead = 256;

void SetTimeouts(HINTERNET handle, const TransferPolicy& policy) {
    const struct {
        DWORD option, value;
    } timeouts[] = {{INTERNET_OPTION_CONNECT_TIMEOUT, policy.connectTimeoutMs},
                    {INTERNET_OPTION_SEND_TIMEOUT, policy.sendTimeoutMs},
                    {INTERNET_OPTION_RECEIVE_TIMEOUT, policy.receiveTimeoutMs}};
    for (auto timeout : timeouts) {
        DWORD value = timeout.value;
        InternetSetOptionA(handle, timeout.option, &value, sizeof value);
    }
}

class Lock {
public:
    explicit Lock(CRITICAL_SECTION& section) : section_(section) { EnterCriticalSection(&section_); }
    ~Lock() { LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION& section_;
};

}  // namespace

DownloadAttempt::DownloadAttempt(HINTERNET session, const std::string& url, const std::string& headers,
                                 const TransferPolicy& policy, Desktop* desktop)
    : session_(session), url_(url), headers_(headers), policy_(policy), desktop_(desktop) {
    InitializeCriticalSection(&lock_);
    pageWake_.Reset(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    threadWake_.Reset(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    if (pageWake_ && threadWake_) thread_.Reset(CreateThread(nullptr, 0, &ThreadEntry, this, 0, nullptr));
    if (!thread_) {
        // No thread to be had: ask on this one, as a plain blocking call.
        HINTERNET request = Open();
        answered_ = true;
        if (request) ReadBody();
    }
}

DownloadAttempt::~DownloadAttempt() {
    if (thread_) {
        {
            Lock lock(lock_);
            stop_ = true;
        }
        SetEvent(threadWake_.Get());
        WaitLettingMessagesRun(desktop_, thread_.Get(), INFINITE);
    }
    request_.Reset();
    connection_.Reset();
    DeleteCriticalSection(&lock_);
}

DWORD WINAPI DownloadAttempt::ThreadEntry(void* self) {
    static_cast<DownloadAttempt*>(self)->Run();
    return 0;
}

void DownloadAttempt::Run() {
    HINTERNET request = Open();
    {
        Lock lock(lock_);
        answered_ = true;
        WakePage();
    }
    if (!request) return;
    // The page looks at the answer first: an error page is not read.
    for (;;) {
        {
            Lock lock(lock_);
            if (stop_) return;
            if (readBody_) break;
            threadWaiting_ = true;
        }
        WaitForSingleObject(threadWake_.Get(), INFINITE);
    }
    ReadBody();
}

HINTERNET DownloadAttempt::Open() {
    char host[INTERNET_MAX_HOST_NAME_LENGTH + 1] = {}, user[256] = {}, password[256] = {};
    std::string path(url_.size() + 1, '\0'), query(url_.size() + 1, '\0');
    URL_COMPONENTSA parts{};
    parts.dwStructSize = sizeof parts;
    parts.lpszHostName = host;
    parts.dwHostNameLength = sizeof host;
    parts.lpszUserName = user;
    parts.dwUserNameLength = sizeof user;
    parts.lpszPassword = password;
    parts.dwPasswordLength = sizeof password;
    parts.lpszUrlPath = path.data();
    parts.dwUrlPathLength = static_cast<DWORD>(path.size());
    parts.lpszExtraInfo = query.data();
    parts.dwExtraInfoLength = static_cast<DWORD>(query.size());
    const bool web = InternetCrackUrlA(url_.c_str(), 0, 0, &parts) &&
                     (parts.nScheme == INTERNET_SCHEME_HTTP || parts.nScheme == INTERNET_SCHEME_HTTPS);
    const char* extra = headers_.empty() ? nullptr : headers_.c_str();
    const DWORD extraLength = headers_.empty() ? 0 : static_cast<DWORD>(headers_.size());
    SetLastError(0);
    if (!web) {
        request_.Reset(InternetOpenUrlA(session_, url_.c_str(), extra, extraLength, kDontCache, 0));
    } else {
        connection_.Reset(InternetConnectA(session_, host, parts.nPort, user[0] ? user : nullptr,
                                           password[0] ? password : nullptr, INTERNET_SERVICE_HTTP, 0, 0));
        if (connection_) {
            SetTimeouts(connection_.Get(), policy_);
            // The path goes with its query, as the URL gave it.
            path.resize(std::strlen(path.c_str()));
            path += query.c_str();
            const DWORD flags = kDontCache | INTERNET_FLAG_RELOAD |
                                (parts.nScheme == INTERNET_SCHEME_HTTPS ? INTERNET_FLAG_SECURE : 0);
            request_.Reset(HttpOpenRequestA(connection_.Get(), "GET", path.empty() ? "/" : path.c_str(), nullptr,
                                            nullptr, nullptr, flags, 0));
            if (request_) {
                SetTimeouts(request_.Get(), policy_);
                if (!HttpSendRequestA(request_.Get(), extra, extraLength, nullptr, 0)) {
                    const DWORD error = GetLastError();
                    request_.Reset();
                    SetLastError(error);
                }
            }
        }
    }
    if (!request_) {
        Lock lock(lock_);
        error_ = GetLastError();
        if (error_ == 0) error_ = ERROR_INTERNET_INTERNAL_ERROR;
    }
    return request_.Get();
}

void DownloadAttempt::ReadBody() {
    BlockReader reader(request_.Get(), kBlockSize);
    for (;;) {
        Block block;
        block.failed = !reader.Next(block.bytes, block.delivered);
        const DWORD error = block.failed ? GetLastError() : 0;
        Lock lock(lock_);
        while (thread_ && blocks_.size() >= kBlocksAhead && !stop_) {
            threadWaiting_ = true;
            LeaveCriticalSection(&lock_);
            WaitForSingleObject(threadWake_.Get(), INFINITE);
            EnterCriticalSection(&lock_);
        }
        if (stop_) return;
        if (block.failed) error_ = error ? error : ERROR_INTERNET_CONNECTION_ABORTED;
        blocks_.push_back(block);
        WakePage();
        if (block.failed || block.delivered == 0) return;
    }
}

void DownloadAttempt::WakePage() {
    if (!pageWaiting_) return;
    pageWaiting_ = false;
    SetEvent(pageWake_.Get());
}

template <typename Ready>
void DownloadAttempt::WaitUntil(Ready&& ready) {
    for (;;) {
        {
            Lock lock(lock_);
            if (ready()) return;
            pageWaiting_ = true;
        }
        WaitLettingMessagesRun(desktop_, pageWake_.Get(), INFINITE);
    }
}

HINTERNET DownloadAttempt::WaitForAnswer() {
    WaitUntil([this] { return answered_; });
    return request_.Get();
}

bool DownloadAttempt::NextBlock(char* block, DWORD& delivered) {
    delivered = 0;
    {
        Lock lock(lock_);
        if (!readBody_ && thread_) {
            readBody_ = true;
            if (threadWaiting_) {
                threadWaiting_ = false;
                SetEvent(threadWake_.Get());
            }
        }
    }
    WaitUntil([this] { return !blocks_.empty(); });
    Lock lock(lock_);
    const Block& next = blocks_.front();
    const bool ok = !next.failed;
    delivered = next.delivered;
    std::memcpy(block, next.bytes, next.delivered);
    // The last block, failed or empty, stays: asking again gives the same.
    if (ok && next.delivered > 0) blocks_.pop_front();
    if (threadWaiting_) {
        threadWaiting_ = false;
        SetEvent(threadWake_.Get());
    }
    return ok;
}

}  // namespace corvan
