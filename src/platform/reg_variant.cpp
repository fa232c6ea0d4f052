#include "platform/reg_variant.h"

#include <cstdio>

#include "common/text.h"

namespace corvan {

RegVariant::RegVariant(VariantKind kind, int32_t integer, double number)
    : kind_(kind), integer_(integer), number_(number) {}

RegVariant RegVariant::Integer(int16_t value) { return RegVariant(VariantKind::Integer, value, 0); }
RegVariant RegVariant::Long(int32_t value) { return RegVariant(VariantKind::Long, value, 0); }
RegVariant RegVariant::Double(double value) { return RegVariant(VariantKind::Double, 0, value); }
RegVariant RegVariant::Date(double oleDate) { return RegVariant(VariantKind::Date, 0, oleDate); }
RegVariant RegVariant::Boolean(bool value) { return RegVariant(VariantKind::Boolean, value ? -1 : 0, 0); }

RegVariant RegVariant::String(std::string text) {
    RegVariant v(VariantKind::String, 0, 0);
    v.text_ = std::move(text);
    return v;
}

RegVariant RegVariant::Bytes(std::vector<uint8_t> bytes) {
    RegVariant v(VariantKind::ByteArray, 0, 0);
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
