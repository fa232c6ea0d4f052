#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>

#include "scl_harness.h"

using scl_test::Scl;
using scl_test::Scratch;

namespace {

// A row the client reads as meant; app.msi holds "hello", CRC 3610A686.
std::string Row(const std::map<int, std::string>& changes = {}) {
    std::vector<std::string> fields = {"Windows XP", "https://host/installer/", "app.msi", "1.0", "01/02/2024",
                                       "3610A686",   "Client",                  "Corvan",  "0",   "/qn",
                                       "/x",         "",                        "C:\\TALO\\", "ALL", "0",
                                       "-1",         "app.msi"};
    for (const auto& [column, text] : changes) fields[column] = text;
    std::string row = fields[0];
    for (size_t i = 1; i < fields.size(); ++i) row += "," + fields[i];
    return row;
}

const std::string kOther = Row({{2, "b.exe"}, {16, "b.exe"}});

struct Trap {
    const char* name;
    std::string list;
    std::vector<std::string> args;
    std::vector<std::string> problems;  // "line:column", in report order
};

// Every trap that fails silently on a dealer's PC, each alone in a list.
const std::vector<Trap> kTraps = {
    {"clean", Row() + "\r\n" + kOther + "\r\n", {"--os", "Windows XP"}, {}},
    {"lower-case CRC", Row({{5, "3610a686"}}) + "\r\n", {}, {"1:CRC"}},
    {"zero-padded CRC", Row({{5, "0000ABCD"}}) + "\r\n", {}, {"1:CRC"}},
    {"CRC not hexadecimal or empty", Row({{5, "XYZ"}}) + "\r\n" + kOther + "\r\n" + Row({{2, "c.exe"}, {5, ""}}) + "\r\n",
     {}, {"1:CRC", "3:CRC"}},
    // The comma shifts every later column: Flag reads the product name,
    // Register the group.
    {"comma in a description", Row({{6, "Client, new"}}) + "\r\n", {}, {"1:row", "1:Flag", "1:Register"}},
    {"last row without its line break", Row() + "\r\n" + kOther, {}, {"2:row"}},
    {"first row of ten fields", "Windows XP,https://host/installer/,app.msi,1.0,d,3610A686,Client,Corvan,0,/qn\r\n", {},
     {"1:UninstallSwitch"}},
    {"later row of twelve fields", Row() + "\r\n" + "Windows XP,https://host/installer/,b.exe,1,d,1A,x,y,0,,,\r\n", {},
     {"2:InstallFolder"}},
    {"OS text of no machine named", Row({{0, "Windows Xp"}}) + "\r\n" + Row({{0, "all"}, {2, "b.exe"}}) + "\r\n",
     {"--os", "Windows XP,Windows 2000"}, {"1:OS", "2:OS"}},
    {"empty OS, lower-case all", Row({{0, ""}}) + "\r\n" + Row({{0, "all"}, {2, "b.exe"}}) + "\r\n", {}, {"1:OS", "2:OS"}},
    // The key is the normalised folder and the file name, without case.
    {"duplicate key", Row() + "\r\n" + Row({{12, "c:\\talo"}, {2, "APP.msi"}}) + "\r\n", {}, {"2:FileName"}},
    {"same name in two folders", Row() + "\r\n" + Row({{12, "C:\\TALO\\Bin\\"}}) + "\r\n", {}, {}},
    {"same key for two machines", Row() + "\r\n" + Row({{0, "Windows 2000"}}) + "\r\n", {}, {}},
    {"same key where one OS text holds both", Row() + "\r\n" + Row({{0, "Windows 2000 Windows XP"}}) + "\r\n", {},
     {"2:FileName"}},
    {"Source without its slash", Row({{1, "https://host/installer"}}) + "\r\n", {}, {"1:Source"}},
    {"file name without extension", Row({{2, "setup"}}) + "\r\n", {}, {"1:FileName"}},
    {"numbers that will not convert",
     Row({{8, "12abc"}}) + "\r\n" + Row({{2, "b.exe"}, {14, "x"}}) + "\r\n" + Row({{2, "c.exe"}, {15, "yes"}}) + "\r\n",
     {}, {"1:Flag", "2:Register", "3:ExecutePackage"}},
    {"empty list", "", {}, {"1:list"}},
    {"blank first line", "\r\n" + Row() + "\r\n", {}, {"1:Source"}},
    {"line feeds only", Row() + "\n" + kOther + "\n", {}, {"1:list"}},
    // Line 2 ends in a bare line feed: the client reads lines 2 and 3 as
    // one row of 33 fields.
    {"one bare line feed", Row() + "\r\n" + kOther + "\n" + Row({{2, "c.exe"}}) + "\r\n", {}, {"2:row", "2:row"}},
    {"blank row between rows", Row() + "\r\n\r\n" + kOther + "\r\n", {}, {"2:row"}},
    {"binary file", std::string("MZ\x90\0\x03\0\0\0", 8) + "\r\n", {}, {"1:list"}},
};

// "line:column" of each problem of lint's plain output (LIST:LINE: COLUMN: message).
std::vector<std::string> Reported(const std::string& out) {
    std::vector<std::string> found;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        const std::string rest = line.substr(line.find(".scl:") + 5);
        const size_t colon = rest.find(": "), end = rest.find(": ", colon + 2);
        found.push_back(rest.substr(0, colon) + ":" + rest.substr(colon + 2, end - colon - 2));
    }
    return found;
}

}  // namespace

