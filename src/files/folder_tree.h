#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include <windows.h>

// Whole-folder operations over Win32, raising Failure with the runtime's
// numbers (76 path not found, 70 permission denied, 58 already exists).
// A junction or symbolic link to a folder is a leaf: never walked through,
// counted or copied; a delete removes the link alone.
namespace corvan::folder_tree {

// Calls `visit` for every entry directly in `folder` (not "." and "..").
void ForEachEntry(const std::string& folder, const std::function<void(const WIN32_FIND_DATAA&)>& visit,
                  const char* source);

uint64_t TotalSize(const std::string& folder, const char* source);

// Removes the folder and everything in it. Without `force` a read-only file
// or folder stops the delete with 70, as the automation object does.
void DeleteTree(const std::string& folder, bool force, const char* source);

// Copies the folder's contents into `target`, making it as needed; an
// existing file is replaced only with `overwrite` (else 58).
void CopyTree(const std::string& folder, const std::string& target, bool overwrite, const char* source);

}  // namespace corvan::folder_tree
