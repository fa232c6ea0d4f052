// scl as a publisher runs it, minus the process: build, lint and plan on
// the cases of scl.txt, and the version resources of real PE files.
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "../table.h"
#include "engine/packing_list_comparison.h"
#include "files/cCRC32.h"
#include "tools/scl/cli.h"
#include "tools/scl/pe_version.h"
#ifdef _WIN32
#include "files/clsFileIO.h"
#endif

namespace fs = std::filesystem;
using unit_table::Split;

namespace {

struct SclRun {
    int code;
    std::string out, err;
};

SclRun Scl(const std::vector<std::string>& args) {
    std::ostringstream out, err;
    const int code = corvan::scl::RunScl(args, out, err);
    return {code, out.str(), err.str()};
}

std::string ReadAll(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// A folder of packages and their manifest, as a publisher keeps them, in a
// folder of its own that goes with the object.
struct Packages {
    fs::path folder = fs::temp_directory_path() / ("corvan-scl-" + std::to_string(std::random_device()()));
    std::string manifest = (folder / "packing.toml").string();
    explicit Packages(const std::string& toml = ReadAll(UNIT_DATA "/manifest.toml")) {
        fs::create_directories(folder);
        Write("CorvanClient.msi", "an installer database");
        fs::copy_file(SCL_FIXTURES "/versioned64.dll", folder / "Viewer.dll");
        Write("packing.toml", toml);
    }
    ~Packages() { fs::remove_all(folder); }
    std::string operator/(const std::string& name) const { return (folder / name).string(); }
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(*this / name, std::ios::binary) << bytes;
        return *this / name;
    }
    std::string Fill(std::string text) const {  // {folder}, and {name} for a file of the folder
        for (size_t at, end; (at = text.find('{')) != std::string::npos;) {
            const std::string name = text.substr(at + 1, (end = text.find('}', at)) - at - 1);
            text.replace(at, end - at + 1, name == "folder" ? folder.string() : *this / name);
        }
        return text;
    }
};

}  // namespace

