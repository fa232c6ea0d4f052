#pragma once
#include <string>

// The file operations the engine's passes run on whole folders and
// wildcards, with the runtime's error numbers: 53 when a pattern matches
// nothing, 76 for a missing path, 70 or 75 when Windows refuses.
namespace corvan::engine_files {

bool FolderExists(const std::string& folder);

// A directory listing of `folder` finds at least one file (subfolders do
// not count). False for a missing folder.
bool FolderHasFiles(const std::string& folder);

// Makes `folder` and every missing folder above it.
void MakePath(const std::string& folder);

// Deletes every file that `pattern` ("C:\TALO\*.msi") matches. Every match
// is tried; the first refusal is raised after the others are gone.
void DeleteFiles(const std::string& pattern);

// Copies every file that `pattern` matches into `folder`, replacing files
// of the same name there.
void CopyFiles(const std::string& pattern, const std::string& folder);

// Deletes `folder` with everything in it. Every entry is tried; the first
// refusal is raised after the others are gone.
void DeleteFolder(const std::string& folder);

// Removes `folder` only when nothing is left in it.
void RemoveEmptyFolder(const std::string& folder);

}  // namespace corvan::engine_files
