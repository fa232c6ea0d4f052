#include "transfer/transfer_texts.h"

#include <cstring>

#include "logging/trace_text.h"

namespace corvan {

namespace {

const char* FixedErrorText(int32_t code) {
    switch (code) {
    case 12001: return "No more handles could be generated at this time";
    case 12002: return "The request has timed out.";
    case 12004: return "An internal error has occurred.";
    case 12005: return "URL is invalid.";
    case 12006: return "URL scheme could not be recognized, or is not supported.";
    case 12007: return "Server name could not be resolved.";
    case 12008: return "Requested protocal could not be located.";
    case 12009: return "Request to InternetQueryOption or InternetSetOption specified an invalid option value.";
    case 12010:
        return "Length of an option supplied to InternetQueryOption or InternetSetOption is incorrect for the type "
               "of option specified.";
    case 12011: return "Request option can not be set, only queried. ";
    case 12012: return "Win32 Internet support is being shutdown or unloaded.";
    case 12013:
        return "Request to connect and login to an FTP server could not be completed because the supplied user "
               "name is incorrect.";
    case 12014:
        return "Request to connect and login to an FTP server could not"
               " be completed because the supplied password is incorrect. ";
    case 12015: return "Request to connect to and login to an FTP server failed.";
    case 12016: return "Requested operation is invalid. ";
    case 12017:
        return "Operation was canceled, usually because the handle on"
               " which the request was operating was closed before the"
               " operation completed.";
    case 12018: return "Type of handle supplied is incorrect for this operation.";
    case 12019:
        return "Requested operation can not be carried out because the"
               " handle supplied is not in the correct state.";
    case 12020: return "Request can not be made via a proxy.";
    case 12021: return "Required registry value could not be located. ";
    case 12022:
        return "Required registry value was located but is an incorrect"
               " type or has an invalid value.";
    case 12023: return "Direct network access cannot be made at this time. ";
    case 12024:
        return "Asynchronous request could not be made because a zero"
               " context value was supplied.";
    case 12025:
        return "Asynchronous request could not be made because a"
               " callback function has not been set.";
    case 12026:
        return "Required operation could not be completed because"
               " one or more requests are pending.";
    case 12027: return "Format of the request is invalid.";
    case 12028: return "Requested item could not be located.";
    case 12029: return "Attempt to connect to the server failed.";
    case 12030: return "Connection with the server has been terminated.";
    case 12031: return "Connection with the server has been reset.";
    case 12036: return "Request failed because the handle already exists.";
    default: return "Error details not available.";
    }
}

// The first four bytes of the information as a signed 32-bit number; a
// shorter information is read as far as it goes.
int32_t InfoNumber(const void* info, uint32_t length) {
    unsigned char bytes[4] = {0, 0, 0, 0};
    if (info) std::memcpy(bytes, info, length < 4 ? length : 4);
    uint32_t bits = uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
    return static_cast<int32_t>(bits);
}

std::string InfoText(const void* info, uint32_t length) {
    if (!info || length == 0) return "";
    return StripNull(std::string(static_cast<const char*>(info), length));
}

const char* StateText(int32_t state) {
    switch (state) {
    case 1: return "Connected state moved between secure and nonsecure site";
    case 2: return "Disconnected from network.";
    case 16: return "Disconnected by user request.";
    case 40: return "The request requires user input to complete.";
    case 256: return "No network requests are being made (by Wininet).";
    case 512: return "Network requests are being made (by Wininet).";
    default: return "";
    }
}

// The dormant branches report progress as a whole number: 1 once the bytes
// sent have reached the announced size, 0 before.
StatusNotice TransferModeNotice(const TransferCounters& counters, double currentFileSize) {
    StatusNotice notice;
    notice.text = "Uploading   " + NumberText(counters.pub_BytesSent) + " of " + NumberText(currentFileSize);
    notice.progress = counters.pub_BytesSent >= currentFileSize ? 1.0f : 0.0f;
    return notice;
}

}  // namespace

std::string StripNull(const std::string& item) {
    size_t nul = item.find('\0');
    return nul == std::string::npos ? item : item.substr(0, nul);
}

std::string ErrorTextForCode(int32_t code, const std::function<std::optional<std::string>()>& lastResponse) {
    if (code == 12003) {
        std::optional<std::string> response = lastResponse ? lastResponse() : std::nullopt;
        return response ? StripNull(*response) : "Extended error returned from server.";
    }
    return FixedErrorText(code);
}

std::string ProgressText(double total, double size) {
    return NumberText(total) + " bytes of " + NumberText(size) + " bytes read ";
}

StatusNotice DescribeStatus(TransferCounters& counters, double currentFileSize, uint32_t dwInternetStatus,
                            const void* info, uint32_t infoLength) {
    StatusNotice notice;
    if (dwInternetStatus > 200) return notice;
    const int32_t n = InfoNumber(info, infoLength);
    switch (dwInternetStatus) {
    case 0: notice.text = "Looking up the IP address for " + InfoText(info, infoLength); break;
    case 1: notice.text = "Name resolved " + InfoText(info, infoLength); break;
    case 10: notice.text = "HTTP request redirected to " + InfoText(info, infoLength); break;
    case 20: notice.text = "Connecting to server..." + InfoText(info, infoLength); break;
    case 21: notice.text = "Connected to " + InfoText(info, infoLength); break;
    case 30:
        counters.pub_BytesSent += n;
        if (counters.transferMode == 5) return TransferModeNotice(counters, currentFileSize);
        notice.text = "Sending request: " + std::to_string(n) + " bytes";
        break;
    case 31:
        counters.pub_BytesSent += n;
        notice.text = "Request sent: " + std::to_string(n) + " bytes";
        break;
    case 41:
        counters.pub_BytesRecieved += static_cast<float>(n);
        if (counters.transferMode == 3) return TransferModeNotice(counters, currentFileSize);
        // The old text compared the empty status with the response text
        // instead of assigning it; the help desk knows the word, so it stays.
        notice.text = "False";
        break;
    case 50: notice.text = "Closing connection"; break;
    case 51: notice.text = "Connection closed"; break;
    case 60: notice.text = "Handle created: " + std::to_string(n); break;
    case 70:
        if (counters.transferMode == 3) {
            notice.text = "Download complete. Handle closed";
            counters.transferMode = 0;
        } else if (counters.transferMode == 5) {
            notice.text = "Upload complete. Handle closed";
            counters.transferMode = 0;
        } else {
            notice.text = "Handle closed";
        }
        break;
    case 80: notice.text = "Detecting proxy"; break;
    case 200: notice.text = StateText(n); break;
    default: break;
    }
    return notice;
}

}  // namespace corvan
