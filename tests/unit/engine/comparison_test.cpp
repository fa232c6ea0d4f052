// The comparison of packing lists, case by case (comparison.txt).

#include "../harness.h"
#include "engine/packing_list_comparison.h"

// OS/FileName/CRC[/folder[/Flag[/LocalSource]]] rows (harness.h).
std::string List(const std::string& shorthand) {
    return Rows(shorthand, "Windows XP,https://h/installer/,,1.0,01/01/2005,,desc,prod,0,,,\\\\srv\\s,C:\\TALO\\,,0,0,",
                            {0, 2, 5, 12, 8, 11});
}

TEST(Comparison, LocalThenServerList) {
    const auto bit = [](bool value) { return std::string(value ? "1" : "0"); };
    for (const auto& c : Table("engine/comparison.txt", "cases")) {
        SCOPED_TRACE(c.where + ": " + c[0]);
        PackingListComparison comparison("Windows XP", "C:\\windows\\");
        comparison.blnForceInstall(c[3] == "1");
        const std::string local = bit(comparison.LoadFileIntoCollection(TextRows(List(c[1])), true));
        const std::string server = c[2] == "-" ? "-" : bit(comparison.LoadFileIntoCollection(TextRows(List(c[2])), c[3] == "1"));
        EXPECT_EQ(local + " " + server + " " + bit(comparison.blnMustInstall()), c[4]);
        if (c[2] != "-") {  // the update check's comparison without items answers alike
            const auto agreement = comparison.CompareLists(TextRows(List(c[1])), TextRows(List(c[2])));
            EXPECT_EQ(bit(agreement.localLoaded) + " " + bit(agreement.serverLoaded) + " " + bit(agreement.mustInstall), c[4]);
        }
        std::string items;
        for (auto& [key, item] : comparison.colItems())
            items += (items.empty() ? "" : "; ") + key + (item.IsDirty() ? " D" : " -") + (item.Removed() ? "R" : "-");
        EXPECT_EQ(items, c[5]);
        if (c.f.size() > 6) {
            EXPECT_EQ(comparison.UninstallListText(), List(c[6]));
        }
    }
}

TEST(Comparison, ListForms) {
    const std::string forms[] = {"Valid", "Empty", "TooFewFields"};
    for (const auto& c : Table("engine/comparison.txt", "forms"))
        EXPECT_EQ(forms[static_cast<int>(CheckListForm(TextRows(c[0])))], c[1]) << c.where;
}
