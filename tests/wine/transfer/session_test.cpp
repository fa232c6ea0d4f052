#include <gtest/gtest.h>

#include "test_server.h"

using namespace transfer_tests;
using corvan::clsFTP;

TEST(Session, PortAndConnection) {
    clsFTP ftp;
    EXPECT_EQ(ftp.Port(), 21);
    EXPECT_EQ(ftp.InternetHandle(), 0);
    ftp.Port(8080);
    ftp.protocal(INTERNET_SERVICE_HTTP);
    EXPECT_TRUE(ftp.OpenFTP("127.0.0.1", "", ""));
    EXPECT_NE(ftp.InternetHandle(), 0);
}

// No FTP exchange has happened: WinINet gives an empty last response, and
// that empty response is the text (the fixed sentence is for a call that
// fails).
TEST(Session, GetErrOfTheServersAnswerWithoutOne) {
    clsFTP ftp;
    int32_t code = 12003;
    EXPECT_EQ(ftp.GetErr(code), "");
    EXPECT_EQ(code, 0);
}

TEST(Session, CallbackStatusRaisesStatusChangeForEveryCode) {
    EventLog events;
    clsFTP ftp(nullptr, &events);
    int32_t bytes = 512;
    char name[] = "127.0.0.1\0pad";
    ftp.FtpCallbackStatus(nullptr, 0, 41, &bytes, sizeof bytes);
    ftp.FtpCallbackStatus(nullptr, 0, 21, name, sizeof name);
    ftp.FtpCallbackStatus(nullptr, 0, 300, &bytes, sizeof bytes);
    ftp.FtpCallbackStatus(nullptr, 0, 31, &bytes, sizeof bytes);
    using Status = std::pair<std::string, int32_t>;
    EXPECT_EQ(events.statuses, (std::vector<Status>{
                                   {"False", 41}, {"Connected to 127.0.0.1", 21}, {"", 300}, {"Request sent: 512 bytes", 31}}));
    EXPECT_EQ(ftp.pub_BytesRecieved(), 512);
    EXPECT_EQ(ftp.pub_BytesSent(), 512);
    EXPECT_TRUE(events.progress.empty());
}

TEST(Session, FileSizeFromFindDataReadsBothHalvesSigned) {
    WIN32_FIND_DATAA found{};
    found.nFileSizeHigh = 1;
    found.nFileSizeLow = 5;
    EXPECT_EQ(clsFTP::FtpFileGetFileSize(found), 4294967301.0);
    found.nFileSizeHigh = 0;
    found.nFileSizeLow = 0xFFFFFFFF;
    EXPECT_EQ(clsFTP::FtpFileGetFileSize(found), -1.0);
}
