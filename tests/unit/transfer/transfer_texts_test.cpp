#include <gtest/gtest.h>

#include <map>

#include "../table.h"
#include "transfer/retry_policy.h"
#include "transfer/transfer_texts.h"

using namespace corvan;

namespace {

// Information that WinINet gives as a number is its four bytes.
StatusNotice Describe(TransferCounters& counters, uint32_t code, const std::string& info, double size = 0) {
    const int32_t n = info.rfind('#', 0) == 0 ? std::stoi(info.substr(1)) : 0;
    const std::string bytes = info.rfind('#', 0) == 0 ? std::string(reinterpret_cast<const char*>(&n), 4) : info;
    return DescribeStatus(counters, size, code, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

}  // namespace

TEST(TransferTexts, ErrorTextOfEachCode) {
    std::map<int32_t, std::string> texts;
    for (const auto& row : unit_table::Table("transfer.txt", "errors")) texts[std::stoi(row[0])] = row[1];
    const auto answer = [] { return std::optional<std::string>(std::string("550 No such file\0garbage", 24)); };
    for (int32_t code = 12000; code <= 12037; ++code)
        if (code != 12003) {
            EXPECT_EQ(ErrorTextForCode(code, answer), texts.count(code) ? texts[code] : "Error details not available.")
                << code;
        }
    for (int32_t code : {0, -1}) EXPECT_EQ(ErrorTextForCode(code, answer), "Error details not available.");
    EXPECT_EQ(ErrorTextForCode(12003, answer), "550 No such file");
    EXPECT_EQ(ErrorTextForCode(12003, [] { return std::optional<std::string>(); }),
              "Extended error returned from server.");
}

TEST(TransferTexts, StatusTextsAndCounters) {
    TransferCounters c;
    for (const auto& row : unit_table::Table("transfer.txt", "status")) {
        const StatusNotice notice = Describe(c, std::stoul(row[0]), row[1]);
        EXPECT_EQ(notice.text, row[2]) << row.where;
        EXPECT_FALSE(notice.progress) << row.where;
    }
    EXPECT_DOUBLE_EQ(c.pub_BytesSent, 95);
    EXPECT_DOUBLE_EQ(c.pub_BytesRecieved, 512);
    Describe(c, 41, "#16777217");  // added as a single-precision number
    EXPECT_DOUBLE_EQ(c.pub_BytesRecieved, 512 + 16777216.0);
    EXPECT_EQ(ProgressText(67108864, 300), "67108864 bytes of 300 bytes read ");

    // The upload and download branches that nothing sets today.
    c = TransferCounters{};
    c.transferMode = 5;
    const StatusNotice upload = Describe(c, 30, "#300", 1000);
    EXPECT_EQ(upload.text, "Uploading   300 of 1000");
    EXPECT_EQ(upload.progress, 0.0f);
    EXPECT_EQ(Describe(c, 30, "#700", 1000).progress, 1.0f);
    EXPECT_EQ(Describe(c, 70, "").text, "Upload complete. Handle closed");
    EXPECT_EQ(c.transferMode, 0);
    c.transferMode = 3;
    EXPECT_EQ(Describe(c, 41, "#10", 1000).text, "Uploading   1000 of 1000");
    EXPECT_DOUBLE_EQ(c.pub_BytesRecieved, 10);
    EXPECT_EQ(Describe(c, 70, "").text, "Download complete. Handle closed");
    EXPECT_EQ(Describe(c, 70, "").text, "Handle closed");
}

TEST(RangeAnswers, FirstByteOfTheContentRange) {
    for (const auto& row : unit_table::Table("transfer.txt", "ranges"))
        EXPECT_EQ(ContentRangeStart(row[0]), row[1] == "-" ? std::nullopt : std::optional<uint64_t>(std::stoull(row[1])))
            << row.where;
}
