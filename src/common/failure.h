#pragma once
#include <cstdint>
#include <stdexcept>
#include <string>

namespace corvan {

// A numbered error as the system raises it: number, source, description.
// Numbers are 32-bit and signed, so 0x80040064 reads -2147221404 in decimal.
class Failure : public std::runtime_error {
public:
    Failure(int32_t number, std::string source, std::string description);

    int32_t Number() const noexcept { return number_; }
    const std::string& Source() const noexcept { return source_; }
    const std::string& Description() const noexcept { return description_; }

private:
    int32_t number_;
    std::string source_;
    std::string description_;
};

// Numbers of the runtime errors the system raises itself.
namespace error {
inline constexpr int32_t kInvalidProcedureCall = 5;
inline constexpr int32_t kOverflow = 6;
inline constexpr int32_t kOutOfMemory = 7;
inline constexpr int32_t kSubscriptOutOfRange = 9;
inline constexpr int32_t kTypeMismatch = 13;
inline constexpr int32_t kFileNotFound = 53;
inline constexpr int32_t kPermissionDenied = 70;
inline constexpr int32_t kPathFileAccessError = 75;
inline constexpr int32_t kPathNotFound = 76;
inline constexpr int32_t kDuplicateKey = 457;
}  // namespace error

// The runtime's own description for the numbers above.
std::string RuntimeErrorDescription(int32_t number);

// A Failure with the runtime's description, raised from `source`.
Failure RuntimeError(int32_t number, std::string source);

// The exception being handled, as the runtime would have raised it: a
// Failure stays itself, memory running out is 7 "Out of memory", anything
// else 5 with its own text. Only valid inside a catch block.
Failure FailureInFlight(const std::string& source);

}  // namespace corvan
