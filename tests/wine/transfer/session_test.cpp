#include <gtest/gtest.h>

#include <cstring>

#include "test_server.h"

using namespace transfer_tests;
using corvan::clsFTP;

TEST(Session, PortAndConnection) {
    clsFTP ftp;
    EXPECT_EQ(ftp.Port(), 21);
    EXPECT_EQ(ftp.protocal(), 0);
    EXPECT_EQ(ftp.InternetHandle(), 0);
    ftp.Port(443);
    EXPECT_EQ(ftp.Port(), 443);
    ftp.Login("dealer");
    ftp.Password("secret");
    EXPECT_EQ(ftp.Login(), "dealer");
    EXPECT_EQ(ftp.Password(), "secret");

    ftp.Port(8080);
    ftp.protocal(INTERNET_SERVICE_HTTP);
    EXPECT_TRUE(ftp.OpenFTP("127.0.0.1", "", ""));
    EXPECT_NE(ftp.InternetHandle(), 0);
}

TEST(Session, GetErrClearsTheCode) {
    clsFTP ftp;
    int32_t code = 12002;
    EXPECT_EQ(ftp.GetErr(code), "The request has timed out.");
    EXPECT_EQ(code, 0);
    code = 12033;
    EXPECT_EQ(ftp.GetErr(code), "Error details not available.");
    // No FTP exchange has happened: WinINet has no last response to give.
    code = 12003;
    std::string text = ftp.GetErr(code);
    EXPECT_TRUE(text == "Extended error returned from server." || text.empty()) << text;
}

TEST(Session, CallbackStatusRaisesStatusChangeForEveryCode) {
    EventLog events;
    clsFTP ftp(nullptr, &events);
    int32_t bytes = 512;
    ftp.FtpCallbackStatus(nullptr, 0, 41, &bytes, sizeof bytes);
    char name[] = "127.0.0.1\0pad";
    ftp.FtpCallbackStatus(nullptr, 0, 21, name, sizeof name);
    int32_t state = 64;
    ftp.FtpCallbackStatus(nullptr, 0, 200, &state, sizeof state);
    ftp.FtpCallbackStatus(nullptr, 0, 300, &bytes, sizeof bytes);
    ftp.FtpCallbackStatus(nullptr, 0, 31, &bytes, sizeof bytes);
    using Status = std::pair<std::string, int32_t>;
    EXPECT_EQ(events.statuses, (std::vector<Status>{{"False", 41},
                                                    {"Connected to 127.0.0.1", 21},
                                                    {"", 200},
                                                    {"", 300},
                                                    {"Request sent: 512 bytes", 31}}));
    EXPECT_EQ(ftp.pub_BytesRecieved(), 512);
    EXPECT_EQ(ftp.pub_BytesSent(), 512);
    EXPECT_TRUE(events.progress.empty());
}

TEST(Session, FileSizeFromFindData) {
    WIN32_FIND_DATAA found{};
    found.nFileSizeHigh = 1;
    found.nFileSizeLow = 5;
    EXPECT_EQ(clsFTP::FtpFileGetFileSize(found), 4294967301.0);
    // Both halves are read as signed numbers.
    found.nFileSizeHigh = 0;
    found.nFileSizeLow = 0xFFFFFFFF;
    EXPECT_EQ(clsFTP::FtpFileGetFileSize(found), -1.0);
    EXPECT_EQ(clsFTP::StripNull(std::string("a\0b", 3)), "a");
}

TEST(Session, StatusCallbackPair) {
    clsFTP ftp;
    HINTERNET session = InternetOpenA("t", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
    ASSERT_NE(session, nullptr);
    auto callback = [](HINTERNET, DWORD_PTR, DWORD, LPVOID, DWORD) {};
    INTERNET_STATUS_CALLBACK previous = ftp.SetStatusCallBack(session, callback);
    EXPECT_EQ(previous, nullptr);
    EXPECT_EQ(ftp.SetStatusCallBack(session, callback), callback);
    ftp.RemoveStatusCallback(session);
    EXPECT_EQ(ftp.SetStatusCallBack(session, nullptr), nullptr);
    InternetCloseHandle(session);
}
