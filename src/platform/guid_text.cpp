#include "platform/guid_text.h"

#include <cstdio>

namespace corvan {

std::string GuidText(uint32_t data1, uint16_t data2, uint16_t data3, const uint8_t (&data4)[8]) {
    char text[40];
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", data1, data2, data3,
                  data4[0], data4[1], data4[2], data4[3], data4[4], data4[5], data4[6], data4[7]);
    return text;
}

}  // namespace corvan
