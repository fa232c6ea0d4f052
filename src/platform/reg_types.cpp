#include "platform/reg_types.h"

namespace corvan::reg {

int32_t GetValueType(const RegVariant& data) {
    switch (data.Kind()) {
        case VariantKind::Integer:
        case VariantKind::Long: return kRegDword;
        case VariantKind::String: return kRegSz;
        case VariantKind::ByteArray: return kRegBinary;
        default: return 0;
    }
}

int32_t TextValueType(std::string_view text) {
    const auto first = text.find('%');
    if (first == std::string_view::npos) return kRegSz;
    return text.find('%', first + 2) != std::string_view::npos ? kRegExpandSz : kRegSz;
}

RegWrite PlanRegWrite(const RegVariant& data) { return PlanRegWriteAs(GetValueType(data), data); }

RegWrite PlanRegWriteAs(int32_t type, const RegVariant& data) {
    RegWrite plan;
    plan.type = type;
    switch (type) {
        case kRegSz:
        case kRegExpandSz: {
            const std::string text = data.DisplayText();
            plan.type = TextValueType(text);
            plan.data.assign(text.begin(), text.end());
            plan.data.push_back(0);  // the byte count includes the terminator
            plan.write = true;
            return plan;
        }
        case kRegBinary:
            if (data.Kind() != VariantKind::ByteArray) {
                throw RuntimeError(kNotAByteArray, "CorvanInstaller");
            }
            if (data.ByteValues().empty()) throw RuntimeError(error::kSubscriptOutOfRange, "CorvanInstaller");
            plan.data = data.ByteValues();
            plan.write = true;
            return plan;
        case kRegDword:
        case kRegDwordBigEndian:
            // A non-integer here writes nothing yet reports success; the type
            // came from the integer test, so it does not happen in practice.
            if (data.IsInteger()) {
                const auto v = static_cast<uint32_t>(data.IntegerValue());
                plan.data = {static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8),
                             static_cast<uint8_t>(v >> 16), static_cast<uint8_t>(v >> 24)};
                plan.write = true;
            }
            return plan;
        default:
            plan.status = error::kTypeMismatch;
            return plan;
    }
}

int32_t SwapEndian(int32_t value) {
    const auto v = static_cast<uint32_t>(value);
    return static_cast<int32_t>((v >> 24) | ((v >> 8) & 0xFF00u) | ((v << 8) & 0xFF0000u) | (v << 24));
}

std::string ContextSource(std::string_view source, std::string_view context,
                          const std::vector<std::string>& arguments, std::string_view tail) {
    std::string out(source);
    out += context;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (i) out += ',';
        out += arguments[i];
    }
    out += tail;
    return out;
}

Failure WithContext(const Failure& failure, std::string_view context,
                    const std::vector<std::string>& arguments, std::string_view tail) {
    return Failure(failure.Number(), ContextSource(failure.Source(), context, arguments, tail),
                   failure.Description());
}

}  // namespace corvan::reg
