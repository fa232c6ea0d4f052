// scl as a publisher runs it, minus the process: build, lint and plan on
// the cases of scl.txt, and the version resource of a real PE file.
#include <nlohmann/json.hpp>

#include "../harness.h"
#include "files/cCRC32.h"
#include "tools/scl/cli.h"
#include "tools/scl/pe_version.h"

namespace fs = std::filesystem;

namespace {

struct SclRun { int code; std::string out, err; };

SclRun Scl(const std::vector<std::string>& args) {
    std::ostringstream out, err;  // run first: a braced list is evaluated in order
    return {corvan::scl::RunScl(args, out, err), out.str(), err.str()};
}

// A folder of packages and their manifest, as a publisher keeps them.
struct Packages : Scratch {
    const std::string manifest = Path("packing.toml");
    explicit Packages(const std::string& toml = ReadAll(UNIT_DATA "/tools/manifest.toml")) {
        Write("CorvanClient.msi", "an installer database");
        fs::copy_file(SCL_FIXTURES "/versioned64.dll", Path("Viewer.dll"));
        Write("packing.toml", toml);
    }
    std::string Fill(std::string text) const {  // {folder}; {name}, a file of the folder; {crc name}, its CRC text
        for (size_t at, end; (at = text.find('{')) != std::string::npos;) {
            const std::string name = text.substr(at + 1, (end = text.find('}', at)) - at - 1);
            text.replace(at, end - at + 1, name == "folder"            ? dir
                                           : name.rfind("crc ", 0) == 0 ? corvan::FileCrcText(Path(name.substr(4)))
                                                                        : Path(name));
        }
        return text;
    }
};

}  // namespace

