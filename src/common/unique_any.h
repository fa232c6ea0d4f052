#pragma once
#include <utility>

#include <windows.h>

namespace corvan {

// Owns one operating-system handle and closes it exactly once, in the spirit
// of WIL's unique_any: UniqueAny<HANDLE, &CloseHandle>. Null and
// INVALID_HANDLE_VALUE both mean "no handle".
template <typename Handle, auto Close>
class UniqueAny {
public:
    UniqueAny() = default;
    explicit UniqueAny(Handle handle) : handle_(handle) {}
    ~UniqueAny() { Reset(); }
    UniqueAny(UniqueAny&& other) noexcept : handle_(std::exchange(other.handle_, Handle{})) {}
    UniqueAny& operator=(UniqueAny&& other) noexcept {
        if (this != &other) Reset(std::exchange(other.handle_, Handle{}));
        return *this;
    }
    UniqueAny(const UniqueAny&) = delete;
    UniqueAny& operator=(const UniqueAny&) = delete;

    Handle Get() const { return handle_; }
    bool Valid() const { return handle_ != Handle{} && handle_ != reinterpret_cast<Handle>(INVALID_HANDLE_VALUE); }
    explicit operator bool() const { return Valid(); }
    void Reset(Handle handle = Handle{}) {
        if (Valid()) Close(handle_);
        handle_ = handle;
    }
    Handle Release() { return std::exchange(handle_, Handle{}); }

private:
    Handle handle_{};
};

}  // namespace corvan
