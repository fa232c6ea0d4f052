#include "platform/reg_variant.h"

#include <cstdio>

#include "common/text.h"

namespace corvan {

RegVariant RegVariant::Integer(int16_t value) {
    RegVariant v;
    v.kind_ = VariantKind::Integer;
    v.integer_ = value;
    return v;
}

RegVariant RegVariant::Long(int32_t value) {
    RegVariant v;
    v.kind_ = VariantKind::Long;
    v.integer_ = value;
    return v;
}

RegVariant RegVariant::Double(double value) {
    RegVariant v;
    v.kind_ = VariantKind::Double;
    v.number_ = value;
    return v;
}

RegVariant RegVariant::Date(double oleDate) {
    RegVariant v;
    v.kind_ = VariantKind::Date;
    v.number_ = oleDate;
    return v;
}

RegVariant RegVariant::Boolean(bool value) {
    RegVariant v;
    v.kind_ = VariantKind::Boolean;
    v.integer_ = value ? -1 : 0;
    return v;
}

RegVariant RegVariant::String(std::string text) {
    RegVariant v;
    v.kind_ = VariantKind::String;
    v.text_ = std::move(text);
    return v;
}

RegVariant RegVariant::Bytes(std::vector<uint8_t> bytes) {
    RegVariant v;
    v.kind_ = VariantKind::ByteArray;
    v.bytes_ = std::move(bytes);
    return v;
}

std::string RegVariant::DisplayText() const {
    switch (kind_) {
        case VariantKind::Empty: return {};
        case VariantKind::Integer:
        case VariantKind::Long: return std::to_string(integer_);
        case VariantKind::Boolean: return BooleanText(integer_ != 0);
        case VariantKind::String: return text_;
        case VariantKind::Double:
        case VariantKind::Date: {
            char buffer[32];
            std::snprintf(buffer, sizeof buffer, "%.15g", number_);
            return buffer;
        }
        case VariantKind::ByteArray: {
            std::string out;
            char pair[4];
            for (uint8_t b : bytes_) {
                std::snprintf(pair, sizeof pair, "%02X", b);
                if (!out.empty()) out += ' ';
                out += pair;
            }
            return out;
        }
    }
    return {};
}

}  // namespace corvan
