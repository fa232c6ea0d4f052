#pragma once
#include "common/unique_any.h"

namespace corvan {

using UniqueHandle = UniqueAny<HANDLE, &CloseHandle>;

}  // namespace corvan