TEST(SclLint, ReportsEachTrapWithItsLineAndColumn) {
    Scratch scratch;
    for (const Trap& trap : kTraps) {
        SCOPED_TRACE(trap.name);
        std::vector<std::string> args = {"lint", scratch.Write("list.scl", trap.list)};
        args.insert(args.end(), trap.args.begin(), trap.args.end());
        const auto run = Scl(args);
        EXPECT_EQ(Reported(run.out), trap.problems) << run.out;
        EXPECT_EQ(run.code, trap.problems.empty() ? 0 : 1) << run.err;
    }
}

TEST(SclLint, ChecksCrcsAgainstTheFilesAndSaysWhatToWrite) {
    Scratch scratch;
    const std::string files = scratch.Path();
    scratch.Write("app.msi", "hello");
    scratch.Write("b.exe", "changed");
    const std::string list =
        scratch.Write("list.scl", Row({{5, "3610a686"}}) + "\r\n" + kOther + "\r\n" + Row({{2, "gone.msi"}}) + "\r\n");
    const auto run = Scl({"lint", list, "--files", files});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out,
              list + ":1: CRC: \"3610a686\" must be written \"3610A686\" (upper-case, no leading zeros): the client "
                     "compares the text, so the package is downloaded and run again on every visit\n" +
                  list + ":2: CRC: \"3610A686\" does not match \"" + (scratch / "b.exe") +
                  "\", whose CRC is A3F33DFA: so the package is downloaded and run again on every visit\n" + list +
                  ":3: FileName: \"gone.msi\" is not a readable file in \"" + files + "\"\n");
    EXPECT_EQ(run.err, "scl lint: 3 problems in " + list + "\n");

    const auto json = Scl({"lint", list, "--files", files, "--json"});
    EXPECT_EQ(json.code, 1);
    const auto report = nlohmann::json::parse(json.out);
    EXPECT_EQ(report["list"], list);
    ASSERT_EQ(report["problems"].size(), 3u);
    EXPECT_EQ(report["problems"][2]["line"], 3);
    EXPECT_EQ(report["problems"][2]["column"], "FileName");
}

// A list far beyond any real one, made here: read whole, linted, no crash.
TEST(SclLint, HundredMegabyteListGetsAReport) {
    Scratch scratch;
    const std::string path = scratch / "big.scl";
    {
        std::ofstream big(path, std::ios::binary);
        const std::string description(900, 'd');
        for (int i = 0; i < 110000; ++i)
            big << Row({{2, "f" + std::to_string(i) + ".msi"}, {6, description}, {16, ""}}) << "\r\n";
        big << Row({{2, "last.msi"}, {5, "abc"}});  // two problems at the very end
    }
    ASSERT_GT(std::filesystem::file_size(path), 100u << 20);
    const auto run = Scl({"lint", path});
    EXPECT_EQ(run.code, 1) << run.err;
    EXPECT_EQ(Reported(run.out), (std::vector<std::string>{"110001:row", "110001:CRC"}));

    // Past any list the client could hold: refused before it is read.
    std::filesystem::resize_file(path, 600ull << 20);
    const auto huge = Scl({"lint", path});
    EXPECT_EQ(huge.code, 2);
    EXPECT_EQ(huge.err, "scl lint: " + path + " is larger than 512 MiB: too large for a packing list\n");
}
