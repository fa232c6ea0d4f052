#include <filesystem>

#include "files/cCRC32.h"
#include "engine/packing_list_comparison.h"
#include "items/ItemRecord.h"
#include "scl_harness.h"
#include "tools/scl/pe_version.h"
#ifdef _WIN32
#include "files/clsFileIO.h"
#endif

using scl_test::Fixture;
using scl_test::ReadAll;
using scl_test::Scl;
using scl_test::Scratch;

namespace {

const std::string kFirstPackage = R"(# The dealer client
[defaults]
OS = "Windows XP"
Source = "https://extranet.corvan-connect.example/installer/packages/"
ReleaseDate = "03/01/2024"
InstallFolder = 'C:\TALO'

[[package]]
FileName = "CorvanClient.msi"
Productname = "Corvan Connect"
Description = "Dealer client – édition été"
InstallSwitch = "/qn ALLUSERS=1"
UninstallSwitch = "/qn"
InstallGroup = "Dealers"
ExecutePackage = true
Version = "2.0"

)";
const std::string kManifest = kFirstPackage + R"([[package]]
FileName = "Viewer.dll"
Register = 1
Flag = 1
InstallFolder = 'C:\TALO\Bin\'
)";

// A folder of packages and its manifest, as a publisher keeps them.
struct Packages {
    Scratch scratch;
    Packages(const std::string& manifest = kManifest) {
        scratch.Write("CorvanClient.msi", "an installer database");
        std::filesystem::copy_file(Fixture("versioned64.dll"), scratch / "Viewer.dll");
        scratch.Write("packing.toml", manifest);
    }
    std::string Folder() const { return scratch.Path(); }
    std::string Manifest() const { return scratch / "packing.toml"; }
};

size_t Lines(const std::string& text) { return size_t(std::count(text.begin(), text.end(), '\n')); }

}  // namespace

