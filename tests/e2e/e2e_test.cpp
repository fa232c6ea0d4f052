// Whole runs of the shipped control through its COM surface, as the page
// drives it, against the test server with real packages. The scenarios are
// data (scenarios.txt); this file only knows how to do and check each kind
// of line.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include <windows.h>
#include <msi.h>

#include "common/text.h"
#include "control/bstr_text.h"
#include "e2e_support.h"
#include "installer_folder.h"
#include "plan_agreement.h"
#include "probe_server.h"
#include "session_log.h"
#include "test_packages.h"

using control_tests::Call;
using control_tests::ComPtr;
using control_tests::EventSink;

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

constexpr char kApplicationFolder[] = "C:\\TALO\\";

// ---- the packages as rows ------------------------------------------------------

struct PackageKind {
    const char* shortName;
    const char* file;
    const char* installSwitch;
    const char* uninstallSwitch;
    const char* registerFlag;
};

const PackageKind kKinds[] = {
    {"msi", testpackages::kMsi, "/qn", "/qn", "0"},
    {"exe", testpackages::kExe, "/install", "/uninstall", "0"},
    {"dll", testpackages::kDll, "", "", "1"},
    {"tlb", testpackages::kTlb, "", "", "1"},
    {"cab", testpackages::kCab, "", "", "0"},
    {"mdb", testpackages::kMdb, "", "", "0"},
};

const PackageKind& Kind(const std::string& name) {
    for (const PackageKind& kind : kKinds)
        if (name == kind.shortName || name == kind.file) return kind;
    throw std::runtime_error("no package called " + name);
}

std::string FileOf(const std::string& name) {
    for (const PackageKind& kind : kKinds)
        if (name == kind.shortName) return kind.file;
    return name;
}

std::string ShortOf(const std::string& file) {
    for (const PackageKind& kind : kKinds)
        if (file == kind.file) return kind.shortName;
    return file;
}

// "exe{flag=1;changed}" as the server's row; publishes the file it names.
std::string PublishRow(const testserver::InstallerFolder& folder, const std::string& entry) {
    const size_t brace = entry.find('{');
    const PackageKind& kind = Kind(corvan::Trim(entry.substr(0, brace)));
    std::map<std::string, std::string> changes;
    if (brace != std::string::npos) {
        std::stringstream list(entry.substr(brace + 1, entry.rfind('}') - brace - 1));
        for (std::string change; std::getline(list, change, ';');) {
            const size_t equals = change.find('=');
            changes[corvan::Trim(change.substr(0, equals))] =
                equals == std::string::npos ? "" : change.substr(equals + 1);
        }
    }
    const testpackages::Package package = testpackages::Get(kind.file);
    std::string crc = package.crc;
    if (changes.count("changed")) {
        // Bytes past the end of a program or a database change nothing
        // but its checksum.
        const std::string bytes = winbench::ReadFileBytes(package.path) + "a newer build";
        folder.Write(kind.file, bytes);
        crc = Crc32Text(bytes);
    } else {
        folder.Publish(package.path);
    }
    auto field = [&changes](const char* name, const std::string& fallback) {
        return changes.count(name) ? changes[name] : fallback;
    };
    // A row may name a Source that fails: the file is published all the same.
    const std::string source =
        changes.count("source") ? FailingInstallerUrl(changes["source"], folder.Name()) : folder.URL();
    const std::string fields[17] = {field("os", "ALL"),  source,               kind.file,
                                    "1.0",               "01/01/2005",         crc,
                                    "Test package",      field("product", ""), field("flag", "0"),
                                    kind.installSwitch,  kind.uninstallSwitch, "",
                                    kApplicationFolder,  field("group", ""),   field("register", kind.registerFlag),
                                    "0",                 ""};
    std::string row = fields[0];
    for (size_t i = 1; i < 17; ++i) row += "," + fields[i];
    return row;
}

Texts Split(const std::string& text, const std::string& separator) {
    Texts parts;
    if (corvan::Trim(text).empty()) return parts;
    for (size_t start = 0;;) {
        const size_t end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string::npos) return parts;
        start = end + separator.size();
    }
}

std::string Join(const Texts& parts, const std::string& separator) {
    std::string text;
    for (const std::string& part : parts) text += (text.empty() ? "" : separator) + part;
    return text;
}

