// The comparison of packing lists, case by case: each case loads a local and
// a server list and reads back what colItems holds.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/packing_list_comparison.h"

using corvan::CheckListForm;
using corvan::ListForm;
using corvan::PackingListComparison;
using corvan::TextRows;

namespace {

using Texts = std::vector<std::string>;

const char kXP[] = "Windows XP";

// One row: the columns the comparison reads, the rest filled in.
std::string Row(const std::string& os, const std::string& file, const std::string& crc,
                const std::string& folder = "C:\\TALO\\", int flag = 0, const std::string& localSource = "\\\\srv\\s") {
    return os + ",https://h/installer/," + file + ",1.0,01/01/2005," + crc + ",desc,prod," + std::to_string(flag) +
           ",,," + localSource + "," + folder + ",,0,0," + file;
}

std::string List(const Texts& rows) {
    std::string text;
    for (const std::string& row : rows) text += row + "\r\n";
    return text;
}

// colItems as "key dirty removed", in collection order.
Texts Items(PackingListComparison& comparison) {
    Texts items;
    for (auto& entry : comparison.colItems())
        items.push_back(entry.first + (entry.second.IsDirty() ? " D" : " -") + (entry.second.Removed() ? "R" : "-"));
    return items;
}

struct Case {
    const char* name;
    std::string local, server;
    bool force;
    bool localResult, serverResult, mustInstall;
    Texts items;
};

const std::string A = Row(kXP, "a.msi", "AA"), B = Row("ALL", "b.dll", "BB"), C = Row(kXP, "c.exe", "CC");

const Case kCases[] = {
    {"equal lists leave every item clean", List({A, B, C}), List({A, B, C}), false, true, true, false,
     {"C:\\TALO\\a.msi --", "C:\\TALO\\b.dll --", "C:\\TALO\\c.exe --"}},
    {"keys, not positions, are compared", List({A, B, C}), List({C, A, B}), false, true, true, false,
     {"C:\\TALO\\a.msi --", "C:\\TALO\\b.dll --", "C:\\TALO\\c.exe --"}},
    {"one more blank line is a difference although no item changed", List({A, B}), List({A, "", B}), false, true,
     false, false, {"C:\\TALO\\a.msi --", "C:\\TALO\\b.dll --"}},
    {"an item the server dropped stays dirty and removed", List({A, B, C}), List({A, C}), false, true, false, false,
     {"C:\\TALO\\a.msi --", "C:\\TALO\\b.dll DR", "C:\\TALO\\c.exe --"}},
    {"an item only the server has is dirty and comes last", List({A, B}), List({C, A, B}), false, true, false, false,
     {"C:\\TALO\\a.msi --", "C:\\TALO\\b.dll --", "C:\\TALO\\c.exe D-"}},
    {"a changed CRC replaces the item at the end and must install", List({A, B, C}),
     List({A, Row("ALL", "b.dll", "B2"), C}), false, true, false, true,
     {"C:\\TALO\\a.msi --", "C:\\TALO\\c.exe --", "C:\\TALO\\b.dll D-"}},
    {"force install keeps every item dirty", List({A, B}), List({A, B}), true, true, true, false,
     {"C:\\TALO\\a.msi D-", "C:\\TALO\\b.dll D-"}},
    {"a row for another Windows counts only as a row", List({A}), List({A, Row("Windows 98", "z.exe", "ZZ")}), false,
     true, false, false, {"C:\\TALO\\a.msi --"}},
    {"the same file in two folders is two items", List({A}), List({A, Row(kXP, "a.msi", "AA", "C:\\Other")}), false,
     true, false, false, {"C:\\TALO\\a.msi --", "C:\\Other\\a.msi D-"}},
    {"the folder test minds case where the key does not: kept as it was", List({A}),
     List({Row(kXP, "a.msi", "A2", "c:\\talo\\")}), false, true, true, false, {"C:\\TALO\\a.msi --"}},
    {"a key twice in the local list is no longer to remove", List({A, A}), List({B, C}), false, true, false, false,
     {"C:\\TALO\\a.msi --", "C:\\TALO\\b.dll D-", "C:\\TALO\\c.exe D-"}},
    {"a row without a folder is under the default one", List({Row(kXP, "d.dll", "1", "")}),
     List({Row(kXP, "d.dll", "1", "C:\\talo\\")}), false, true, true, false, {"C:\\talo\\d.dll --"}},
    {"with nothing local that applies, the server list loads as a first list", List({Row("Windows 98", "z.exe", "Z")}),
     List({A}), false, true, true, false, {"C:\\TALO\\a.msi -R"}},
};

class Comparison : public ::testing::TestWithParam<Case> {};

TEST_P(Comparison, LocalThenServer) {
    const Case& c = GetParam();
    PackingListComparison comparison(kXP, "C:\\windows\\");
    comparison.blnForceInstall(c.force);
    EXPECT_EQ(comparison.LoadFileIntoCollection(TextRows(c.local), true), c.localResult);
    EXPECT_EQ(comparison.LoadFileIntoCollection(TextRows(c.server), c.force), c.serverResult);
    EXPECT_EQ(comparison.blnMustInstall(), c.mustInstall);
    EXPECT_EQ(Items(comparison), c.items);
}

INSTANTIATE_TEST_SUITE_P(Cases, Comparison, ::testing::ValuesIn(kCases), [](const auto& info) {
    std::string name;
    for (const char* p = info.param.name; *p; ++p) name += std::isalnum(static_cast<unsigned char>(*p)) ? *p : '_';
    return name;
});

TEST(ComparisonRows, OSRulesLocalSourceAndTheUninstallList) {
    PackingListComparison comparison(kXP, "C:\\windows\\");
    const std::string both = Row("Windows 2000Windows XP", "both.dll", "1");
    const std::string flagged = Row(kXP, "f.exe", "2", "C:\\TALO\\", 1);
    const std::string plain = Row(kXP, "p.tlb", "3", "C:\\TALO\\", 0, "");
    comparison.LoadFileIntoCollection(TextRows(List({both, Row("", "none.dll", "4"), Row("ALL ", "all.dll", "5"),
                                                     Row("windows xp", "case.dll", "6"), flagged, plain, B})),
                                      true);
    EXPECT_EQ(Items(comparison), (Texts{"C:\\TALO\\both.dll DR", "C:\\TALO\\f.exe DR", "C:\\TALO\\p.tlb DR",
                                        "C:\\TALO\\b.dll DR"}));
    EXPECT_EQ(comparison.colItems().Item("c:\\talo\\P.TLB").LocalSource(), "C:\\windows\\Talo");
    // Loading takes a version name inside a longer OS text; the uninstall
    // list takes only exact names and rows without a Flag.
    EXPECT_EQ(comparison.UninstallListText(), Row(kXP, "p.tlb", "3", "C:\\TALO\\", 0, "C:\\windows\\Talo") +
                                                  "\r\n" + B + "\r\n");
}

TEST(ComparisonRows, ListFormLooksAtTheFirstRowOnly) {
    const std::string ten = "a,b,c,d,e,f,g,h,i,j";
    struct {
        std::string text;
        ListForm form;
    } forms[] = {
        {"", ListForm::Empty},
        {A, ListForm::Empty},  // a last line without a line break is not a row
        {"\r\n" + A + "\r\n", ListForm::TooFewFields},
        {ten + "\r\n" + A + "\r\n", ListForm::TooFewFields},
        {ten + ",k\r\n", ListForm::Valid},
        {List({A, "short"}), ListForm::Valid},
    };
    for (const auto& f : forms) EXPECT_EQ(CheckListForm(TextRows(f.text)), f.form) << f.text;
    TextRows rows("one\r\n\ntwo\r\nthree");
    EXPECT_EQ(rows.RowCount(), 2);
    EXPECT_EQ(rows.GetRow(2), "two");
    EXPECT_EQ(rows.GetRow(3), "");
}

TEST(ComparisonRows, GroupRule) {
    EXPECT_TRUE(corvan::InstallGroupAllows("Dealers;Service", " service "));
    EXPECT_TRUE(corvan::InstallGroupAllows("Dealers", "all"));
    EXPECT_TRUE(corvan::InstallGroupAllows("  ", "Service"));
    EXPECT_TRUE(corvan::InstallGroupAllows("Dealers", ""));
    EXPECT_FALSE(corvan::InstallGroupAllows("Dealers", "Service"));
}

}  // namespace
