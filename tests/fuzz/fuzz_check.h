#pragma once
// What every fuzz target shares: the check that a rule holds, a reader that
// takes the parts of one input (flags, numbers, texts) in turn, and the
// outcome of a conversion that may raise a runtime error.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "common/failure.h"

namespace corvan::fuzz {

// A rule broken by some input. It derives from nothing the code under test
// catches, so it always reaches the driver: libFuzzer stops on it (the input
// is kept as a crash), the corpus replay reports it as a test failure.
struct CheckFailure {
    std::string what;
};

[[noreturn]] inline void Fail(const char* condition, const char* file, int line) {
    std::string what = std::string(file) + ":" + std::to_string(line) + ": " + condition;
    std::fprintf(stderr, "fuzz check failed: %s\n", what.c_str());
    throw CheckFailure{what};
}

#define FUZZ_CHECK(condition)                                                   \
    do {                                                                        \
        if (!(condition)) ::corvan::fuzz::Fail(#condition, __FILE__, __LINE__); \
    } while (0)

// Takes one input apart from the front. Past the end every read gives zeros
// and empty texts, so any input decodes.
class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }

    template <typename T>
    T Number() {
        unsigned char bytes[sizeof(T)] = {};
        size_t n = size_ - pos_ < sizeof(T) ? size_ - pos_ : sizeof(T);
        if (n) std::memcpy(bytes, data_ + pos_, n);
        pos_ += n;
        T value;
        std::memcpy(&value, bytes, sizeof(T));
        return value;
    }

    // The text up to the next `end` byte (which is consumed), or the rest.
    std::string TextUntil(char end) {
        size_t start = pos_;
        while (pos_ < size_ && data_[pos_] != static_cast<uint8_t>(end)) ++pos_;
        std::string text(reinterpret_cast<const char*>(data_ + start), pos_ - start);
        if (pos_ < size_) ++pos_;
        return text;
    }

    std::string Rest() {
        std::string text(reinterpret_cast<const char*>(data_ + pos_), size_ - pos_);
        pos_ = size_;
        return text;
    }

    size_t Remaining() const { return size_ - pos_; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t pos_ = 0;
};

// The fields of a row, split at every comma as the client splits them.
inline std::vector<std::string> Fields(const std::string& row) {
    std::vector<std::string> fields;
    size_t start = 0;
    for (size_t comma; (comma = row.find(',', start)) != std::string::npos; start = comma + 1)
        fields.push_back(row.substr(start, comma - start));
    fields.push_back(row.substr(start));
    return fields;
}

// The value, or the runtime error number it raised.
template <typename T>
struct Outcome {
    std::optional<T> value;
    int32_t error = 0;
    bool operator==(const Outcome&) const = default;
};

template <typename F>
auto Try(F&& convert) -> Outcome<decltype(convert())> {
    try {
        return {convert(), 0};
    } catch (const Failure& failure) {
        return {std::nullopt, failure.Number()};
    }
}

}  // namespace corvan::fuzz
