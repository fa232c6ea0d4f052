#include <gtest/gtest.h>

#include "items/ItemRecord.h"

using corvan::ItemRecord;

namespace {

const char kFullRow[] =
    "XP,https://host/installer/,app.msi,1.2.3,01/02/2003,1A2B,Client app,Corvan App,1,/qn,/x,\\\\srv\\share,"
    "C:\\TALO\\,Dealers,1,-1,app_local.msi";

}  // namespace

TEST(ItemRecordRow, FullRowRoundTripsUnchanged) {
    ItemRecord item;
    item.UniformString(kFullRow);
    EXPECT_EQ(item.OS(), "XP");
    EXPECT_EQ(item.Source(), "https://host/installer/");
    EXPECT_EQ(item.FileName(), "app.msi");
    EXPECT_EQ(item.Version(), "1.2.3");
    EXPECT_EQ(item.ReleaseDate(), "01/02/2003");
    EXPECT_EQ(item.CRC(), "1A2B");
    EXPECT_EQ(item.Description(), "Client app");
    EXPECT_EQ(item.Productname(), "Corvan App");
    EXPECT_EQ(item.Flag(), 1);
    EXPECT_EQ(item.InstallSwitch(), "/qn");
    EXPECT_EQ(item.UninstallSwitch(), "/x");
    EXPECT_EQ(item.LocalSource(), "\\\\srv\\share");
    EXPECT_EQ(item.StoredInstallFolder(), "C:\\TALO\\");
    EXPECT_EQ(item.InstallGroup(), "Dealers");
    EXPECT_EQ(item.Register(), 1);
    EXPECT_EQ(item.ExecutePackage(), -1);
    EXPECT_EQ(item.InstallFileName(), "app_local.msi");
    EXPECT_EQ(item.UniformString(), kFullRow);
    EXPECT_EQ(item.IsDirty(), 0);
    EXPECT_EQ(item.Removed(), 0);
}

TEST(ItemRecordRow, ShortRowsKeepAbsentColumnsAndLaterRowsOverwrite) {
    ItemRecord item;
    item.UniformString(kFullRow);
    item.UniformString("98,src/,b.exe,2,d,FF,desc,prod,7,/s");
    EXPECT_EQ(item.OS(), "98");
    EXPECT_EQ(item.InstallSwitch(), "/s");
    EXPECT_EQ(item.Flag(), 7);
    // Columns 10 to 16 were not in the row.
    EXPECT_EQ(item.UninstallSwitch(), "/x");
    EXPECT_EQ(item.StoredInstallFolder(), "C:\\TALO\\");
    EXPECT_EQ(item.Register(), 1);
    EXPECT_EQ(item.ExecutePackage(), -1);
    EXPECT_EQ(item.InstallFileName(), "app_local.msi");

    ItemRecord fresh;
    fresh.UniformString("A,B,C");
    EXPECT_EQ(fresh.FileName(), "C");
    EXPECT_EQ(fresh.Version(), "");
    EXPECT_EQ(fresh.Flag(), 0);
    fresh.UniformString(kFullRow);
    EXPECT_EQ(fresh.UniformString(), kFullRow);

    // An empty row sets nothing; fields past column 16 are ignored; blanks
    // are kept as part of the text.
    fresh.UniformString("");
    EXPECT_EQ(fresh.OS(), "XP");
    fresh.UniformString(std::string(" XP ,") + (kFullRow + 3) + ",extra,more");
    EXPECT_EQ(fresh.OS(), " XP ");
    EXPECT_EQ(fresh.InstallFileName(), "app_local.msi");
}

TEST(ItemRecordRow, ExecutePackageTakesBooleansAndNumbersOnly) {
    auto parse = [](const std::string& field, int16_t before) {
        ItemRecord item;
        item.ExecutePackage(before);
        item.UniformString(",,,,,,,,,,,,,,," + field);
        return item.ExecutePackage();
    };
    for (const char* yes : {"1", "-1", "true", "TRUE", "True", " 2 "}) EXPECT_EQ(parse(yes, 0), -1) << yes;
    for (const char* no : {"0", "False", "false"}) EXPECT_EQ(parse(no, -1), 0) << no;
    for (const char* bad : {"yes", "", "T", " True"}) {
        EXPECT_EQ(parse(bad, -1), -1) << bad;
        EXPECT_EQ(parse(bad, 0), 0) << bad;
    }
}

