#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace corvan {

// How long a transfer waits for the server, and how it tries again.
//
// Every wait for the server (a connection, a request sent, the answer, each
// piece of the body) ends after its time-out, so a server that accepts and
// then falls silent ends the attempt instead of freezing the page. A download
// that fails for a passing reason is tried again, MAXTRIES attempts in all,
// after a pause that doubles from `firstRetryDelayMs` up to `retryDelayCapMs`.
struct TransferPolicy {
    uint32_t connectTimeoutMs = 15000;
    uint32_t sendTimeoutMs = 15000;
    uint32_t receiveTimeoutMs = 15000;
    uint32_t firstRetryDelayMs = 250;
    uint32_t retryDelayCapMs = 2000;
};

// The policy every new session takes. Only test programs change it.
TransferPolicy& ProcessTransferPolicy();

// The pause before attempt `attempt` (2 for the first retry).
uint32_t RetryDelayMs(const TransferPolicy& policy, int attempt);

// A failure that another attempt may not meet: no connection, a connection
// reset, broken off or timed out (WinINet's codes and the socket codes Wine
// passes through), or a 5xx answer. A name that does not resolve, a refused
// certificate, a bad address, a 4xx answer or a local file that cannot be
// written are final.
bool IsTransientError(uint32_t code);
bool IsTransientStatus(uint32_t httpStatus);

// The first byte of a 206 answer's Content-Range ("bytes 500-999/1000").
std::optional<uint64_t> ContentRangeStart(const std::string& contentRange);

// The request headers that ask for a body from byte `from` on, provided it
// is still the body `validator` (the first answer's ETag or Last-Modified)
// names.
std::string RangeRequestHeaders(uint64_t from, const std::string& validator);

}  // namespace corvan
