// The run session and the engine's events, driven in process with a
// recording engine and a scripted desktop.
#include <gtest/gtest.h>

#include <windows.h>

#include "common/this_module.h"
#include "control/ManageClient.h"
#include "platform/clsWindowTools.h"
#include "recording_engine.h"
#include "scripted_desktop.h"
#include "session_log.h"
#include "settings/modCorvanInstaller_Global.h"

using namespace control_tests;

namespace {

struct PageEvents : corvan::ManageClientEvents {
    std::vector<std::string> heard;
    void InstallError(const std::string& message) override { heard.push_back("InstallError:" + message); }
    void InstallStatus(const std::string& message) override { heard.push_back("InstallStatus:" + message); }
};

std::string Journal() {
    char buffer[8192];
    RecordingEngineJournal(buffer, sizeof buffer);
    return buffer;
}

class Session : public ::testing::Test {
protected:
    void SetUp() override {
        winbench::RemoveTree("C:\\TALO");
        RecordingEngineSetScript("");
    }
    void TearDown() override { winbench::RemoveTree("C:\\TALO"); }

    testing_support::ScriptedDesktop desktop;
    PageEvents page;
};

TEST_F(Session, ModesWithoutEngineWriteHeaderAndFooterOnlyAndReturnEmpty) {
    RecordingEngineSetScript("status|IDLE\n");
    corvan::ManageClient control(desktop, page);
    control.UsersGroups("Dealers,Sales");
    for (int16_t mode : {0, 6}) {
        EXPECT_FALSE(control.Run(mode).has_value()) << mode;
    }
    EXPECT_EQ(Journal().find("PrepInstaller"), std::string::npos);
    EXPECT_EQ(page.heard, (std::vector<std::string>{"InstallStatus:Complete", "InstallStatus:Complete"}));
    EXPECT_EQ(desktop.pointers, (std::vector<int>{11, 0, 11, 0}));
    EXPECT_FALSE(control.Busy());
    EXPECT_FALSE(control.Monitor().Enabled());

    corvan::clsWindowTools tools;
    HeaderFacts facts{"IDLE", tools.VersionName(), tools.VersionNo(), tools.ServicePack(), tools.BuildNo(),
                      "Dealers,Sales"};
    std::vector<std::string> session = ExpectedHeader(
        facts, std::to_string(reinterpret_cast<uintptr_t>(corvan::ThisModule())), std::to_string(GetCurrentThreadId()));
    for (const std::string& line : ExpectedFooter("IDLE")) session.push_back(line);
    // Two sessions append to the same log, each with its own header and footer.
    std::vector<std::string> both = session;
    both.insert(both.end(), session.begin(), session.end());
    EXPECT_EQ(LogMessages(), both);
}

TEST_F(Session, EachModeCallsTheEngineAsTheTableSays) {
    corvan::ManageClient control(desktop, page);
    struct Case {
        int16_t mode;
        const char* call;
        bool transferVisible;
    } cases[] = {{1, "PrepInstaller(1,False)", true}, {5, "PrepInstaller(1,False)", true},
                 {2, "PrepInstaller(1,True)", true},  {3, "PrepInstaller(3,False)", false},
                 {4, "PrepInstaller(4,False)", false}};
    for (const Case& c : cases) {
        RecordingEngineSetScript(c.mode == 4 ? "result|False\n" : "");
        std::optional<bool> result = control.Run(c.mode);
        ASSERT_TRUE(result.has_value()) << c.mode;
        EXPECT_EQ(*result, c.mode != 4) << c.mode;
        EXPECT_EQ(Journal().substr(0, Journal().find(' ')), c.call) << c.mode;
        EXPECT_EQ(control.Surface().TransferLineVisible(), c.transferVisible) << c.mode;
    }
}

TEST_F(Session, EngineEventsAreLoggedTracedKeptAndPassedOnInOrder) {
    RecordingEngineSetScript(
        "status|INSTALL\n"
        "InstallationStatus|Preparing\n"
        "StatusMsgChange|Opening FTP Server...\n"
        "ProgressUpdate|0.25\n"
        "FTPStatus|0.5|setup.msi\n"
        "FTPStatus|-1|\n"
        "InstallerError|-2147221504 - clsInstall.PrepInstaller - broken - clsInstall.PreInstaller\n");
    corvan::ManageClient control(desktop, page);
    const std::string before = corvan::ProcessStatusReport().Text();
    control.Run(1);

    EXPECT_EQ(page.heard,
              (std::vector<std::string>{
                  "InstallStatus:Preparing",
                  "InstallError:-2147221504 - clsInstall.PrepInstaller - broken - clsInstall.PreInstaller",
                  "InstallStatus:Complete"}));
    EXPECT_GE(desktop.pumps, 1);

    std::vector<std::string> log = LogMessages();
    ASSERT_EQ(log.size(), 13u + 2u + 3u);
    EXPECT_EQ(log[13], "Opening FTP Server...");
    EXPECT_EQ(log[14], "-2147221504 - clsInstall.PrepInstaller - broken - clsInstall.PreInstaller");

    const corvan::ControlSurface& surface = control.Surface();
    EXPECT_EQ(surface.LastMessage(), "-2147221504 - clsInstall.PrepInstaller - broken - clsInstall.PreInstaller");
    EXPECT_FLOAT_EQ(surface.ProgressFraction(), 0.25f);
    EXPECT_EQ(surface.TransferText(), "setup.msi");
    EXPECT_EQ(surface.TransferCaption(), "setup.msi - 50%");

    std::string added = corvan::ProcessStatusReport().Text().substr(before.size());
    std::regex lines(R"(^\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : Opening FTP Server\.\.\.\r\n)"
                     R"(\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : -2147221504 - .* - clsInstall\.PreInstaller\r\n$)");
    EXPECT_TRUE(std::regex_match(added, lines)) << added;
}

TEST_F(Session, UrlIsCutAfterItsLastSlashAndATextWithoutOneChangesNothing) {
    corvan::ManageClient control(desktop, page);
    control.URL("https://h/a/b/page.asp");
    EXPECT_EQ(corvan::modCorvanInstaller_Global().MasterUrlSource, "https://h/a/b/");
    control.URL("page.asp");
    EXPECT_EQ(corvan::modCorvanInstaller_Global().MasterUrlSource, "https://h/a/b/");
    control.Run(1);
    EXPECT_NE(Journal().find("url=https://h/a/b/\n"), std::string::npos) << Journal();
}

TEST_F(Session, EngineIsGivenItsListPathsAtCreation) {
    corvan::ManageClient control(desktop, page);
    EXPECT_EQ(Journal(), "InstallFile=c:\\TALO\\SC_Install.scl\nUnInstallFile=c:\\TALO\\SC_Uninstall.scl\n");
}

TEST_F(Session, MissingApplicationFolderIsCreatedBeforeTheLogOpens) {
    ASSERT_FALSE(winbench::FileExists("C:\\TALO"));
    corvan::ManageClient control(desktop, page);
    control.Run(0);
    DWORD attributes = GetFileAttributesA("C:\\TALO");
    ASSERT_NE(attributes, INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(attributes & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(LogMessages().size(), 16u);
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(Session, AFailedSessionShowsItsErrorAndStopsBeforeTheFooter) {
    // A file where the folder should be: the log cannot be opened.
    winbench::WriteFileBytes("C:\\TALO", "not a folder");
    corvan::ManageClient control(desktop, page);
    EXPECT_FALSE(control.Run(1).has_value());
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "76: Path not found\r\nSource: CorvanInstaller - Run");
    EXPECT_EQ(desktop.pointers, std::vector<int>{11});
    EXPECT_TRUE(page.heard.empty());
    EXPECT_FALSE(control.Monitor().Enabled());
    EXPECT_FALSE(control.Busy());
    DeleteFileA("C:\\TALO");
}

TEST_F(Session, NeedToInstallAsksTheEngineAndReportsTheAnswer) {
    RecordingEngineSetScript("need|True\n");
    corvan::ManageClient control(desktop, page);
    const std::string before = corvan::ProcessStatusReport().Text();
    EXPECT_TRUE(control.NeedToInstall());
    RecordingEngineSetScript("need|False\n");
    EXPECT_FALSE(control.NeedToInstall());
    std::string added = corvan::ProcessStatusReport().Text().substr(before.size());
    EXPECT_TRUE(std::regex_match(added, std::regex(R"(^.{21} : NeedToInstall: True\r\n.{21} : NeedToInstall: False\r\n$)")))
        << added;
}

}  // namespace
