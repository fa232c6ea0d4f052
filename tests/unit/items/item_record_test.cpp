#include <gtest/gtest.h>

#include <iterator>

#include "items/ItemRecord.h"

using corvan::ItemRecord;

namespace {

const char kFullRow[] =
    "XP,https://host/installer/,app.msi,1.2.3,01/02/2003,1A2B,Client app,Corvan App,1,/qn,/x,\\\\srv\\share,"
    "C:\\TALO\\,Dealers,1,-1,app_local.msi";

// The seventeen columns as the getters give them, in row order.
std::vector<std::string> Columns(const ItemRecord& item) {
    return {item.OS(), item.Source(), item.FileName(), item.Version(), item.ReleaseDate(), item.CRC(),
            item.Description(), item.Productname(), std::to_string(item.Flag()), item.InstallSwitch(),
            item.UninstallSwitch(), item.LocalSource(), item.StoredInstallFolder(), item.InstallGroup(),
            std::to_string(item.Register()), std::to_string(item.ExecutePackage()), item.InstallFileName()};
}

}  // namespace

TEST(ItemRecordRow, FullRowFillsEveryColumnAndWritesBackUnchanged) {
    ItemRecord item;
    item.UniformString(kFullRow);
    EXPECT_EQ(Columns(item), (std::vector<std::string>{"XP", "https://host/installer/", "app.msi", "1.2.3",
                                                       "01/02/2003", "1A2B", "Client app", "Corvan App", "1", "/qn",
                                                       "/x", "\\\\srv\\share", "C:\\TALO\\", "Dealers", "1", "-1",
                                                       "app_local.msi"}));
    EXPECT_EQ(item.UniformString(), kFullRow);
    EXPECT_EQ(item.IsDirty() | item.Removed(), 0);
}

TEST(ItemRecordRow, ShortRowsSetOnlyTheirColumns) {
    ItemRecord item;
    item.UniformString(kFullRow);
    item.UniformString("98,src/,b.exe,2,d,FF,desc,prod,7,/s");
    EXPECT_EQ(item.UniformString(),
              "98,src/,b.exe,2,d,FF,desc,prod,7,/s,/x,\\\\srv\\share,C:\\TALO\\,Dealers,1,-1,app_local.msi");

    ItemRecord fresh;
    fresh.UniformString("A,B,C");
    EXPECT_EQ(fresh.UniformString(), "A,B,C,,,,,,0,,,,C:\\talo\\,,0,0,C");
    fresh.UniformString(kFullRow);
    EXPECT_EQ(fresh.UniformString(), kFullRow);

    // An empty row sets nothing, not even column 0; fields past column 16 are
    // ignored; blanks are part of the text.
    fresh.UniformString("");
    EXPECT_EQ(fresh.UniformString(), kFullRow);
    const std::string padded = std::string(" XP ,") + (kFullRow + 3);
    fresh.UniformString(padded + ",extra,more");
    EXPECT_EQ(fresh.UniformString(), padded);
}

// Flag (8) reads leniently with halves to even, Register (14) strictly in 16
// bits, ExecutePackage (15) takes Booleans and numbers only; a field that
// cannot be read leaves the column as it was (`before`).
TEST(ItemRecordRow, NumericColumnsFollowTheirConversions) {
    struct Case { size_t column; const char* field; int16_t before; const char* expected; } const cases[] = {
        {8, "12abc", 99, "12"}, {8, "&H10", 99, "16"}, {8, "", 99, "0"}, {8, "abc", 99, "0"}, {8, "2.5", 99, "2"},
        {8, "3.5", 99, "4"}, {8, "  -7", 99, "-7"}, {8, "99999999999", 99, "99"},
        {14, " 3 ", 5, "3"}, {14, "2.5", 5, "2"}, {14, "-1", 5, "-1"}, {14, "12abc", 5, "5"}, {14, "40000", 5, "5"},
        {14, "", 5, "5"},
        {15, "1", 0, "-1"}, {15, "-1", 0, "-1"}, {15, "true", 0, "-1"}, {15, "TRUE", 0, "-1"}, {15, "True", 0, "-1"},
        {15, " 2 ", 0, "-1"}, {15, "0", -1, "0"}, {15, "False", -1, "0"}, {15, "false", -1, "0"},
        {15, "yes", -1, "-1"}, {15, "yes", 0, "0"}, {15, "", -1, "-1"}, {15, "", 0, "0"}, {15, "T", -1, "-1"},
        {15, "T", 0, "0"}, {15, " True", -1, "-1"}, {15, " True", 0, "0"},
    };
    for (const Case& c : cases) {
        ItemRecord item;
        item.Flag(c.before);
        item.Register(c.before);
        item.ExecutePackage(c.before);
        item.UniformString(std::string(c.column, ',') + c.field);
        EXPECT_EQ(Columns(item)[c.column], c.expected) << "column " << c.column << " '" << c.field << "'";
    }
}

