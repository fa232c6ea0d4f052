// scl plan on the cases that decide a run: each scenario is a local list, a
// server list and a PC, and the plan it must print, item by item.
#include "scl_harness.h"

using scl_test::Scl;
using scl_test::Scratch;

namespace {

struct R {
    std::string file, crc, os = "Windows XP", product = "Prod", group = "", flag = "0";
};

std::string List(const std::vector<R>& rows, const std::string& extra = "") {
    std::string text;
    for (const R& r : rows)
        text += r.os + ",https://h/installer/," + r.file + ",1.0,d," + r.crc + ",desc," + r.product + "," + r.flag +
                ",/qn,/x,,C:\\TALO\\," + r.group + ",0,-1," + r.file + "\r\n";
    return text + extra;
}

struct Scenario {
    const char* name;
    std::string local, server;
    std::vector<std::string> options;
    std::string plan;   // standard output
    std::string notes;  // standard error before the count line
};

const R a{"a.msi", "AAA"}, b{"b.exe", "BBB"}, c{"c.dll", "CCC"};
const std::string kXP = "--os=Windows XP";

const std::vector<Scenario> kScenarios = {
    {"lists equal: no pass", List({a, b}), List({b, a}), {kXP},
     "keep\tC:\\TALO\\a.msi\tunchanged (CRC AAA)\nkeep\tC:\\TALO\\b.exe\tunchanged (CRC BBB)\n",
     "scl plan: nothing the server lists is new or changed: no install pass runs (\"No Install Required\"), so "
     "nothing is installed or removed\n"},
    // The changed item moves to the end of colItems, as the engine orders it.
    {"one CRC changed", List({a, b, c}), List({a, {"b.exe", "B2"}, c}), {kXP},
     "keep\tC:\\TALO\\a.msi\tunchanged (CRC AAA)\nkeep\tC:\\TALO\\c.dll\tunchanged (CRC CCC)\n"
     "update\tC:\\TALO\\b.exe\tCRC BBB -> B2; the old version is uninstalled first\n",
     ""},
    {"one dropped, one new", List({a, b}), List({a, c}), {kXP},
     "keep\tC:\\TALO\\a.msi\tunchanged (CRC AAA)\nremove\tC:\\TALO\\b.exe\tno longer on the server\n"
     "install\tC:\\TALO\\c.dll\tnew on the server\n",
     ""},
    // Dropping a row while keeping the row count finds no difference: the
    // pass does not run and the dropped item stays.
    {"dropped behind a blank row", List({a, b}), List({a}, "\r\n"), {kXP},
     "keep\tC:\\TALO\\a.msi\tunchanged (CRC AAA)\nkeep\tC:\\TALO\\b.exe\tno longer on the server, but no pass runs\n",
     "scl plan: nothing the server lists is new or changed: no install pass runs (\"No Install Required\"), so "
     "nothing is installed or removed\n"},
    {"dropped, row count differs", List({a, b}), List({a}), {kXP},
     "keep\tC:\\TALO\\a.msi\tunchanged (CRC AAA)\nremove\tC:\\TALO\\b.exe\tno longer on the server\n", ""},
    {"not installed", List({a, b}), List({a, c}), {kXP, "--installed", "0"},
     "install\tC:\\TALO\\a.msi\tevery item is installed\ninstall\tC:\\TALO\\c.dll\tevery item is installed\n",
     "scl plan: the PC is not installed: its local list is fetched from the server and every item is installed\n"},
    {"empty local list", "", List({a}), {kXP},
     "install\tC:\\TALO\\a.msi\tevery item is installed\n",
     "scl plan: the local list is empty: it is fetched from the server and every item is installed\n"},
    // A changed item of another group is uninstalled and then skipped; "all"
    // in any case is for everybody; Flag 1 keeps the old version.
    {"groups and flags", List({a, b, c}),
     List({{"a.msi", "A2", "Windows XP", "Prod", "Dealers"}, {"b.exe", "B2", "Windows XP", "Prod", "all"},
           {"c.dll", "C2", "Windows XP", "Prod", "", "1"}}),
     {kXP, "--groups", "Admins"},
     "skip\tC:\\TALO\\a.msi\tits group \"Dealers\" is not among the user's groups \"Admins\"; the old version is "
     "uninstalled first, so it ends up removed\n"
     "update\tC:\\TALO\\b.exe\tCRC BBB -> B2; the old version is uninstalled first\n"
     "update\tC:\\TALO\\c.dll\tCRC CCC -> C2\n",
     ""},
    {"browser and reader", List({{"acro.exe", "1", "Windows XP", "Adobe Acrobat"}, a}),
     List({a, {"ie.exe", "2", "Windows XP", "Internet Explorer"}, {"rdr.exe", "3", "Windows XP", "Adobe Acrobat"}}),
     {kXP, "--acrobat", "1"},
     "keep\tC:\\TALO\\acro.exe\tno longer on the server, but Adobe Acrobat is never removed\n"
     "keep\tC:\\TALO\\a.msi\tunchanged (CRC AAA)\nskip\tC:\\TALO\\ie.exe\tInternet Explorer 6 is present\n"
     "skip\tC:\\TALO\\rdr.exe\ta suitable Adobe Acrobat is present\n",
     ""},
    {"older browser", List({a}), List({a, {"ie.exe", "2", "Windows XP", "Internet Explorer"}}), {kXP, "--ie", "5"},
     "keep\tC:\\TALO\\a.msi\tunchanged (CRC AAA)\ninstall\tC:\\TALO\\ie.exe\tnew on the server\n", ""},
    {"rows for other machines", List({a}), List({a, {"w2k.msi", "9", "Windows 2000"}, {"all.msi", "8", "ALL"}}), {kXP},
     "keep\tC:\\TALO\\a.msi\tunchanged (CRC AAA)\ninstall\tC:\\TALO\\all.msi\tnew on the server\n"
     "skip\tC:\\TALO\\w2k.msi\tits OS \"Windows 2000\" does not name \"Windows XP\"\n",
     ""},
    {"invalid local list", "Windows XP,https://h/installer/,a.msi,1,d,AAA\r\n", List({a}), {kXP},
     "keep\tC:\\talo\\a.msi\tunchanged (CRC AAA)\n",  // the key as the local row spelt it
     "scl plan: the local list's first row has fewer than eleven fields: the PC fetches the list again and the "
     "install pass runs\n"},
};

}  // namespace

