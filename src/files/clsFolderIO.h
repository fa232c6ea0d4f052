#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include <windows.h>

#include "common/desktop.h"

namespace corvan {

// One folder of the file system: counts, children, size, drive and paths;
// deleting, moving and copying it after an optional confirmation box;
// creating subfolders; and the shell's folder browser.
//
// The query members need an open folder; without one they raise 91, as the
// automation calls did on a missing folder object.
class clsFolderIO {
public:
    explicit clsFolderIO(Desktop& desktop) : desktop_(desktop) {}

    int32_t FileCount() const;
    int32_t SubFolderCount() const;
    std::vector<std::string> SubFolders() const;  // names, in the order the file system gives them
    std::vector<std::string> Files() const;       // names, likewise
    bool IsRootFolder() const;
    double Size() const;  // bytes of every file below, all levels

    // Each returns the error number of its step, 0 when done; nothing is
    // raised. With `confirm` a Yes/No box titled "Delete..." asks first and
    // anything but Yes does nothing.
    int32_t Delete(bool force, bool confirm);
    // Without confirmation `destination` is taken as the force flag of a
    // delete: a path is no Boolean, so the result is 13 and nothing happens.
    int32_t Move(const std::string& destination, bool confirm);
    int32_t Copy(const std::string& destination, bool overwrite, bool confirm);

    // Opens the folder (76 when there is none) and lets pending window
    // messages run once. An empty path opens nothing and returns false.
    bool OpenFolder(const std::string& path);

    std::string HardDrive() const;  // "C:", or "\\server\share"
    std::string GetFolder(HWND owner) const;

    // Adds a subfolder to the current folder and returns its path; 58 when
    // it is there already.
    std::string CreateFolder(const std::string& name);

    const std::string& path() const;
    std::string ParentPath() const;

private:
    const std::string& Current(const char* source) const;
    bool Confirm(const char* question);

    Desktop& desktop_;
    std::string folder_;  // empty: none open
};

}  // namespace corvan
