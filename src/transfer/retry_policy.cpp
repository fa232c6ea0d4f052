#include "transfer/retry_policy.h"

#include <cctype>

namespace corvan {

TransferPolicy& ProcessTransferPolicy() {
    static TransferPolicy policy;
    return policy;
}

uint32_t RetryDelayMs(const TransferPolicy& policy, int attempt) {
    uint64_t delay = policy.firstRetryDelayMs;
    for (int n = 2; n < attempt && delay < policy.retryDelayCapMs; ++n) delay *= 2;
    return static_cast<uint32_t>(delay < policy.retryDelayCapMs ? delay : policy.retryDelayCapMs);
}

bool IsTransientError(uint32_t code) {
    switch (code) {
        case 12002:  // ERROR_INTERNET_TIMEOUT
        case 12029:  // ERROR_INTERNET_CANNOT_CONNECT
        case 12030:  // ERROR_INTERNET_CONNECTION_ABORTED
        case 12031:  // ERROR_INTERNET_CONNECTION_RESET
        case 12152:  // ERROR_HTTP_INVALID_SERVER_RESPONSE: the answer broke off
        case 10053:  // WSAECONNABORTED
        case 10054:  // WSAECONNRESET
        case 10060:  // WSAETIMEDOUT
        case 10061:  // WSAECONNREFUSED
            return true;
        default:
            return false;
    }
}

bool IsTransientStatus(uint32_t httpStatus) { return httpStatus >= 500 && httpStatus <= 599; }

std::optional<uint64_t> ContentRangeStart(const std::string& contentRange) {
    const std::string unit = "bytes ";
    if (contentRange.compare(0, unit.size(), unit) != 0) return std::nullopt;
    size_t at = unit.size();
    if (at >= contentRange.size() || !std::isdigit(static_cast<unsigned char>(contentRange[at]))) return std::nullopt;
    uint64_t first = 0;
    for (; at < contentRange.size() && std::isdigit(static_cast<unsigned char>(contentRange[at])); ++at) {
        if (first > (UINT64_MAX - 9) / 10) return std::nullopt;
        first = first * 10 + static_cast<uint64_t>(contentRange[at] - '0');
    }
    if (at >= contentRange.size() || contentRange[at] != '-') return std::nullopt;
    return first;
}

std::string RangeRequestHeaders(uint64_t from, const std::string& validator) {
    std::string headers = "Range: bytes=" + std::to_string(from) + "-\r\n";
    if (!validator.empty()) headers += "If-Range: " + validator + "\r\n";
    return headers;
}

}  // namespace corvan
