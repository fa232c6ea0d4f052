// Wine's own script host creates the registered control from JScript: a
// client we did not write.
#include <gtest/gtest.h>

#include "probe_server.h"
#include "session_log.h"

using namespace control_tests;

namespace {

TEST_F(Page, JScriptCreatesTheControlRunsMode0AndReadsUsersGroupsBack) {
    winbench::ScratchFolder scratch("control-script-host");
    const std::string script = scratch.Path() + "page.js";
    winbench::WriteFileBytes(script,
                             "var control = new ActiveXObject(\"CorvanInstaller.ManageClient\");\r\n"
                             "control.URL = \"https://h/a/b/page.asp\";\r\n"
                             "control.UsersGroups = \"Dealers;Service\";\r\n"
                             "var result = control.Run(0);\r\n"
                             "WScript.Echo(\"result=\" + typeof(result));\r\n"
                             "WScript.Echo(\"groups=\" + control.UsersGroups);\r\n"
                             "WScript.Echo(\"window=\" + control.hwnd);\r\n"
                             "var shell = new ActiveXObject(\"WScript.Shell\");\r\n"
                             "WScript.Echo(\"host=\" + shell.ExpandEnvironmentStrings(\"%PROCESSOR_ARCHITECTURE%\"));\r\n");
    winbench::ChildResult run = winbench::RunAndWait("cscript.exe //nologo \"" + script + "\"");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("result=undefined"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("groups=Dealers;Service"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("window=0"), std::string::npos) << run.output;
    // The script host of our own architecture: on x86 the 32-bit one, which
    // loads the 32-bit server from the 32-bit registry view.
    EXPECT_NE(run.output.find(sizeof(void*) == 4 ? "host=x86" : "host=AMD64"), std::string::npos) << run.output;

    // The log it leaves, to the character. The script host's module handle
    // and thread are its own; they must be plain decimal numbers.
    std::vector<std::string> log = LogMessages();
    ASSERT_EQ(log.size(), 16u);
    std::regex number("^(hInstance|ThreadID): ([0-9]+)$");
    std::smatch instance, thread;
    ASSERT_TRUE(std::regex_match(log[3], instance, number)) << log[3];
    ASSERT_TRUE(std::regex_match(log[4], thread, number)) << log[4];
    EXPECT_NE(instance[2], "0");
    EXPECT_EQ(log, ExpectedSession("", "Dealers;Service", instance[2], thread[2]));
}

}  // namespace
