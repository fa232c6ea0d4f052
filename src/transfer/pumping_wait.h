#pragma once
#include <windows.h>

#include "common/desktop.h"

namespace corvan {

// Waits for `event` at most `timeoutMs` (INFINITE: no limit) on the page's
// thread, letting the window messages that arrive meanwhile run through
// `desktop`, so the page stays alive while the server is slow. Without a
// desktop it only waits. True when the event came.
bool WaitLettingMessagesRun(Desktop* desktop, HANDLE event, DWORD timeoutMs);

// A pause of `ms` during which messages run as above.
void PauseLettingMessagesRun(Desktop* desktop, DWORD ms);

}  // namespace corvan
