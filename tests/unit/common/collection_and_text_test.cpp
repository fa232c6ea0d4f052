#include <gtest/gtest.h>

#include <vector>

#include "common/failure.h"
#include "common/keyed_collection.h"
#include "common/text.h"
#include "raised.h"

using namespace corvan;

TEST(KeyedCollection, KeepsInsertionOrderAndFindsKeysWithoutCase) {
    KeyedCollection<int> items;
    items.Add("c:\\talo\\B.dll", 2);
    items.Add("c:\\talo\\a.ocx", 1);
    items.Add("C:\\TALO\\c.exe", 3);
    EXPECT_EQ(items.Count(), 3u);
    EXPECT_EQ(items.Item("C:\\TALO\\b.DLL"), 2);
    ASSERT_NE(items.Find("c:\\talo\\C.EXE"), nullptr);
    EXPECT_EQ(items.Find("missing"), nullptr);

    items.Remove("C:\\talo\\A.ocx");
    std::vector<std::string> keys;
    for (const auto& entry : items) keys.push_back(entry.first);
    EXPECT_EQ(keys, (std::vector<std::string>{"c:\\talo\\B.dll", "C:\\TALO\\c.exe"}));

    items.Add("c:\\talo\\a.ocx", 4);  // a removed key may come back, at the end
    EXPECT_EQ(items.begin()->second, 2);
    KeyedCollection<int> copy = items;
    items.Clear();
    EXPECT_EQ(copy.Item("C:\\TALO\\A.OCX"), 4);
    EXPECT_EQ(items.Count(), 0u);
}

TEST(KeyedCollection, DuplicateAndMissingKeysFailWithTheRuntimeNumbers) {
    KeyedCollection<std::string> items;
    items.Add("ROOT", "c:\\TALO\\");
    EXPECT_EQ(testing_support::Raised([&] { items.Add("root", "other"); }).Number(), 457);
    EXPECT_EQ(items.Item("Root"), "c:\\TALO\\");
    EXPECT_THROW(items.Item("nothing"), Failure);
    EXPECT_THROW(items.Remove("nothing"), Failure);
    EXPECT_EQ(items.Count(), 1u);
}

TEST(Text, TrimRemovesBlanksOnly) {
    EXPECT_EQ(Trim("  a b  "), "a b");
    EXPECT_EQ(Trim("\ta\t"), "\ta\t");
    EXPECT_EQ(Trim("   "), "");
    EXPECT_EQ(LTrim("  a "), "a ");
    EXPECT_EQ(RTrim("  a "), "  a");
}
