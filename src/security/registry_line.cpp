#include "security/registry_line.h"

#include "common/conversions.h"

namespace corvan::security {

RegistryLine SplitRegistryLine(std::string_view line) {
    RegistryLine result;
    std::string* const fields[] = {&result.hive, &result.key, &result.valueName, &result.data};
    size_t count = 0;
    size_t start = 0;
    for (;;) {
        const size_t comma = line.find(',', start);
        const size_t end = comma == std::string_view::npos ? line.size() : comma;
        if (count < 4) fields[count]->assign(line.substr(start, end - start));
        ++count;
        if (comma == std::string_view::npos) break;
        start = comma + 1;
    }
    result.complete = count >= 4;
    return result;
}

int32_t HiveRootKey(std::string_view hive) {
    if (hive == "HKEY_CLASSES_ROOT") return static_cast<int32_t>(0x80000000u);
    if (hive == "HKEY_CURRENT_USER") return static_cast<int32_t>(0x80000001u);
    if (hive == "HKEY_LOCAL_MACHINE") return static_cast<int32_t>(0x80000002u);
    if (hive == "HKEY_USERS") return static_cast<int32_t>(0x80000003u);
    return 0;
}

RegVariant RegistryData(const std::string& data) {
    // The same test and conversion as the runtime's IsNumeric and CLng: a
    // fraction is rounded, &H patterns keep their 32 bits (&HFFFFFFFF is -1,
    // written as 0xFFFFFFFF).
    if (IsNumericText(data)) return RegVariant::Long(StrictLong(data));
    return RegVariant::String(data);
}

std::string WithoutLineFeedReturns(std::string_view line) {
    std::string result;
    result.reserve(line.size());
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\n' && i + 1 < line.size() && line[i + 1] == '\r') {
            ++i;
            continue;
        }
        result += line[i];
    }
    return result;
}

std::string UpdatingMessage(const RegistryLine& line, bool written) {
    return "Updating: " + line.valueName + "\\" + line.data + (written ? " - Success" : " - Failed");
}

}  // namespace corvan::security
