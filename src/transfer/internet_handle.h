#pragma once
#include <utility>

#include <windows.h>
#include <wininet.h>

namespace corvan {

// Owns one WinINet handle and closes it once.
class unique_hinternet {
public:
    unique_hinternet() = default;
    explicit unique_hinternet(HINTERNET handle) : handle_(handle) {}
    ~unique_hinternet() { reset(); }
    unique_hinternet(unique_hinternet&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    unique_hinternet& operator=(unique_hinternet&& other) noexcept {
        if (this != &other) reset(std::exchange(other.handle_, nullptr));
        return *this;
    }
    unique_hinternet(const unique_hinternet&) = delete;
    unique_hinternet& operator=(const unique_hinternet&) = delete;

    HINTERNET get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }
    void reset(HINTERNET handle = nullptr) {
        if (handle_) InternetCloseHandle(handle_);
        handle_ = handle;
    }

private:
    HINTERNET handle_ = nullptr;
};

}  // namespace corvan