TEST(SclBuild, WritesRowsTheClientReadsBackAsTheManifestSays) {
    Packages packages;
    const std::string list = packages.Write("SC_Install.scl", "the list it replaces\r\n");
    const auto run = Scl({"build", packages.folder.string(), packages.manifest, "-o", list, "--os", "Windows XP"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out + run.err, "[1/2] CorvanClient.msi\n[2/2] Viewer.dll\nscl build: wrote 2 rows to " + list + "\n");
    const std::string text = ReadAll(list);
    EXPECT_EQ(text, "Windows XP,https://extranet.corvan-connect.example/installer/packages/,CorvanClient.msi,2.0,"
                    "03/01/2024," + corvan::FileCrcText(packages / "CorvanClient.msi") +
                    ",Dealer client \x96 \xE9" "dition \xE9t\xE9,Corvan Connect,0,/qn ALLUSERS=1,/qn,,C:\\TALO\\,"
                    "Dealers,0,-1,CorvanClient.msi\r\n"
                    "Windows XP,https://extranet.corvan-connect.example/installer/packages/,Viewer.dll,1.2.3.4,"
                    "03/01/2024," + corvan::FileCrcText(packages / "Viewer.dll") +
                    ",,,1,,,,C:\\TALO\\Bin\\,,1,0,Viewer.dll\r\n");

    // Loaded as a PC loads it, each row becomes an item under its own key.
    corvan::PackingListComparison engine("Windows XP", "C:\\WINDOWS\\");
    EXPECT_TRUE(engine.LoadFileIntoCollection(corvan::TextRows(text), true));
    std::string keys;
    for (const auto& [key, item] : engine.colItems()) keys += key + ";";
    EXPECT_EQ(keys, "C:\\TALO\\CorvanClient.msi;C:\\TALO\\Bin\\Viewer.dll;");
    EXPECT_EQ(Scl({"lint", list, "--files", packages.folder.string(), "--os", "Windows XP"}).code, 0);
    // Without -o the list goes to standard output, byte for byte.
    const auto toStdout = Scl({"build", packages.folder.string(), packages.manifest, "-q"});
    EXPECT_EQ(toStdout.code, 0);
    EXPECT_EQ(toStdout.out + "|" + toStdout.err, text + "|");
}

// Each refusal names the manifest line and entry; nothing is written.
TEST(SclBuild, RefusesWhatTheRowCannotCarry) {
    const std::string manifest = ReadAll(UNIT_DATA "/manifest.toml");
    const std::string first = manifest.substr(0, manifest.rfind("[[package]]") + 12);
    for (const auto& c : unit_table::Table("scl.txt", "build refusals")) {
        Packages packages(first + c[0] + (c[0].rfind("FileName", 0) == 0 ? "\n" : "\nFileName = \"Viewer.dll\"\n"));
        const std::string list = packages.Write("SC_Install.scl", "earlier list\r\n");
        const auto run = Scl({"build", packages.folder.string(), packages.manifest, "-o", list, "-q"});
        EXPECT_EQ(run.code, 1) << c.where;
        EXPECT_EQ(run.err, packages.manifest + ":" + packages.Fill(c[1]) +
                               "\nscl build: refused (1 problem); nothing written\n") << c.where;
        EXPECT_EQ(ReadAll(list), "earlier list\r\n") << c.where;
    }
    Packages packages("[defaults]\nOS = \"Windows XP\"\n");
    EXPECT_EQ(Scl({"build", packages.folder.string(), packages.manifest}).err,
              packages.manifest + ": no [[package]] table: a manifest lists at least one package\n"
                                  "scl build: refused (1 problem); nothing written\n");
}

// Bad input of any kind: one line on standard error, exit 2, never a crash.
TEST(SclCommandLine, BadInputGetsOneLine) {
    Packages packages;
    packages.Write("binary", std::string("\x7F" "ELF\0\0\x01\xFF", 8));
    packages.Write("broken", "[[package]]\nFileName = app.msi\n");
    for (const auto& c : unit_table::Table("scl.txt", "bad input")) {
        const auto run = Scl(Split(packages.Fill(c[0]), ' '));
        EXPECT_EQ(run.code, 2) << c.where;
        EXPECT_EQ(run.err.rfind(packages.Fill(c[1]), 0), 0u) << c.where << ": " << run.err;
        EXPECT_TRUE(c[0].empty() || std::count(run.err.begin(), run.err.end(), '\n') == 1) << c.where << ": " << run.err;
    }
    EXPECT_EQ(Scl({"lint", "--help"}).out.rfind("usage: scl lint LIST", 0), 0u);
    EXPECT_EQ(Scl({"help", "build"}).out.rfind("usage: scl build FOLDER MANIFEST", 0), 0u);
    // Past any list the client could hold: refused before it is read.
    const std::string huge = packages.Write("huge.scl", "");
    fs::resize_file(huge, 600ull << 20);
    EXPECT_EQ(Scl({"lint", huge}).err, "scl lint: " + huge + " is larger than 512 MiB: too large for a packing list\n");
}

// ROW and ROW(column:text;...) in a lint trap's list.
std::string LintList(const std::string& text) {
    static const std::vector<std::string> kRow = Split(
        "Windows XP,https://host/installer/,app.msi,1.0,01/02/2024,3610A686,Client,Corvan,0,/qn,/x,,C:\\TALO\\,ALL,0,-1,app.msi", ',');
    std::string list = text;
    for (size_t at; (at = list.find("OTHER")) != std::string::npos;) list.replace(at, 5, "ROW(2:b.exe;16:b.exe)");
    for (size_t at; (at = list.find("ROW")) != std::string::npos;) {
        std::vector<std::string> fields = kRow;
        size_t end = at + 3;
        if (list.compare(end, 1, "(") == 0) {
            end = list.find(')', at);
            for (const std::string& change : Split(list.substr(at + 4, end++ - at - 4), ';'))
                fields[std::stoul(change)] = change.substr(change.find(':') + 1);
        }
        std::string row = fields[0];
        for (size_t i = 1; i < fields.size(); ++i) row += "," + fields[i];
        list.replace(at, end - at, row);
    }
    return list;
}

// "line:column" of each problem of lint's plain output (LIST:LINE: COLUMN: message).
std::string Reported(const std::string& out) {
    std::string found;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        const std::string rest = line.substr(line.find(".scl:") + 5);
        const size_t colon = rest.find(": ");
        found += (found.empty() ? "" : " ") + rest.substr(0, colon) + ":" + rest.substr(colon + 2, rest.find(": ", colon + 2) - colon - 2);
    }
    return found;
}

TEST(SclLint, ReportsEachTrapWithItsLineAndColumn) {
    Packages packages;
    for (const auto& c : unit_table::Table("scl.txt", "lint traps")) {
        std::vector<std::string> args = {"lint", packages.Write("list.scl", LintList(c[0]))};
        for (const std::string& option : Split(c[1], ';')) args.push_back(option);
        const auto run = Scl(args);
        EXPECT_EQ(Reported(run.out), c[2]) << c.where << "\n" << run.out;
        EXPECT_EQ(run.code, c[2].empty() ? 0 : 1) << c.where << "\n" << run.err;
    }
}