// The Boolean fields hold -1 or 0 whatever they are handed, so a true
// ExecutePackage is written -1.
TEST(ItemRecordRow, BooleanFieldsHoldMinusOneOrZero) {
    using Setter = void (ItemRecord::*)(int32_t);
    using Getter = int16_t (ItemRecord::*)() const;
    const std::pair<Setter, Getter> fields[] = {{&ItemRecord::ExecutePackage, &ItemRecord::ExecutePackage},
                                                {&ItemRecord::IsDirty, &ItemRecord::IsDirty},
                                                {&ItemRecord::Removed, &ItemRecord::Removed}};
    const std::pair<int32_t, int16_t> values[] = {{true, -1}, {1, -1}, {-1, -1}, {2, -1}, {65536, -1}, {false, 0}, {0, 0}};
    for (auto [set, get] : fields)
        for (auto [given, held] : values) {
            ItemRecord item;
            (item.*set)(given);
            EXPECT_EQ((item.*get)(), held) << given;
        }
    ItemRecord item;
    item.ExecutePackage(true);
    EXPECT_EQ(item.UniformString(), ",,,,,,,,0,,,,C:\\talo\\,,0,-1,");
}

TEST(ItemRecordRow, BuildingNormalisesFolderAndFileName) {
    ItemRecord item;
    item.FileName("tool.exe");
    EXPECT_EQ(item.UniformString(), ",,tool.exe,,,,,,0,,,,C:\\talo\\,,0,0,tool.exe");
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
    ItemRecord item, again;
    item.UniformString(kFullRow);
    item.Description("Client, app");
    again.UniformString(item.UniformString());
    // "Corvan App" reads as Flag 0, "Dealers" is no Register, "1" is true.
    EXPECT_EQ(again.UniformString(),
              "XP,https://host/installer/,app.msi,1.2.3,01/02/2003,1A2B,Client, app,0,1,/qn,/x,\\\\srv\\share\\,"
              "C:\\TALO\\,0,-1,-1");
}

TEST(ItemRecordRow, FileExtention) {
    ItemRecord item;
    const std::pair<const char*, const char*> cases[] = {{"setup.v2.MSI", "MSI"}, {"README", ""}, {"trailing.", ""}};
    for (auto [name, extension] : cases) {
        item.FileName(name);
        EXPECT_EQ(item.GetFileExtention(), extension) << name;
    }
}

// Whatever a row holds, one read and write settles it: writing the item read
// back from a written row gives the same row again.
TEST(ItemRecordRow, WrittenRowsAreStable) {
    const char* pieces[] = {"", " ", "a", "1", "-1", "2.5", "&H10", "True", "false", "yes", "12abc",
                            "C:\\x", "\\", "40000", "1e3", "\t7", "x y", "&HFFFF"};
    uint32_t state = 12345;
    auto next = [&state] { return (state = state * 1103515245u + 12345u) >> 8; };
    for (int round = 0; round < 2000; ++round) {
        std::string row = pieces[next() % std::size(pieces)];
        for (int f = next() % 20; f > 0; --f) row += std::string(",") + pieces[next() % std::size(pieces)];
        ItemRecord first, second;
        first.UniformString(row);
        const std::string written = first.UniformString();
        second.UniformString(written);
        ASSERT_EQ(second.UniformString(), written) << "row: " << row;
    }
}
