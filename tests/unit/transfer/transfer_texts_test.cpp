#include <gtest/gtest.h>

#include <map>

#include "transfer/retry_policy.h"
#include "transfer/transfer_texts.h"

using namespace corvan;

namespace {

std::string Err(int32_t code) {
    const std::string answer("550 No such file\0garbage", 24);
    return ErrorTextForCode(code, [&] { return std::optional<std::string>(answer); });
}

// Information that WinINet gives as a number: its four bytes.
std::string Number(int32_t n) { return std::string(reinterpret_cast<const char*>(&n), sizeof n); }

StatusNotice Describe(TransferCounters& counters, uint32_t code, const std::string& info = "", double size = 0) {
    return DescribeStatus(counters, size, code, info.data(), static_cast<uint32_t>(info.size()));
}

}  // namespace

TEST(TransferTexts, EveryErrorCodeFrom12000To12037) {
    const std::map<int32_t, std::string> expected = {
        {12001, "No more handles could be generated at this time"},
        {12002, "The request has timed out."},
        {12004, "An internal error has occurred."},
        {12005, "URL is invalid."},
        {12006, "URL scheme could not be recognized, or is not supported."},
        {12007, "Server name could not be resolved."},
        {12008, "Requested protocal could not be located."},
        {12009, "Request to InternetQueryOption or InternetSetOption specified an invalid option value."},
        {12010, "Length of an option supplied to InternetQueryOption or InternetSetOption is incorrect for the type of option specified."},
        {12011, "Request option can not be set, only queried. "},
        {12012, "Win32 Internet support is being shutdown or unloaded."},
        {12013, "Request to connect and login to an FTP server could not be completed because the supplied user name is incorrect."},
        {12014, "Request to connect and login to an FTP server could not be completed because the supplied password is incorrect. "},
        {12015, "Request to connect to and login to an FTP server failed."},
        {12016, "Requested operation is invalid. "},
        {12017, "Operation was canceled, usually because the handle on which the request was operating was closed before the operation completed."},
        {12018, "Type of handle supplied is incorrect for this operation."},
        {12019, "Requested operation can not be carried out because the handle supplied is not in the correct state."},
        {12020, "Request can not be made via a proxy."},
        {12021, "Required registry value could not be located. "},
        {12022, "Required registry value was located but is an incorrect type or has an invalid value."},
        {12023, "Direct network access cannot be made at this time. "},
        {12024, "Asynchronous request could not be made because a zero context value was supplied."},
        {12025, "Asynchronous request could not be made because a callback function has not been set."},
        {12026, "Required operation could not be completed because one or more requests are pending."},
        {12027, "Format of the request is invalid."},
        {12028, "Requested item could not be located."},
        {12029, "Attempt to connect to the server failed."},
        {12030, "Connection with the server has been terminated."},
        {12031, "Connection with the server has been reset."},
        {12036, "Request failed because the handle already exists."},
    };
    for (int32_t code = 12000; code <= 12037; ++code) {
        if (code == 12003) continue;
        auto it = expected.find(code);
        EXPECT_EQ(Err(code), it == expected.end() ? "Error details not available." : it->second) << code;
    }
    EXPECT_EQ(Err(0), "Error details not available.");
    EXPECT_EQ(Err(-1), "Error details not available.");

    // 12003 is the server's own answer, cut at its first NUL, or a fixed
    // sentence when it cannot be had.
    EXPECT_EQ(Err(12003), "550 No such file");
    EXPECT_EQ(ErrorTextForCode(12003, [] { return std::optional<std::string>(); }),
              "Extended error returned from server.");
}

TEST(TransferTexts, StatusTextsAndCounters) {
    TransferCounters c;
    const struct { uint32_t code; std::string info; const char* text; } texts[] = {
        {0, std::string("host.example\0junk", 17), "Looking up the IP address for host.example"},
        {0, "", "Looking up the IP address for "},
        {1, "127.0.0.1", "Name resolved 127.0.0.1"},
        {10, "https://b/", "HTTP request redirected to https://b/"},
        {20, "10.0.0.1", "Connecting to server...10.0.0.1"},
        {21, "10.0.0.1", "Connected to 10.0.0.1"},
        {30, Number(100), "Sending request: 100 bytes"},
        {31, Number(-5), "Request sent: -5 bytes"},
        {41, Number(512), "False"},
        {50, "", "Closing connection"},
        {51, "", "Connection closed"},
        {60, Number(7), "Handle created: 7"},
        {70, "", "Handle closed"},
        {80, "", "Detecting proxy"},
        {200, Number(40), "The request requires user input to complete."},
        {200, Number(1), "Connected state moved between secure and nonsecure site"},
        {200, Number(512), "Network requests are being made (by Wininet)."},
        {200, Number(64), ""},
        {300, Number(1), ""},
        {42, Number(1), ""},
    };
    for (const auto& t : texts) {
        StatusNotice notice = Describe(c, t.code, t.info);
        EXPECT_EQ(notice.text, t.text) << t.code;
        EXPECT_FALSE(notice.progress) << t.code;
    }
    EXPECT_DOUBLE_EQ(c.pub_BytesSent, 95);
    EXPECT_DOUBLE_EQ(c.pub_BytesRecieved, 512);
    // Added as a single-precision number.
    Describe(c, 41, Number(16777217));
    EXPECT_DOUBLE_EQ(c.pub_BytesRecieved, 512 + 16777216.0);

    EXPECT_EQ(StripNull(std::string("abc\0def", 7)), "abc");
    EXPECT_EQ(ProgressText(1024, 300), "1024 bytes of 300 bytes read ");
    EXPECT_EQ(ProgressText(67108864, 0), "67108864 bytes of 0 bytes read ");
}

TEST(TransferTexts, DormantTransferModes) {
    TransferCounters c;
    c.transferMode = 5;
    StatusNotice upload = Describe(c, 30, Number(300), 1000);
    EXPECT_EQ(upload.text, "Uploading   300 of 1000");
    ASSERT_TRUE(upload.progress);
    EXPECT_EQ(*upload.progress, 0.0f);
    upload = Describe(c, 30, Number(700), 1000);
    EXPECT_EQ(*upload.progress, 1.0f);
    EXPECT_EQ(Describe(c, 70, {}).text, "Upload complete. Handle closed");
    EXPECT_EQ(c.transferMode, 0);

    c.transferMode = 3;
    EXPECT_EQ(Describe(c, 41, Number(10), 1000).text, "Uploading   1000 of 1000");
    EXPECT_DOUBLE_EQ(c.pub_BytesRecieved, 10);
    EXPECT_EQ(Describe(c, 70, {}).text, "Download complete. Handle closed");
    EXPECT_EQ(Describe(c, 70, {}).text, "Handle closed");
}

TEST(RangeAnswers, FirstByteOfTheContentRange) {
    EXPECT_EQ(ContentRangeStart("bytes 500-999/1000"), 500u);
    EXPECT_EQ(ContentRangeStart("bytes 0-0/*"), 0u);
    for (const char* refused : {"bytes */1000", "bytes 12", "items 1-2/3", "", "bytes -5", "bytes 99999999999999999999-1/2"})
        EXPECT_EQ(ContentRangeStart(refused), std::nullopt) << refused;
}
