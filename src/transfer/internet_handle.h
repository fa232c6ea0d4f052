#pragma once
#include <windows.h>
#include <wininet.h>

#include "common/unique_any.h"

namespace corvan {

using unique_hinternet = UniqueAny<HINTERNET, &InternetCloseHandle>;

}  // namespace corvan
