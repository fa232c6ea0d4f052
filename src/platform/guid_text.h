#pragma once
#include <cstdint>
#include <string>

namespace corvan {

// A GUID in registry form: "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}",
// upper-case hexadecimal, each part padded with "0" to its width.
std::string GuidText(uint32_t data1, uint16_t data2, uint16_t data3, const uint8_t (&data4)[8]);

}  // namespace corvan
