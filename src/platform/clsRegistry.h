#pragma once
#include <cstdint>
#include <string>

#include "platform/reg_variant.h"

namespace corvan {

// Reads and writes registry values through the ANSI registry functions.
// Root keys are the predefined handle numbers (0x80000001 HKEY_CURRENT_USER,
// 0x80000002 HKEY_LOCAL_MACHINE); key handles travel as 32-bit numbers.
class clsRegistry {
public:
    // Deletes the subkey `subKeyName` of root\keyPath (not the key itself).
    bool DeleteBranch(int32_t rootKey, const std::string& keyPath, const std::string& subKeyName);
    // Deletes the value `valueName` of root\keyPath.
    bool DeleteKey(int32_t rootKey, const std::string& keyPath, const std::string& valueName);

    // The value, or `defaultValue` exactly as given when the key or value is
    // missing. Strings lose their terminator, REG_EXPAND_SZ comes back
    // expanded, big-endian DWORDs swapped, other data as a byte array one
    // element longer than the data.
    RegVariant GetRegSetting(int32_t rootKey, const std::string& keyPath, const std::string& valueName,
                             const RegVariant& defaultValue);

    // Writes `data` with the type its kind calls for; `valueType` is only
    // shown in error sources. False when the key could not be created or the
    // kind has no registry form.
    bool SetRegValue(int32_t rootKey, const std::string& keyPath, const std::string& valueName,
                     const RegVariant& data, const RegVariant& valueType = {});

    int32_t GetValueType(const RegVariant& data);
    int32_t OpenRegKey(int32_t rootKey, const std::string& keyPath);  // 0 on failure
    void CloseRegKey(int32_t keyHandle);
    std::string ExpandEnvStr(const std::string& text);
    int32_t SwapEndian(int32_t value);

    // The type code of the last value GetRegSetting found.
    int32_t LastValueType() const noexcept { return lastValueType_; }

private:
    int32_t lastValueType_ = 0;
};

}  // namespace corvan