TEST(SclBuild, WritesRowsTheClientReadsBackAsTheManifestSays) {
    Packages packages;
    const std::string list = packages.scratch.Write("SC_Install.scl", "the list it replaces\r\n");
    const auto run = Scl({"build", packages.Folder(), packages.Manifest(), "-o", list, "--os", "Windows XP"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "[1/2] CorvanClient.msi\n[2/2] Viewer.dll\nscl build: wrote 2 rows to " + list + "\n");

    const std::string text = ReadAll(list);
    const std::string msiCrc = corvan::FileCrcText(packages.scratch / "CorvanClient.msi");
    const std::string dllCrc = corvan::FileCrcText(packages.scratch / "Viewer.dll");
    EXPECT_EQ(text,
              "Windows XP,https://extranet.corvan-connect.example/installer/packages/,CorvanClient.msi,2.0,03/01/2024," +
                  msiCrc + ",Dealer client \x96 \xE9" "dition \xE9t\xE9,Corvan Connect,0,/qn ALLUSERS=1,/qn,,C:\\TALO\\,"
                  "Dealers,0,-1,CorvanClient.msi\r\n"
                  "Windows XP,https://extranet.corvan-connect.example/installer/packages/,Viewer.dll,1.2.3.4,03/01/2024," +
                  dllCrc + ",,,1,,,,C:\\TALO\\Bin\\,,1,0,Viewer.dll\r\n");

    // Loaded by the engine as a PC loads it: both rows become items, each
    // under its key, and each writes back the row it came from (but for the
    // empty LocalSource, which the loader fills).
    corvan::PackingListComparison engine("Windows XP", "C:\\WINDOWS\\");
    EXPECT_TRUE(engine.LoadFileIntoCollection(corvan::TextRows(text), true));
    EXPECT_TRUE(corvan::IsWholeList(corvan::TextRows(text)));
    std::string rows;
    for (auto& [key, item] : engine.colItems()) {
        EXPECT_EQ(item.LocalSource(), "C:\\WINDOWS\\Talo");
        item.LocalSource("");
        rows += key + ": " + item.UniformString() + "\r\n";
    }
    EXPECT_EQ(rows, "C:\\TALO\\CorvanClient.msi: " + text.substr(0, text.find('\n') + 1) +
                        "C:\\TALO\\Bin\\Viewer.dll: " + text.substr(text.find('\n') + 1));
    EXPECT_EQ(Scl({"lint", list, "--files", packages.Folder(), "--os", "Windows XP"}).code, 0);

    // Without -o the list goes to standard output, byte for byte.
    const auto toStdout = Scl({"build", packages.Folder(), packages.Manifest(), "-q"});
    EXPECT_EQ(toStdout.code, 0);
    EXPECT_EQ(toStdout.out, text);
    EXPECT_EQ(toStdout.err, "");
}

// Each refusal names the manifest line and entry; nothing is written and an
// earlier list stays as it was.
TEST(SclBuild, RefusesWhatTheRowCannotCarry) {
    struct Case {
        const char* name;
        std::string keys;      // of the second package, which starts at line 18
        std::string message;   // its one line, after "packing.toml:"; {folder} stands for the folder
    };
    const std::vector<Case> cases = {
        {"comma", "Description = \"Viewer, old\"",
         "19: package 2 (Viewer.dll): Description \"Viewer, old\" holds a comma, which the row format cannot carry "
         "(it would shift every later column)"},
        {"line break", "InstallSwitch = \"/s\\n/q\"",
         "19: package 2 (Viewer.dll): InstallSwitch holds a line break, which would end the row"},
        {"code page", "Description = \"\xE6\xBC\xA2\"",
         "19: package 2 (Viewer.dll): Description holds a character that the list's code page (Windows-1252) cannot "
         "carry"},
        {"Register range", "Register = 40000",
         "19: package 2 (Viewer.dll): Register 40000 is out of range (-32768 to 32767)"},
        {"Boolean", "ExecutePackage = \"yes\"", "19: package 2 (Viewer.dll): ExecutePackage must be true or false"},
        {"unknown key", "Switches = \"/s\"",
         "19: package 2 (Viewer.dll): unknown key Switches (the keys are the row's column names, such as OS, Source, "
         "FileName, Productname, InstallSwitch)"},
        {"CRC given", "CRC = \"1A\"", "19: package 2 (Viewer.dll): CRC is not given: scl build computes it from the file"},
        {"version against the resource", "Version = \"9.9\"",
         "18: package 2 (Viewer.dll): Version \"9.9\" contradicts the file's version resource, 1.2.3.4 (leave "
         "Version out to take the file's)"},
        {"missing file", "FileName = \"Gone.dll\"",
         "18: package 2 (Gone.dll): FileName \"Gone.dll\" is not a file in {folder}"},
        {"Source without slash", "Source = \"https://host/installer\"",
         "18: package 2 (Viewer.dll): Source: \"https://host/installer\" does not end in \"/\": the client fetches "
         "Source followed directly by FileName"},
        {"duplicate key", "FileName = \"CorvanClient.msi\"\nInstallFolder = 'c:\\talo\\'",
         "18: package 2 (CorvanClient.msi): FileName: same key (InstallFolder + FileName \"c:\\talo\\CorvanClient.msi\") "
         "as line 1 on \"Windows XP\": the client keeps only one of the two rows"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const bool named = c.keys.find("FileName") != std::string::npos;
        Packages packages(kFirstPackage + "[[package]]\n" + c.keys + "\n" + (named ? "" : "FileName = \"Viewer.dll\"\n"));
        const std::string list = packages.scratch.Write("SC_Install.scl", "earlier list\r\n");
        const auto run = Scl({"build", packages.Folder(), packages.Manifest(), "-o", list, "-q"});
        EXPECT_EQ(run.code, 1);
        std::string message = c.message;
        if (const size_t at = message.find("{folder}"); at != std::string::npos)
            message.replace(at, 8, packages.Folder());
        EXPECT_EQ(run.err, packages.Manifest() + ":" + message + "\nscl build: refused (1 problem); nothing written\n");
        EXPECT_EQ(ReadAll(list), "earlier list\r\n");
    }

    Packages packages("[defaults]\nOS = \"Windows XP\"\n");
    const auto empty = Scl({"build", packages.Folder(), packages.Manifest()});
    EXPECT_EQ(empty.code, 1);
    EXPECT_EQ(empty.err, packages.Manifest() + ": no [[package]] table: a manifest lists at least one package\n"
                          "scl build: refused (1 problem); nothing written\n");
}

// Bad input of any kind: one line on standard error, exit 2, never a crash.
TEST(SclCommandLine, BadInputGetsOneLine) {
    Packages packages;
    const std::string binary = packages.scratch.Write("binary.toml", std::string("\x7F" "ELF\0\0\x01\xFF", 8));
    const std::string broken = packages.scratch.Write("broken.toml", "[[package]]\nFileName = app.msi\n");
    const std::string missing = packages.scratch / "missing";
    struct Case {
        std::vector<std::string> args;
        std::string err;  // the start of the one line
    };
    const std::vector<Case> cases = {
        {{}, "usage: scl build"},
        {{"publish"}, "scl: no command publish"},
        {{"lint"}, "scl lint: expects one LIST (see scl lint --help)"},
        {{"lint", missing}, "scl lint: cannot read " + missing + ": no such file"},
        {{"lint", packages.Folder()}, "scl lint: cannot read " + packages.Folder() + ": it is a folder"},
        {{"lint", packages.Manifest(), "--fix"}, "scl lint: unknown option --fix"},
        {{"lint", packages.Manifest(), "--os"}, "scl lint: option --os needs a value"},
        {{"lint", packages.Manifest(), "--files", missing}, "scl lint: no folder " + missing},
        {{"build", missing, packages.Manifest()}, "scl build: no folder " + missing},
        {{"build", packages.Folder(), missing}, "scl build: cannot read manifest " + missing + ": no such file"},
        {{"build", packages.Folder(), binary}, "scl build: " + binary + ":1: "},
        {{"build", packages.Folder(), broken}, "scl build: " + broken + ":2: bad format: unknown value appeared"},
    };
    for (const Case& c : cases) {
        const auto run = Scl(c.args);
        SCOPED_TRACE(c.err);
        EXPECT_EQ(run.code, 2);
        EXPECT_EQ(run.err.rfind(c.err, 0), 0u) << run.err;
        if (!c.args.empty()) {
            EXPECT_EQ(Lines(run.err), 1u) << run.err;
        }
    }
    EXPECT_EQ(Scl({"lint", "--help"}).out.rfind("usage: scl lint LIST", 0), 0u);
    EXPECT_EQ(Scl({"help", "build"}).out.rfind("usage: scl build FOLDER MANIFEST", 0), 0u);
}

TEST(SclFileVersion, ReadsThePortableExecutablesVersionResource) {
    Scratch scratch;
    const std::string truncated = scratch.Write("truncated.dll", ReadAll(Fixture("versioned64.dll")).substr(0, 600));
    const std::string text = scratch.Write("notes.txt", "MZ but not an image");
    struct Case {
        std::string path;
        std::optional<std::string> version;
    };
    for (const Case& c : std::vector<Case>{{Fixture("versioned64.dll"), "1.2.3.4"},
                                           {Fixture("versioned32.dll"), "65535.0.7.8"},
                                           {Fixture("plain.dll"), std::nullopt},
                                           {truncated, std::nullopt},
                                           {text, std::nullopt},
                                           {scratch / "missing.dll", std::nullopt}}) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(corvan::scl::ReadFileVersion(c.path), c.version);
#ifdef _WIN32
        // The same text the file object takes from the system's version functions.
        corvan::clsFileIO file;
        if (file.OpenFile(c.path)) {
            EXPECT_EQ(file.VersionNumber(), c.version.value_or("0.0.0.0"));
        }
#endif
    }
}
