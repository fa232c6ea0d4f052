#include <clocale>

#include "../harness.h"
#include "common/conversions.h"
#include "common/keyed_collection.h"
#include "common/text.h"
#include "common/tick_count.h"

TEST(Conversions, EachReaderOnItsTable) {
    const std::map<std::string, std::function<double(const std::string&)>> readers = {
        {"LenientNumber", [](const std::string& t) { return LenientNumber(t); }},
        {"LenientLong", [](const std::string& t) { return LenientLong(t); }},
        {"StrictInteger", [](const std::string& t) { return StrictInteger(t); }},
        {"StrictLong", [](const std::string& t) { return StrictLong(t); }},
        {"StrictDouble", [](const std::string& t) { return StrictDouble(t); }},
        {"StrictBoolean", [](const std::string& t) { return StrictBoolean(t); }}};
    for (const auto& c : unit_table::Table("common/common.txt", "readers")) {
        const auto& read = readers.at(c[0]);
        if (c[2].rfind("error ", 0) == 0) {
            EXPECT_EQ(Raised([&] { read(c[1]); }).Number(), std::stoi(c[2].substr(6))) << c.where;
        } else {
            EXPECT_EQ(read(c[1]), std::stod(c[2])) << c.where;
        }
    }
}

// A host that sets a locale with a decimal comma reads numbers as before.
TEST(Conversions, TheHostsLocaleDoesNotChangeThePoint) {
    const char* used = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE", "German_Germany.1252", "German"})
        if (!used && std::setlocale(LC_ALL, name)) used = name;
    if (!used) GTEST_SKIP() << "no locale with a decimal comma on this machine";
    const double read[] = {StrictDouble("2.5"), LenientNumber("2.5x"), LenientNumber("2,5"), double(StrictInteger("2.5"))};
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(std::vector<double>(std::begin(read), std::end(read)), (std::vector<double>{2.5, 2.5, 2, 2})) << used;
}

TEST(TickCount, ExtendsTheThirtyTwoBitCountAcrossItsWrap) {
    for (const auto& c : unit_table::Table("common/common.txt", "ticks"))
        EXPECT_EQ(ExtendTickCount(std::stoull(c[0], nullptr, 0), std::stoul(c[1], nullptr, 0)), std::stoull(c[2], nullptr, 0))
            << c.where;
}

// Keys without case, in insertion order (the list comparison's fuzzer holds
// them to it); the runtime's numbers for a key there twice (457) or missing
// (5); a copy keeps its own items. Trimming takes blanks, not tabs.
TEST(KeyedCollection, RuntimeNumbersAndCopies) {
    KeyedCollection<int> items;
    items.Add("c:\\talo\\B.dll", 2);
    EXPECT_EQ(Raised([&] { items.Add("C:\\TALO\\b.DLL", 9); }).Number(), 457);
    EXPECT_EQ(Raised([&] { items.Item("missing"); }).Number(), 5);
    EXPECT_EQ(Raised([&] { items.Remove("missing"); }).Number(), 5);
    const KeyedCollection<int> copy = items;
    items.Clear();
    EXPECT_EQ(std::to_string(copy.Item("C:\\TALO\\B.DLL")) + " " + std::to_string(items.Count()), "2 0");
    EXPECT_EQ(Trim("  a\tb  ") + "|" + LTrim("  a ") + "|" + RTrim("  a ") + "|" + Trim("   "), "a\tb|a |  a|");
}
