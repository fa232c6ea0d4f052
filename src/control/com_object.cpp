#include "control/com_object.h"

namespace corvan::com {

namespace {
std::atomic<long> moduleLocks{0};
}

void LockModule() { ++moduleLocks; }
void UnlockModule() { --moduleLocks; }
bool ModuleInUse() { return moduleLocks.load() != 0; }

}  // namespace corvan::com
