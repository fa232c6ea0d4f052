#include "../harness.h"
#include "items/ItemRecord.h"


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

// Each column to its getter, a fresh item's defaults (short rows, blanks
// and the marks after reading are the item_row fuzzer's rules), and a comma
// in a text, which shifts the later columns when the row is read back:
// "Corvan App" reads as Flag 0, "Dealers" is no Register, "1" is true.
TEST(ItemRecordRow, ColumnsDefaultsAndACommaInAText) {
    ItemRecord item, fresh, again;
    item.UniformString(kFullRow);
    EXPECT_EQ(Columns(item), Split(kFullRow, ','));
    fresh.UniformString("A,B,C");
    EXPECT_EQ(fresh.UniformString(), "A,B,C,,,,,,0,,,,C:\\talo\\,,0,0,C");
    item.Description("Client, app");
    again.UniformString(item.UniformString());
    EXPECT_EQ(again.UniformString(),
              "XP,https://host/installer/,app.msi,1.2.3,01/02/2003,1A2B,Client, app,0,1,/qn,/x,\\\\srv\\share\\,"
              "C:\\TALO\\,0,-1,-1");
}

TEST(ItemRecordRow, NumericColumnsFollowTheirConversions) {
    for (const auto& c : Table("items/items.txt", "numbers")) {
        ItemRecord item;
        const int16_t before = static_cast<int16_t>(std::stoi(c[2]));
        item.Flag(before);
        item.Register(before);
        item.ExecutePackage(before);
        item.UniformString(std::string(std::stoul(c[0]), ',') + c[1]);
        EXPECT_EQ(Columns(item)[std::stoul(c[0])], c[3]) << c.where;
    }
}

// The Boolean fields hold -1 or 0 whatever they are handed; the folder ends in a backslash,
// the default one when none is given; the install file name is the file name unless set.
TEST(ItemRecordRow, SettersNormalise) {
    ItemRecord item;
    item.ExecutePackage(65536), item.IsDirty(2), item.Removed(-1);  // not 0 in 16 bits, nor 2
    EXPECT_EQ(std::vector<int16_t>({item.ExecutePackage(), item.IsDirty(), item.Removed()}), std::vector<int16_t>(3, -1));
    item.ExecutePackage(0);
    item.FileName("tool.exe");
    EXPECT_EQ(item.UniformString() + "|" + item.StoredInstallFileName(), ",,tool.exe,,,,,,0,,,,C:\\talo\\,,0,0,tool.exe|");
    item.InstallFolder("D:\\apps");
    EXPECT_EQ(item.InstallFolder() + item.StoredInstallFolder(), "D:\\apps\\D:\\apps\\");
    item.InstallFolder("\\");
    EXPECT_EQ(item.InstallFolder(), "C:\\talo\\");
    for (auto [name, extension] : {std::pair{"setup.v2.MSI", "MSI"}, {"README", ""}, {"trailing.", ""}})
        EXPECT_EQ((item.FileName(name), item.GetFileExtention()), extension) << name;
}