// A download shorter than the transfer's first block of 1024 bytes keeps
// the block's NUL padding, and the local list is the downloaded one.
std::string WithoutPadding(std::string text) {
    while (!text.empty() && text.back() == '\0') text.pop_back();
    return text;
}

std::string SortedWords(const std::string& text) {
    Texts words = Split(text, " ");
    std::sort(words.begin(), words.end());
    return Join(words, " ");
}

// The package (by short name) of each row of a list file; "-" when the
// file is missing.
std::string ListPackages(const std::string& path) {
    if (!winbench::FileExists(path)) return "-";
    Texts packages;
    for (const std::string& row : Split(winbench::ReadFileBytes(path), "\r\n")) {
        const Texts fields = Split(row, ",");
        if (fields.size() > 2) packages.push_back(ShortOf(fields[2]));
    }
    return Join(packages, ",");
}

}  // namespace

// The list files as they stand: the text, or nothing when missing.
std::optional<std::string> ListFile(const char* path) {
    if (!winbench::FileExists(path)) return std::nullopt;
    return winbench::ReadFileBytes(path);
}

constexpr const char* kListFiles[] = {"C:\\TALO\\SC_Install.scl", "C:\\TALO\\SC_Uninstall.scl"};

// ---- one scenario ------------------------------------------------------------

class Scenario : public ::testing::TestWithParam<ScenarioText> {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
        ASSERT_TRUE(control_tests::Regsvr32(winbench::OutDir() + "\\CorvanInstaller.ocx"));
    }
    static void TearDownTestSuite() {
        control_tests::Regsvr32(winbench::OutDir() + "\\CorvanInstaller.ocx", true);
        OleUninitialize();
    }

    void SetUp() override {
        machine_.Clean();
        // The page's installer folder, and two for the alternate installer
        // URLs of a control that takes them from the environment.
        for (const char* role : {"primary", "alt1", "alt2"}) {
            const std::string name = GetParam().name + (role == std::string("primary") ? "" : std::string("-") + role);
            folders_[role] = std::make_unique<testserver::InstallerFolder>(name);
            ASSERT_TRUE(folders_[role]->Available()) << "the http fixture did not start";
        }
        folder_ = folders_["primary"].get();
        SetEnvironmentVariableA("CORVAN_TEST_ALT_URL_SOURCE_1", folders_["alt1"]->URL().c_str());
        SetEnvironmentVariableA("CORVAN_TEST_ALT_URL_SOURCE_2", folders_["alt2"]->URL().c_str());
        commandRecord_ = "C:\\corvan-tests\\e2e-" + GetParam().name + "-commands.txt";
        CreateDirectoryA("C:\\corvan-tests", nullptr);
        DeleteFileA(commandRecord_.c_str());
        SetEnvironmentVariableA("CORVAN_COMMAND_RECORD", commandRecord_.c_str());
    }
    void TearDown() override {
        if (unregistered_) control_tests::Regsvr32(winbench::OutDir() + "\\CorvanInstaller.ocx");
        machine_.Clean();
        folders_.clear();
    }

    // The control server the pages load; empty for the registered one.
    virtual std::string Server() const { return ""; }
    // Whether scl's plan of each install run is held against the run.
    virtual bool ChecksThePlan() const { return true; }
    // The page's installer URL.
    std::string InstallerUrl() const { return pageUrl_.empty() ? folders_.at("primary")->URL() : pageUrl_; }
    // {primary}, {alt1}, {alt2}: the URLs of the scenario's installer folders.
    std::string Expand(std::string text) const;

    void RunLines();
    void Do(const Line& line);
    void Check(const Line& line);
    void RunControl(const std::string& mode, const std::string& expected);
    void Need(const std::string& expected, const std::string& todo);
    void RunClient(const std::string& arguments, const std::string& expected);

    Machine machine_;
    std::map<std::string, std::unique_ptr<testserver::InstallerFolder>> folders_;
    testserver::InstallerFolder* folder_ = nullptr;  // the one setting-up and checking lines mean
    std::string pageUrl_;
    DWORD lastRunMs_ = 0;
    std::map<std::string, std::optional<std::string>> listsBefore_;
    std::string commandRecord_;
    std::string groups_;
    bool unregistered_ = false;
    std::string clientOutput_;  // what CorvanClient.exe printed in its last run
    std::deque<std::string> answers_;
    Texts boxes_;
    Texts heard_;       // the page's events of the last run: "1:error", "2:status"
    Texts runLog_;      // the install log lines of the last run
    std::string serverList_;
};

