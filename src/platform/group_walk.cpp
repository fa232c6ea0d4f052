#include "platform/group_walk.h"

#include "common/failure.h"

namespace corvan {

bool AnyGroupIsAdministrators(uint32_t groupCount, const std::function<bool(size_t index)>& isAdministrators) {
    for (size_t index = 0; index <= groupCount; ++index) {
        if (index >= kGroupRoom) throw RuntimeError(error::kSubscriptOutOfRange, "CorvanInstaller");
        if (index == groupCount) break;
        if (isAdministrators(index)) return true;
    }
    return false;
}

}  // namespace corvan
