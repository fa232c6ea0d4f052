// hold_file <path> <event name>: another process holding a file open, as a
// virus scanner or an open program does on a dealer's PC. Opens the file
// sharing nothing, sets the named event, and holds it until it is ended.
#include <windows.h>

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    HANDLE file = CreateFileA(argv[1], GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    HANDLE held = OpenEventA(EVENT_MODIFY_STATE, FALSE, argv[2]);
    if (file == INVALID_HANDLE_VALUE || !held) return 1;
    SetEvent(held);
    Sleep(INFINITE);
}