TEST(SclLint, ChecksCrcsAgainstTheFilesAndSaysWhatToWrite) {
    Packages packages;
    const std::string files = packages.folder.string();
    packages.Write("app.msi", "hello");
    packages.Write("b.exe", "changed");
    const std::string list = packages.Write("list.scl", LintList(unit_table::Decode("ROW(5:3610a686)<CR><LF>OTHER<CR><LF>ROW(2:gone.msi)<CR><LF>")));
    const auto run = Scl({"lint", list, "--files", files});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out,
              list + ":1: CRC: \"3610a686\" must be written \"3610A686\" (upper-case, no leading zeros): the client "
                     "compares the text, so the package is downloaded and run again on every visit\n" +
                  list + ":2: CRC: \"3610A686\" does not match \"" + (packages / "b.exe") +
                  "\", whose CRC is A3F33DFA: so the package is downloaded and run again on every visit\n" + list +
                  ":3: FileName: \"gone.msi\" is not a readable file in \"" + files + "\"\n");
    EXPECT_EQ(run.err, "scl lint: 3 problems in " + list + "\n");
    const auto report = nlohmann::json::parse(Scl({"lint", list, "--files", files, "--json"}).out);
    EXPECT_EQ(report["list"], list);
    ASSERT_EQ(report["problems"].size(), 3u);
    EXPECT_EQ(report["problems"][2]["line"], 3);
    EXPECT_EQ(report["problems"][2]["column"], "FileName");
}

// FileName/CRC[/OS[/Productname[/InstallGroup[/Flag]]]] rows, "+" a blank
// row, "=" a list as it stands.
std::string PlanList(const std::string& shorthand) {
    if (shorthand.rfind('=', 0) == 0) return shorthand.substr(1);
    std::string text;
    for (const std::string& row : Split(shorthand, ';')) {
        std::vector<std::string> r = Split(unit_table::Decode(row), '/');
        r.resize(6);
        if (r[0] != "+")
            text += (r[2].empty() ? "Windows XP" : r[2]) + ",https://h/installer/," + r[0] + ",1.0,d," + r[1] + ",desc," +
                    (r[3].empty() ? "Prod" : r[3]) + "," + (r[5].empty() ? "0" : r[5]) + ",/qn,/x,,C:\\TALO\\," + r[4] +
                    ",0,-1," + r[0];
        text += "\r\n";
    }
    return text;
}

TEST(SclPlan, TellsWhatTheRunDoesItemByItem) {
    Packages packages;
    for (const auto& c : unit_table::Table("scl.txt", "plan")) {
        std::vector<std::string> args = {"plan", packages.Write("local.scl", PlanList(c[0])),
                                         packages.Write("server.scl", PlanList(c[1])), "--os=Windows XP"};
        for (const std::string& option : Split(c[2], ';')) args.push_back(option);
        std::string plan;
        for (size_t i = 4; i < c.f.size(); ++i) {
            const size_t action = c[i].find(' '), key = c[i].find(' ', action + 1);
            plan += c[i].substr(0, action) + "\t" + c[i].substr(action + 1, key - action - 1) + "\t" + c[i].substr(key + 1) + "\n";
        }
        const auto run = Scl(args);
        EXPECT_EQ(run.code, plan.empty() ? 1 : 0) << c.where;
        EXPECT_EQ(run.out, plan) << c.where;
        EXPECT_EQ(run.err, c[3] + "\n") << c.where;
    }
}

TEST(SclFileVersion, ReadsThePortableExecutablesVersionResource) {
    Packages scratch;
    const std::string truncated = scratch.Write("truncated.dll", ReadAll(SCL_FIXTURES "/versioned64.dll").substr(0, 600));
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {SCL_FIXTURES "/versioned64.dll", "1.2.3.4"}, {SCL_FIXTURES "/versioned32.dll", "65535.0.7.8"},
        {SCL_FIXTURES "/plain.dll", std::nullopt},    {truncated, std::nullopt},
        {scratch.Write("notes.txt", "MZ but not an image"), std::nullopt}, {scratch / "missing.dll", std::nullopt}};
    for (const auto& [path, version] : cases) {
        EXPECT_EQ(corvan::scl::ReadFileVersion(path), version) << path;
#ifdef _WIN32
        // The same text the file object takes from the system's version functions.
        corvan::clsFileIO file;
        if (file.OpenFile(path)) {
            EXPECT_EQ(file.VersionNumber(), version.value_or("0.0.0.0")) << path;
        }
#endif
    }
}