TEST(ItemRecordRow, FlagReadsLeadingNumberRoundedHalfToEven) {
    auto parse = [](const std::string& field) {
        ItemRecord item;
        item.Flag(99);
        item.UniformString(",,,,,,,," + field);
        return item.Flag();
    };
    EXPECT_EQ(parse("12abc"), 12);
    EXPECT_EQ(parse("&H10"), 16);
    EXPECT_EQ(parse(""), 0);
    EXPECT_EQ(parse("abc"), 0);
    EXPECT_EQ(parse("2.5"), 2);
    EXPECT_EQ(parse("3.5"), 4);
    EXPECT_EQ(parse("  -7"), -7);
    // Too large for 32 bits: the column keeps its value.
    EXPECT_EQ(parse("99999999999"), 99);
}

TEST(ItemRecordRow, RegisterIsStrictSixteenBit) {
    auto parse = [](const std::string& field) {
        ItemRecord item;
        item.Register(5);
        item.UniformString(",,,,,,,,,,,,,," + field);
        return item.Register();
    };
    EXPECT_EQ(parse(" 3 "), 3);
    EXPECT_EQ(parse("2.5"), 2);
    EXPECT_EQ(parse("-1"), -1);
    EXPECT_EQ(parse("12abc"), 5);
    EXPECT_EQ(parse("40000"), 5);
    EXPECT_EQ(parse(""), 5);
}

TEST(ItemRecordRow, BuildingNormalisesFolderAndFileName) {
    ItemRecord item;
    item.FileName("tool.exe");
    std::string row = item.UniformString();
    EXPECT_EQ(row, ",,tool.exe,,,,,,0,,,,C:\\talo\\,,0,0,tool.exe");
    // The folder getter keeps what it made; the file name stays empty.
    EXPECT_EQ(item.StoredInstallFolder(), "C:\\talo\\");
    EXPECT_EQ(item.StoredInstallFileName(), "");

    item.InstallFolder("D:\\apps");
    EXPECT_EQ(item.InstallFolder(), "D:\\apps\\");
    EXPECT_EQ(item.StoredInstallFolder(), "D:\\apps\\");
    item.InstallFolder("\\");
    EXPECT_EQ(item.InstallFolder(), "C:\\talo\\");

    item.Flag(-2147483647 - 1);
    item.Register(-32768);
    item.ExecutePackage(-1);
    EXPECT_EQ(item.UniformString(), ",,tool.exe,,,,,,-2147483648,,,,C:\\talo\\,,-32768,-1,tool.exe");
}

TEST(ItemRecordRow, CommaInTextShiftsLaterColumns) {
    ItemRecord item;
    item.UniformString(kFullRow);
    item.Description("Client, app");
    ItemRecord again;
    again.UniformString(item.UniformString());
    EXPECT_EQ(again.Description(), "Client");
    EXPECT_EQ(again.Productname(), " app");
    EXPECT_EQ(again.Flag(), 0);  // "Corvan App" read leniently
    EXPECT_EQ(again.InstallSwitch(), "1");
    EXPECT_EQ(again.StoredInstallFolder(), "\\\\srv\\share");
    EXPECT_EQ(again.InstallGroup(), "C:\\TALO\\");
    EXPECT_EQ(again.Register(), 0);  // "Dealers" is no number
    EXPECT_EQ(again.ExecutePackage(), -1);
    EXPECT_EQ(again.InstallFileName(), "-1");
}

TEST(ItemRecordRow, FileExtention) {
    ItemRecord item;
    item.FileName("setup.v2.MSI");
    EXPECT_EQ(item.GetFileExtention(), "MSI");
    item.FileName("README");
    EXPECT_EQ(item.GetFileExtention(), "");
    item.FileName("trailing.");
    EXPECT_EQ(item.GetFileExtention(), "");
}

// Whatever a row holds, one read and write settles it: writing the item read
// back from a written row gives the same row again.
TEST(ItemRecordRow, WrittenRowsAreStable) {
    const char* pieces[] = {"", " ", "a", "1", "-1", "2.5", "&H10", "True", "false", "yes", "12abc",
                            "C:\\x", "\\", "40000", "1e3", "\t7", "x y", "&HFFFF"};
    uint32_t state = 12345;
    auto next = [&state] { return state = state * 1103515245u + 12345u; };
    for (int round = 0; round < 2000; ++round) {
        std::string row;
        const int fields = 1 + (next() >> 8) % 20;
        for (int f = 0; f < fields; ++f) {
            if (f) row += ',';
            row += pieces[(next() >> 8) % (sizeof pieces / sizeof *pieces)];
        }
        ItemRecord first;
        first.UniformString(row);
        const std::string written = first.UniformString();
        ItemRecord second;
        second.UniformString(written);
        ASSERT_EQ(second.UniformString(), written) << "row: " << row;
    }
}
