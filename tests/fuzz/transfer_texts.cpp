// The status texts of the transfer session, for any notification code and
// status information of any length (none, fewer than four bytes, NULs
// inside, no NUL at all): the text takes the information only up to its
// first NUL, the counters move by the first four bytes read as far as they
// go, and codes above 200 say nothing and change nothing.
#include <cmath>
#include <cstring>
#include <map>
#include <optional>
#include <string>

#include "fuzz_check.h"
#include "transfer/transfer_texts.h"

namespace {

// NaN never equals itself; the counters compare as bit-for-bit values.
bool Same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace corvan;
    fuzz::Input input(data, size);
    const uint32_t raw = input.Number<uint32_t>();
    const uint32_t code = raw & 0x80000000u ? raw : raw % 320;
    const uint8_t choice = input.Byte();
    static const int32_t kModes[] = {0, 3, 5, 0};
    TransferCounters counters;
    counters.transferMode = kModes[choice & 3];
    counters.pub_BytesSent = input.Number<float>();
    counters.pub_BytesRecieved = input.Number<float>();
    const double fileSize = input.Number<double>();
    const bool noPointer = choice & 4;
    // The information is the rest of the input, which ends its block.
    const uint32_t length = static_cast<uint32_t>(input.Remaining());
    const char* info = noPointer ? nullptr : reinterpret_cast<const char*>(data + size - length);
    const std::string rest = input.Rest();

    const TransferCounters before = counters;
    const StatusNotice notice = DescribeStatus(counters, fileSize, code, info, length);

    const std::string infoText = info ? StripNull(rest) : "";
    FUZZ_CHECK(infoText.find('\0') == std::string::npos && rest.compare(0, infoText.size(), infoText) == 0);
    unsigned char four[4] = {0, 0, 0, 0};
    if (info) std::memcpy(four, info, length < 4 ? length : 4);
    int32_t n;
    std::memcpy(&n, four, 4);  // little-endian, as on the PC

    const bool upload = code == 30 && before.transferMode == 5;
    const bool download = code == 41 && before.transferMode == 3;
    FUZZ_CHECK(notice.progress.has_value() == (upload || download));
    if (notice.progress) FUZZ_CHECK(*notice.progress == 0.0f || *notice.progress == 1.0f);

    if (code > 200) FUZZ_CHECK(notice.text.empty());
    const double sent = code == 30 || code == 31 ? before.pub_BytesSent + n : before.pub_BytesSent;
    const double received = code == 41 ? before.pub_BytesRecieved + static_cast<float>(n) : before.pub_BytesRecieved;
    FUZZ_CHECK(Same(counters.pub_BytesSent, sent) && Same(counters.pub_BytesRecieved, received));
    const bool finished = code == 70 && (before.transferMode == 3 || before.transferMode == 5);
    FUZZ_CHECK(counters.transferMode == (finished ? 0 : before.transferMode));

    // Upload and download progress, or the code's own text.
    const std::map<uint32_t, std::string> texts = {
        {0, "Looking up the IP address for " + infoText}, {1, "Name resolved " + infoText},
        {10, "HTTP request redirected to " + infoText},   {20, "Connecting to server..." + infoText},
        {21, "Connected to " + infoText},                 {30, "Sending request: " + std::to_string(n) + " bytes"},
        {31, "Request sent: " + std::to_string(n) + " bytes"}, {41, "False"}};
    if (upload || download) FUZZ_CHECK(notice.text.rfind("Uploading   ", 0) == 0);
    else if (texts.count(code)) FUZZ_CHECK(notice.text == texts.at(code));

    // The error texts: 12003 is the server's own answer up to its NUL.
    const int32_t errorCode = 12000 + static_cast<int32_t>(raw % 40);
    const std::string error = ErrorTextForCode(errorCode, [&]() -> std::optional<std::string> {
        if (noPointer) return std::nullopt;
        return rest;
    });
    if (errorCode == 12003) FUZZ_CHECK(error == (noPointer ? "Extended error returned from server." : infoText));
    else FUZZ_CHECK(!error.empty());

    const std::string progress = ProgressText(before.pub_BytesSent, fileSize);
    FUZZ_CHECK(progress.find(" bytes of ") != std::string::npos && progress.back() == ' ');
    return 0;
}
