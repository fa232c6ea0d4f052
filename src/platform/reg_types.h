#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/failure.h"
#include "platform/reg_variant.h"

// How a value becomes registry data. Kept free of the registry itself so the
// rules can be checked without Windows.
namespace corvan::reg {

inline constexpr int32_t kRegSz = 1;
inline constexpr int32_t kRegExpandSz = 2;
inline constexpr int32_t kRegBinary = 3;
inline constexpr int32_t kRegDword = 4;
inline constexpr int32_t kRegDwordBigEndian = 5;
inline constexpr int32_t kRegMultiSz = 7;

// Raised when binary data is asked for and the value holds no byte array.
inline constexpr int32_t kNotAByteArray = 26001;

// Integers are DWORDs, strings REG_SZ, byte arrays REG_BINARY; anything else
// (Booleans, floating point, dates, Empty) is 0: the registry has no form
// for it that would read back as the same value.
int32_t GetValueType(const RegVariant& data);

// A text becomes REG_EXPAND_SZ only when a second "%" stands at least two
// characters after the first one: "%TEMP%\x" does, "50%" and "%%" do not.
int32_t TextValueType(std::string_view text);

// What to hand RegSetValueExA. status 13 means nothing may be written.
struct RegWrite {
    int32_t type = 0;
    std::vector<uint8_t> data;
    int32_t status = 0;
    bool write = false;
};

// The write for `data` under the type GetValueType chose.
RegWrite PlanRegWrite(const RegVariant& data);
// The same for a given type; raises 26001 when type 3 meets something that
// is not a byte array, 9 when the byte array has no element 0.
RegWrite PlanRegWriteAs(int32_t type, const RegVariant& data);

int32_t SwapEndian(int32_t value);

// The source of a re-raised error: the old source, the method's context,
// the arguments joined by ",", and the tail.
std::string ContextSource(std::string_view source, std::string_view context,
                          const std::vector<std::string>& arguments, std::string_view tail);

// The same Failure with its source extended as above.
Failure WithContext(const Failure& failure, std::string_view context,
                    const std::vector<std::string>& arguments, std::string_view tail = {});

}  // namespace corvan::reg
