#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/reg_variant.h"

// The rules by which one line of the trust table becomes one registry value.
namespace corvan::security {

// The four fields of "hive,key,value name,data", split at every ",".
// Blanks are kept in every field; fields beyond the fourth are ignored.
struct RegistryLine {
    std::string hive;
    std::string key;
    std::string valueName;
    std::string data;
    bool complete = false;  // false when the line had fewer than four fields
};

RegistryLine SplitRegistryLine(std::string_view line);

// The predefined key of a hive name, matched exactly (case and all):
// HKEY_CLASSES_ROOT 0x80000000 ... HKEY_USERS 0x80000003; anything else 0.
int32_t HiveRootKey(std::string_view hive);

// What is written for a data field: a 32-bit number when the text passes the
// numeric-text test (" 1", "&H10"; not "0x10"), else the text itself.
// Raises Overflow (6) for numeric text that does not fit in 32 bits.
RegVariant RegistryData(const std::string& data);

// The line with every line feed that is directly followed by a carriage
// return removed, both characters; a carriage return before a line feed
// stays.
std::string WithoutLineFeedReturns(std::string_view line);

// "Updating: " + value name + "\" + data + " - Success" (or " - Failed").
std::string UpdatingMessage(const RegistryLine& line, bool written);

}  // namespace corvan::security
