#pragma once
#include <array>
#include <string_view>

namespace corvan::scl {

// The seventeen columns of a packing-list row, by the item's property names.
inline constexpr std::array<std::string_view, 17> kColumnNames = {
    "OS",           "Source",        "FileName",        "Version",       "ReleaseDate", "CRC",
    "Description",  "Productname",   "Flag",            "InstallSwitch", "UninstallSwitch",
    "LocalSource",  "InstallFolder", "InstallGroup",    "Register",      "ExecutePackage",
    "InstallFileName",
};

namespace column {
inline constexpr size_t kOS = 0, kSource = 1, kFileName = 2, kCRC = 5, kFlag = 8, kInstallFolder = 12,
                        kRegister = 14, kExecutePackage = 15;
}

}  // namespace corvan::scl
