#pragma once
#include <utility>

#include <windows.h>
#include <unknwn.h>

namespace corvan::com {

// Owns one reference to a COM interface.
template <typename T>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(T* p) : p_(p) {}  // takes over the caller's reference
    ComPtr(const ComPtr& other) : p_(other.p_) { if (p_) p_->AddRef(); }
    ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept { std::swap(p_, other.p_); return *this; }
    ~ComPtr() { if (p_) p_->Release(); }

    static ComPtr AddRefOf(T* p) { if (p) p->AddRef(); return ComPtr(p); }

    T* Get() const { return p_; }
    T* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    T** Put() { *this = ComPtr(); return &p_; }
    void** PutVoid() { return reinterpret_cast<void**>(Put()); }
    T* Detach() { return std::exchange(p_, nullptr); }

    template <typename U>
    ComPtr<U> As(REFIID iid) const {
        ComPtr<U> other;
        if (p_) p_->QueryInterface(iid, other.PutVoid());
        return other;
    }

private:
    T* p_ = nullptr;
};

}  // namespace corvan::com
