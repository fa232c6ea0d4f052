#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace corvan {

// The kinds of value a caller can hand the registry wrapper. The integer,
// string and byte-array kinds are the ones the registry can hold; the others
// exist because callers pass them and the wrapper must refuse them.
enum class VariantKind { Empty, Integer, Long, Double, Date, Boolean, String, ByteArray };

class RegVariant {
public:
    RegVariant() = default;  // Empty

    static RegVariant Integer(int16_t value);
    static RegVariant Long(int32_t value);
    static RegVariant Double(double value);
    static RegVariant Date(double oleDate);
    static RegVariant Boolean(bool value);
    static RegVariant String(std::string text);
    static RegVariant Bytes(std::vector<uint8_t> bytes);

    VariantKind Kind() const noexcept { return kind_; }
    bool IsEmpty() const noexcept { return kind_ == VariantKind::Empty; }
    bool IsInteger() const noexcept { return kind_ == VariantKind::Integer || kind_ == VariantKind::Long; }

    int32_t IntegerValue() const noexcept { return integer_; }  // Integer, Long
    double NumberValue() const noexcept { return number_; }     // Double, Date
    bool BooleanValue() const noexcept { return integer_ != 0; }
    const std::string& Text() const noexcept { return text_; }  // String
    const std::vector<uint8_t>& ByteValues() const noexcept { return bytes_; }

    // The value as the system concatenates it into a text (error sources):
    // numbers in plain decimal, Booleans "True"/"False", Empty as nothing,
    // a byte array as upper-case hexadecimal byte pairs separated by blanks.
    std::string DisplayText() const;

    friend bool operator==(const RegVariant&, const RegVariant&) = default;

private:
    RegVariant(VariantKind kind, int32_t integer, double number);

    VariantKind kind_ = VariantKind::Empty;
    int32_t integer_ = 0;
    double number_ = 0;
    std::string text_;
    std::vector<uint8_t> bytes_;
};

}  // namespace corvan