void Scenario::RunControl(const std::string& mode, const std::string& expected) {
    const size_t logged = winbench::FileExists("C:\\TALO\\SC_Install.log") ? control_tests::LogMessages().size() : 0;
    for (const char* list : kListFiles) listsBefore_[list] = ListFile(list);
    // Every install run is first planned by scl, the publisher's preview,
    // on the same lists and machine; the two must agree.
    const bool plan = mode == "1" && ChecksThePlan();
    RunSteps planned;
    if (plan) planned = PlannedSteps(winbench::ReadFileBytes(folder_->Path() + "SC_Install.scl"), groups_, GetParam().name);
    Page page(InstallerUrl(), groups_, Server());
    ASSERT_TRUE(page.Ready());
    QuestionAnswerer answerer(answers_, boxes_);
    VARIANT argument = control_tests::Long(std::stol(mode));
    const DWORD start = GetTickCount();
    VARIANT result = Call(page.control.Get(), L"Run", DISPATCH_METHOD, &argument);
    lastRunMs_ = GetTickCount() - start;
    heard_ = page.sink.heard;
    const std::string got = V_VT(&result) == VT_EMPTY ? "Empty"
                            : V_VT(&result) == VT_BOOL ? (V_BOOL(&result) ? "True" : "False")
                                                       : "(not a Boolean)";
    EXPECT_EQ(got, expected) << "Run(" << mode << ")";
    const Texts log = control_tests::LogMessages();
    runLog_.assign(log.begin() + static_cast<ptrdiff_t>(std::min(logged, log.size())), log.end());
    if (plan) {
        EXPECT_TRUE(planned == LoggedSteps(runLog_)) << "scl plan disagrees with the run:\n"
                                                     << planned.text << "the run's log:\n" << Join(runLog_, "\n");
    }
}

void Scenario::Need(const std::string& expected, const std::string& todo) {
    {
        Page page(InstallerUrl(), groups_, Server());
        ASSERT_TRUE(page.Ready());
        VARIANT need = Call(page.control.Get(), L"NeedToInstall");
        heard_ = page.sink.heard;
        EXPECT_EQ(V_VT(&need) == VT_BOOL && V_BOOL(&need) ? "True" : "False", expected) << "NeedToInstall";
    }
    // NeedToDo is the engine's own, not the control's: asked of an engine
    // in this process, on the same machine.
    EXPECT_EQ(EngineNeedToDo(InstallerUrl()), todo == "-" ? "" : todo) << "NeedToDo";
}

std::string Scenario::Expand(std::string text) const {
    for (const auto& [role, folder] : folders_)
        for (size_t at; (at = text.find("{" + role + "}")) != std::string::npos;)
            text.replace(at, role.size() + 2, folder->URL());
    return text;
}

// CorvanClient.exe as a help desk or a deployment script runs it: the
// scenario's installer and groups unless the arguments name their own.
void Scenario::RunClient(const std::string& arguments, const std::string& expected) {
    const size_t logged = winbench::FileExists("C:\\TALO\\SC_Install.log") ? control_tests::LogMessages().size() : 0;
    std::string command = "\"" + winbench::OutDir() + "\\CorvanClient.exe\" " + arguments;
    if (arguments.find("/url") == std::string::npos) command += " /url " + folder_->URL() + "default.asp";
    if (!groups_.empty()) command += " /groups \"" + groups_ + "\"";
    winbench::ChildResult run = winbench::RunAndWait(command);
    clientOutput_ = run.output;
    EXPECT_EQ(std::to_string(run.exitCode), expected) << command << "\n" << run.output;
    const Texts log = winbench::FileExists("C:\\TALO\\SC_Install.log") ? control_tests::LogMessages() : Texts();
    runLog_.assign(log.begin() + static_cast<ptrdiff_t>(std::min(logged, log.size())), log.end());
}

