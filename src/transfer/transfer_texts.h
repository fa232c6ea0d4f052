#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace corvan {

// The text up to its first NUL; the whole text when it holds none.
std::string StripNull(const std::string& item);

// The English text for a WinINet error code. `lastResponse` is asked only
// for 12003, where the text is the server's own last answer; it gives
// nothing when the answer cannot be had.
std::string ErrorTextForCode(int32_t code, const std::function<std::optional<std::string>()>& lastResponse);

// What the status path keeps between notifications.
struct TransferCounters {
    double pub_BytesSent = 0;
    double pub_BytesRecieved = 0;
    // 3 download, 5 upload; nothing sets it, so those branches lie dormant.
    int32_t transferMode = 0;
};

struct StatusNotice {
    std::string text;
    // Set only by the dormant upload/download branches.
    std::optional<float> progress;
};

// Builds the status text of one notification and updates the counters.
// `info` holds `infoLength` bytes (may be null when the length is 0).
StatusNotice DescribeStatus(TransferCounters& counters, double currentFileSize, uint32_t dwInternetStatus,
                            const void* info, uint32_t infoLength);

// The progress text of a download: "<total> bytes of <size> bytes read ".
std::string ProgressText(double total, double size);

}  // namespace corvan
