#pragma once
#include <deque>
#include <string>

#include <windows.h>
#include <wininet.h>

#include "common/desktop.h"
#include "common/unique_any.h"
#include "transfer/internet_handle.h"
#include "transfer/retry_policy.h"

namespace corvan {

// One request for a URL, made on a thread of its own. WinINet's calls block
// until the server answers or a time-out ends them; the page's thread waits
// for the answer and for each block of the body while letting window
// messages run, so a silent server never freezes the page.
//
// http and https go through a connection of their own whose time-outs are set
// from the policy (WinINet does not hand a session's time-outs down to the
// connection that InternetOpenUrl makes); other schemes go through
// InternetOpenUrl.
class DownloadAttempt {
public:
    DownloadAttempt(HINTERNET session, const std::string& url, const std::string& headers,
                    const TransferPolicy& policy, Desktop* desktop);
    // Stops the thread and waits for it; its calls end within the time-outs.
    ~DownloadAttempt();
    DownloadAttempt(const DownloadAttempt&) = delete;
    DownloadAttempt& operator=(const DownloadAttempt&) = delete;

    // The request once the server answered; null when there was no answer
    // (Error() says why).
    HINTERNET WaitForAnswer();

    // The body, in blocks of `blockSize` bytes exactly as BlockReader hands
    // them out, the empty one at the end included. False when the transfer
    // broke off (Error() says why).
    bool NextBlock(char* block, DWORD& delivered);

    DWORD Error() const { return error_; }

    static constexpr DWORD kBlockSize = 1024;

private:
    struct Block {
        char bytes[kBlockSize];
        DWORD delivered;
        bool failed;
    };

    static DWORD WINAPI ThreadEntry(void* self);
    void Run();
    HINTERNET Open();
    void ReadBody();
    // Waits, letting messages run, until `ready` holds (checked under the lock).
    template <typename Ready>
    void WaitUntil(Ready&& ready);
    void WakePage();  // under the lock

    HINTERNET session_;
    std::string url_, headers_;
    TransferPolicy policy_;
    Desktop* desktop_;

    unique_hinternet connection_, request_;
    CRITICAL_SECTION lock_;
    UniqueAny<HANDLE, &CloseHandle> pageWake_, threadWake_, thread_;
    bool answered_ = false, readBody_ = false, stop_ = false;
    bool pageWaiting_ = false, threadWaiting_ = false;
    std::deque<Block> blocks_;
    DWORD error_ = 0;
};

}  // namespace corvan
