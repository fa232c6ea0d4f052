#include <clocale>

#include "../harness.h"
#include "common/conversions.h"
#include "common/tick_count.h"

TEST(Conversions, EachReaderOnItsTable) {
#define READER(name) {#name, [](const std::string& t) { return double(name(t)); }}
    const std::map<std::string, double (*)(const std::string&)> readers = {READER(LenientNumber),
        READER(LenientLong), READER(StrictInteger), READER(StrictLong), READER(StrictDouble), READER(StrictBoolean)};
    for (const auto& c : Table("common/common.txt", "readers")) {
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
    for (const auto& c : Table("common/common.txt", "ticks"))
        EXPECT_EQ(ExtendTickCount(std::stoull(c[0], nullptr, 0), std::stoul(c[1], nullptr, 0)), std::stoull(c[2], nullptr, 0))
            << c.where;
}