TEST(SclBuild, WritesRowsTheClientReadsBackAsTheManifestSays) {
    Packages packages;
    const std::string list = packages.Write("SC_Install.scl", "the list it replaces\r\n");
    const auto run = Scl({"build", packages.dir, packages.manifest, "-o", list, "--os", "Windows XP"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out + run.err, "[1/2] CorvanClient.msi\n[2/2] Viewer.dll\nscl build: wrote 2 rows to " + list + "\n");
    const std::string text = ReadAll(list);
    std::string expected;
    for (const auto& row : Table("tools/scl.txt", "built list")) expected += packages.Fill(row[0]) + "\r\n";
    EXPECT_EQ(text, expected);
    // lint holds a list to the rules by which the client reads it.
    EXPECT_EQ(Scl({"lint", list, "--files", packages.dir, "--os", "Windows XP"}).code, 0);
    // Without -o the list goes to standard output, byte for byte.
    const auto toStdout = Scl({"build", packages.dir, packages.manifest, "-q"});
    EXPECT_EQ(std::to_string(toStdout.code) + "|" + toStdout.out + "|" + toStdout.err, "0|" + text + "|");
}

// Each refusal names the manifest line and entry; nothing is written.
TEST(SclBuild, RefusesWhatTheRowCannotCarry) {
    const std::string manifest = ReadAll(UNIT_DATA "/tools/manifest.toml");
    const std::string first = manifest.substr(0, manifest.rfind("[[package]]") + 12);
    for (const auto& c : Table("tools/scl.txt", "build refusals")) {
        Packages packages(c[0][0] == '=' ? c[0].substr(1)
                                         : first + c[0] + (c[0].rfind("FileName", 0) == 0 ? "\n" : "\nFileName = \"Viewer.dll\"\n"));
        const std::string list = packages.Write("SC_Install.scl", "earlier list\r\n");
        const auto run = Scl({"build", packages.dir, packages.manifest, "-o", list, "-q"});
        EXPECT_EQ(run.code, 1) << c.where;
        EXPECT_EQ(run.err, packages.manifest + ":" + packages.Fill(c[1]) +
                               "\nscl build: refused (1 problem); nothing written\n") << c.where;
        EXPECT_EQ(ReadAll(list), "earlier list\r\n") << c.where;
    }
}

// ROW and ROW(column:text;...) in a lint trap's list (scl.txt).
std::string LintList(std::string list) {
    for (size_t at; (at = list.find("OTHER")) != std::string::npos;) list.replace(at, 5, "ROW(2:b.exe;16:b.exe)");
    for (size_t at; (at = list.find("ROW")) != std::string::npos;) {
        const size_t end = list.compare(at + 3, 1, "(") == 0 ? list.find(')', at) + 1 : at + 3;
        std::vector<std::string> fields = Split("Windows XP,https://host/installer/,app.msi,1.0,01/02/2024,3610A686,Client,"
                                                "Corvan,0,/qn,/x,,C:\\TALO\\,ALL,0,-1,app.msi", ',');
        for (const std::string& change : Split(end > at + 3 ? list.substr(at + 4, end - at - 5) : "", ';'))
            fields[std::stoul(change)] = change.substr(change.find(':') + 1);
        std::string row = fields[0];
        for (size_t i = 1; i < fields.size(); ++i) row += "," + fields[i];
        list.replace(at, end - at, row);
    }
    return list;
}

// Every trap that fails silently on a dealer's PC, as line:column from the
// JSON report, and for one list the plain report's messages whole.
TEST(SclLint, ReportsEachTrapWithItsLineAndColumn) {
    Packages packages;
    packages.Write("app.msi", "hello");
    packages.Write("b.exe", "changed");
    for (const auto& c : Table("tools/scl.txt", "lint traps")) {
        std::vector<std::string> args = {"lint", packages.Write("list.scl", LintList(c[0]))};
        for (const std::string& option : Split(packages.Fill(c[1]), ';')) args.push_back(option);
        const auto run = Scl(args);
        EXPECT_EQ(run.code, c[2].empty() ? 0 : 1) << c.where << "\n" << run.err;
        const std::string whole = run.out + run.err;  // compared where the row gives it
        EXPECT_EQ(whole, c.f.size() > 3 ? packages.Fill(c[3]) + "\n" + packages.Fill(c[4]) + "\n" : whole) << c.where;
        args.push_back("--json");
        const auto report = nlohmann::json::parse(Scl(args).out);
        std::string found;
        for (const auto& p : report["problems"]) found += (found.empty() ? "" : " ") + p["line"].dump() + ":" + p["column"].get<std::string>();
        EXPECT_EQ(report["list"].get<std::string>() + " " + found, args[1] + " " + c[2]) << c.where;
    }
}

// FileName/CRC[/OS[/Productname[/InstallGroup[/Flag]]]] rows (harness.h).
std::string PlanList(const std::string& shorthand) {
    return Rows(shorthand, "Windows XP,https://h/installer/,,1.0,d,,desc,Prod,0,/qn,/x,,C:\\TALO\\,,0,-1,", {2, 5, 0, 7, 13, 8});
}

TEST(SclPlan, TellsWhatTheRunDoesItemByItem) {
    Packages packages;
    for (const auto& c : Table("tools/scl.txt", "plan")) {
        std::vector<std::string> args = {"plan", packages.Write("local.scl", PlanList(c[0])),
                                         packages.Write("server.scl", PlanList(c[1])), "--os=Windows XP"};
        for (const std::string& option : Split(c[2], ';')) args.push_back(option);
        std::string plan;
        for (size_t i = 4; i < c.f.size(); ++i) plan += c[i] + "\n";
        const auto run = Scl(args);
        EXPECT_EQ(run.code, plan.empty() ? 1 : 0) << c.where;
        EXPECT_EQ(run.out, plan) << c.where;
        EXPECT_EQ(run.err, c[3] + "\n") << c.where;
    }
}

// The version resource of a real PE image, and of files that are none.
TEST(SclFileVersion, ReadsThePortableExecutablesVersionResource) {
    Packages packages;  // its Viewer.dll is the fixture library
    packages.Write("truncated.dll", ReadAll(packages.Path("Viewer.dll")).substr(0, 600));
    packages.Write("notes.txt", "MZ but not an image");
    for (const auto& c : Table("tools/scl.txt", "versions"))
        EXPECT_EQ(corvan::scl::ReadFileVersion(packages.Path(c[0])).value_or("none"), c[1]) << c.where;
}
