#pragma once
#include <atomic>
#include <thread>

namespace testing_support {

// Runs `first(i)` and `second(i)` for i = 0 .. rounds-1 on two threads at
// once, as two controls on two threads of one browser process do. Shared
// state without a lock shows here (under the sanitizers natively).
template <typename First, typename Second>
void RunTogether(int rounds, First first, Second second) {
    std::atomic<bool> go{false};
    std::thread other([&] {
        while (!go) std::this_thread::yield();
        for (int i = 0; i < rounds; ++i) second(i);
    });
    go = true;
    for (int i = 0; i < rounds; ++i) first(i);
    other.join();
}

}  // namespace testing_support
