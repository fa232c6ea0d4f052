#include "../harness.h"
#include "transfer/retry_policy.h"
#include "transfer/transfer_texts.h"

TEST(TransferTexts, ErrorTextOfEachCode) {
    const auto answer = [] { return std::optional<std::string>(std::string("550 No such file\0garbage", 24)); };
    for (const auto& row : Table("transfer/transfer.txt", "errors"))
        EXPECT_EQ(ErrorTextForCode(std::stoi(row[0]), answer), row[1]) << row.where;
    EXPECT_EQ(ErrorTextForCode(12003, [] { return std::optional<std::string>(); }),
              "Extended error returned from server.");
}

TEST(TransferTexts, StatusTexts) {
    for (const auto& row : Table("transfer/transfer.txt", "status")) {
        TransferCounters c;
        c.transferMode = std::stoi(row[0]);
        // Information that WinINet gives as a number is its four bytes.
        const int32_t n = row[2].rfind('#', 0) == 0 ? std::stoi(row[2].substr(1)) : 0;
        const std::string info = row[2].rfind('#', 0) == 0 ? std::string(reinterpret_cast<const char*>(&n), 4) : row[2];
        const StatusNotice notice = DescribeStatus(c, std::stod(row[3]), std::stoul(row[1]), info.data(), uint32_t(info.size()));
        EXPECT_EQ(notice.text + " | " + (notice.progress ? std::to_string(int(*notice.progress)) : "-"),
                  row[4] + " | " + row[5]) << row.where;
    }
    EXPECT_EQ(ProgressText(67108864, 300), "67108864 bytes of 300 bytes read ");
}

TEST(RangeAnswers, FirstByteOfTheContentRange) {
    for (const auto& row : Table("transfer/transfer.txt", "ranges"))
        EXPECT_EQ(ContentRangeStart(row[0]), row[1] == "-" ? std::nullopt : std::optional<uint64_t>(std::stoull(row[1])))
            << row.where;
}