void Scenario::Do(const Line& line) {
    const std::string text = Expand(line.text);
    if (line.keyword == "at") {
        ASSERT_TRUE(folders_.count(text)) << text;
        folder_ = folders_[text].get();
    } else if (line.keyword == "url") {
        pageUrl_ = FailingInstallerUrl(text, GetParam().name);
    } else if (line.keyword == "misbehave") {
        const size_t blank = text.find(' ');
        folder_->Misbehave(FileOf(text.substr(0, blank)), text.substr(blank + 1));
    } else if (line.keyword == "readonly") {
        machine_.ReadOnly(text);
    } else if (line.keyword == "hold") {
        machine_.HoldOpen(text);
    } else if (line.keyword == "talofile") {
        machine_.TaloIsAFile();
    } else if (line.keyword == "notalo") {
        winbench::RemoveTree("C:\\TALO");
    } else if (line.keyword == "publish") {
        Texts rows;
        for (const std::string& entry : Split(text, "|")) rows.push_back(PublishRow(*folder_, entry));
        folder_->WriteList(rows);
    } else if (line.keyword == "list") {
        folder_->Write("SC_Install.scl", text.empty() ? "" : text + "\r\n");
    } else if (line.keyword == "unpublish") {
        folder_->Remove(FileOf(text));
    } else if (line.keyword == "local") {
        std::string list;
        for (const std::string& entry : Split(text, "|")) list += PublishRow(*folder_, entry) + "\r\n";
        winbench::WriteFileBytes("C:\\TALO\\SC_Install.scl", list);
    } else if (line.keyword == "delete") {
        EXPECT_TRUE(DeleteFileA(text.c_str())) << text;
    } else if (line.keyword == "machine") {
        machine_.ProductName(text);
    } else if (line.keyword == "ie") {
        machine_.ExplorerVersionVector(text);
    } else if (line.keyword == "tempfile") {
        machine_.TempIsAFile();
    } else if (line.keyword == "groups") {
        groups_ = text;
    } else if (line.keyword == "answer") {
        for (const std::string& answer : Split(text, " ")) answers_.push_back(answer);
    } else if (line.keyword == "run") {
        const Texts words = Split(text, " ");
        boxes_.clear();
        RunControl(words.at(0), words.at(1));
    } else if (line.keyword == "client") {
        const size_t arrow = text.rfind(" => ");
        ASSERT_NE(arrow, std::string::npos) << "line " << line.number << ": client <arguments> => <exit code>";
        RunClient(text.substr(0, arrow), text.substr(arrow + 4));
    } else if (line.keyword == "unregistered") {
        ASSERT_TRUE(control_tests::Regsvr32(winbench::OutDir() + "\\CorvanInstaller.ocx", true));
        unregistered_ = true;
    } else if (line.keyword == "need") {
        const Texts words = Split(text, " ");
        Need(words.at(0), words.at(1));
    } else {
        Check(line);
    }
}

