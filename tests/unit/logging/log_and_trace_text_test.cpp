#include <gtest/gtest.h>

#include "logging/log_line.h"
#include "logging/trace_text.h"

using namespace corvan;

// Every field two digits (four for the year), hours 00 to 23.
TEST(LogLine, HasTheExactShape) {
    EXPECT_EQ(FormatLogLine({2026, 1, 2, 3, 4, 5}, "Hello"), "TimeStamp: 01/02/2026 - 03:04:05\tHello\r\n");
    EXPECT_EQ(FormatLogLine({1999, 12, 31, 23, 59, 58}, "\r\n"), "TimeStamp: 12/31/1999 - 23:59:58\t\r\n\r\n");
}

TEST(TraceText, ValuesEachEndWithATabAndArraysExpand) {
    EXPECT_EQ(BuildTraceBody({"a", "b"}), "a\tb\t");
    EXPECT_EQ(BuildTraceBody({}), "");
    EXPECT_EQ(BuildTraceBody({std::string("x"), std::vector<std::string>{"1", "2"}, 7, true, false}),
              "x\t1\t2\t7\tTrue\tFalse\t");
    EXPECT_EQ(BuildTraceBody({0.5, 0.25f, -3.0, 1e20, 1.5e-7}), "0.5\t0.25\t-3\t1E+20\t1.5E-07\t");
    EXPECT_EQ(BuildTracePrefix("CorvanInstaller", 268435456u, 42u, {2026, 11, 23, 21, 8, 7}),
              "CorvanInstaller: 268435456: 42: 20261123 210807: ");
}
