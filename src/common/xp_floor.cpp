// Linked into every binary we ship (cmake/shipping.cmake). Windows XP is the
// floor, but winpthread, which we link statically, is built by the
// distribution for later Windows and imports GetTickCount64 for its timed
// waits. Defining the import slot here binds those calls to our function
// instead: the binary no longer names GetTickCount64 among its imports and
// loads on XP. Where the system has the function, it answers.
#include <windows.h>

#include <atomic>

#include "common/tick_count.h"

namespace {

using TickCount64Function = ULONGLONG(WINAPI*)();

// Resolved on first use without a lock or a guarded static: winpthread's
// waits may call us from any thread, and a guarded static would wait through
// winpthread itself. Two threads racing here store the same answer.
std::atomic<int> resolved{0};
std::atomic<TickCount64Function> systemTickCount64{nullptr};
std::atomic<unsigned long long> lastTick{0};

ULONGLONG WINAPI TickCount64() {
    if (resolved.load(std::memory_order_acquire) == 0) {
        HMODULE kernel = GetModuleHandleA("kernel32.dll");
        FARPROC found = kernel ? GetProcAddress(kernel, "GetTickCount64") : nullptr;
        systemTickCount64.store(reinterpret_cast<TickCount64Function>(reinterpret_cast<void*>(found)),
                                std::memory_order_relaxed);
        resolved.store(1, std::memory_order_release);
    }
    if (TickCount64Function system = systemTickCount64.load(std::memory_order_relaxed)) return system();
    // Windows XP: extend GetTickCount past its wrap.
    unsigned long long last = lastTick.load();
    for (;;) {
        const unsigned long long next = corvan::ExtendTickCount(last, GetTickCount());
        if (next == last || lastTick.compare_exchange_weak(last, next)) return next;
    }
}

}  // namespace

#if defined(_WIN64)
#define CORVAN_IMPORT_SLOT(name, stack) "__imp_" #name
#else
#define CORVAN_IMPORT_SLOT(name, stack) "__imp__" #name "@" #stack
#endif

extern "C" {
extern TickCount64Function const corvanGetTickCount64Slot __asm__(CORVAN_IMPORT_SLOT(GetTickCount64, 0));
TickCount64Function const corvanGetTickCount64Slot = &TickCount64;
}