void Scenario::Check(const Line& line) {
    const std::string text = Expand(line.text);
    if (line.keyword == "statuses") {
        Texts statuses;
        for (const std::string& event : heard_)
            if (event.rfind("2:", 0) == 0) statuses.push_back(event.substr(2));
        EXPECT_EQ(Join(statuses, ", "), text);
    } else if (line.keyword == "errors") {
        Texts errors;
        for (const std::string& event : heard_)
            if (event.rfind("1:", 0) == 0) errors.push_back(event.substr(2));
        const size_t blank = text.find(' ');
        EXPECT_EQ(std::to_string(errors.size()), text.substr(0, blank)) << Join(errors, "\n");
        if (blank != std::string::npos && !errors.empty())
            EXPECT_NE(errors.front().find(text.substr(blank + 1)), std::string::npos) << errors.front();
    } else if (line.keyword == "log") {
        auto at = runLog_.begin();
        for (const std::string& wanted : Split(text, " | ")) {
            at = std::find(at, runLog_.end(), wanted);
            ASSERT_NE(at, runLog_.end()) << "not logged in this order: " << wanted << "\n" << Join(runLog_, "\n");
        }
    } else if (line.keyword == "nolog") {
        EXPECT_EQ(std::find(runLog_.begin(), runLog_.end(), text), runLog_.end()) << text;
    } else if (line.keyword == "talo") {
        EXPECT_EQ(FolderEntries(kApplicationFolder), SortedWords(text));
    } else if (line.keyword == "backup") {
        EXPECT_EQ(FolderEntries("C:\\Temp\\Talo\\Backup\\"), SortedWords(text));
    } else if (line.keyword == "lists") {
        for (const std::string& part : Split(text, " ")) {
            const size_t equals = part.find('=');
            const std::string which = part.substr(0, equals), wanted = part.substr(equals + 1);
            const char* path = kListFiles[which == "local" ? 0 : 1];
            if (wanted == "old")
                EXPECT_EQ(ListFile(path), listsBefore_[path]) << which << " changed";
            else if (which == "local" && wanted == "server")
                EXPECT_EQ(WithoutPadding(winbench::ReadFileBytes("C:\\TALO\\SC_Install.scl")),
                          winbench::ReadFileBytes(folder_->Path() + "SC_Install.scl"));
            else
                EXPECT_EQ(ListPackages(which == "local" ? "C:\\TALO\\SC_Install.scl" : "C:\\TALO\\SC_Uninstall.scl"),
                          wanted)
                    << which;
        }
    } else if (line.keyword == "registry") {
        for (const std::string& part : Split(text, " ")) {
            const size_t equals = part.find('=');
            EXPECT_EQ(machine_.Mark(part.substr(0, equals)), part.substr(equals + 1)) << part;
        }
    } else if (line.keyword == "commands") {
        Texts switches;
        for (const std::string& command : Split(winbench::ReadFileBytes(commandRecord_), "\r\n")) {
            const size_t name = command.find(testpackages::kExe);
            if (name == std::string::npos) continue;
            std::string rest = command.substr(name + std::string(testpackages::kExe).size());
            if (!rest.empty() && rest.front() == '"') rest.erase(0, 1);
            switches.push_back(corvan::Trim(rest));
        }
        EXPECT_EQ(Join(switches, " | "), text);
    } else if (line.keyword == "downloads") {
        for (const std::string& part : Split(text, " ")) {
            const size_t equals = part.find('=');
            EXPECT_EQ(std::to_string(folder_->Requests(FileOf(part.substr(0, equals)))), part.substr(equals + 1))
                << part;
        }
    } else if (line.keyword == "output") {
        size_t at = 0;
        for (const std::string& wanted : Split(text, " | ")) {
            at = clientOutput_.find(wanted, at);
            ASSERT_NE(at, std::string::npos) << "not printed in this order: " << wanted << "\n" << clientOutput_;
        }
    } else if (line.keyword == "within") {
        EXPECT_LT(lastRunMs_, std::stoul(text) * 1000) << "the run took " << lastRunMs_ << " ms";
    } else if (line.keyword == "answers") {
        const size_t blank = text.find(' ');
        EXPECT_EQ(Join(folder_->Answers(FileOf(text.substr(0, blank))), " | "), text.substr(blank + 1));
    } else if (line.keyword == "boxes") {
        EXPECT_EQ(Join(boxes_, ", "), text);
    } else {
        FAIL() << "line " << line.number << ": unknown keyword " << line.keyword;
    }
}

void Scenario::RunLines() {
    for (const Line& line : GetParam().lines) {
        SCOPED_TRACE("line " + std::to_string(line.number) + ": " + line.keyword + " " + line.text);
        Do(line);
        if (HasFatalFailure()) return;
    }
}

TEST_P(Scenario, Runs) { RunLines(); }

INSTANTIATE_TEST_SUITE_P(Table, Scenario, ::testing::ValuesIn(LoadScenarios()),
                         [](const auto& info) { return info.param.name; });

// The fault matrix: the same harness, with the control built for it
// (CorvanInstallerFaults.ocx, beside this program).
class Fault : public Scenario {
protected:
    std::string Server() const override {
        char self[MAX_PATH] = {};
        GetModuleFileNameA(nullptr, self, MAX_PATH);
        const std::string path = self;
        return path.substr(0, path.find_last_of('\\') + 1) + "CorvanInstallerFaults.ocx";
    }
    // A run the server or the PC cuts short does not follow a plan made
    // from the lists; the plan's agreement is the normal runs' to show.
    bool ChecksThePlan() const override { return false; }
};

TEST_P(Fault, Runs) { RunLines(); }

INSTANTIATE_TEST_SUITE_P(Matrix, Fault, ::testing::ValuesIn(LoadScenarios("faults.txt")),
                         [](const auto& info) { return info.param.name; });

}  // namespace e2e