TEST(SclPlan, TellsWhatTheRunDoesItemByItem) {
    Scratch scratch;
    for (const Scenario& s : kScenarios) {
        SCOPED_TRACE(s.name);
        std::vector<std::string> args = {"plan", scratch.Write("local.scl", s.local), scratch.Write("server.scl", s.server)};
        args.insert(args.end(), s.options.begin(), s.options.end());
        const auto run = Scl(args);
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(run.out, s.plan);
        EXPECT_EQ(run.err.substr(0, run.err.rfind("scl plan: ")), s.notes);
    }
}

// A server list that every PC refuses changes nothing, whatever the PC holds.
TEST(SclPlan, RefusedServerListChangesNothing) {
    Scratch scratch;
    const std::string local = scratch.Write("local.scl", List({a}));
    const auto empty = Scl({"plan", local, scratch.Write("empty.scl", ""), kXP});
    EXPECT_EQ(empty.code, 1);
    EXPECT_EQ(empty.out, "");
    EXPECT_EQ(empty.err, "scl plan: the server list is empty: every PC refuses it, and nothing is installed or removed\n");
    const auto shortRow = Scl({"plan", local, scratch.Write("short.scl", "Windows XP,a,b,c,d,e,f,g,h,i\r\n"), kXP});
    EXPECT_EQ(shortRow.code, 1);
    EXPECT_EQ(Scl({"plan", local, local}).code, 2);  // no --os
    EXPECT_EQ(Scl({"plan", local, local, kXP, "--installed", "yes"}).err,
              "scl plan: --installed takes a number from 0 to 1, not \"yes\" (see scl plan --help)\n");
}
