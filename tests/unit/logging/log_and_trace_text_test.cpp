#include "../harness.h"
#include "logging/clsLog.h"
#include "logging/trace_text.h"
#include <thread>

// Each value of a trace ends with a tab, arrays expand, Booleans and numbers
// in the runtime's form (the log line's and the trace stamp's shape are the
// log_trace fuzzer's rules).
TEST(TraceText, ValuesEachEndWithATabAndArraysExpand) {
    EXPECT_EQ(BuildTraceBody({std::string("x"), std::vector<std::string>{"1", "2"}, 7, true, false, 0.25f, -3.0, 1.5e-7}),
              "x\t1\t2\t7\tTrue\tFalse\t0.25\t-3\t1.5E-07\t");
}

// Two controls on two threads run sessions on the one log of the process: a
// close on one thread never meets a write on the other (a write after the
// other's close opens the default file, in the current folder).
TEST(ClsLog, SessionsOnTwoThreadsShareTheLogSafely) {
    const Scratch scratch;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.dir);
    clsLog log;
    auto session = [&] {
        log.OpenLogFile("SC_Install.log", scratch.dir + "/", true);
        log.WriteLogEvent("a line long enough to be more than a few bytes of the file");
        log.CloseLogFile();
    };
    std::thread other([&] {
        for (int i = 0; i < 3000; ++i) session();
    });
    for (int i = 0; i < 3000; ++i) session();
    other.join();
    std::filesystem::current_path(before);
}
