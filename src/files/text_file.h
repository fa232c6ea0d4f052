#pragma once
#include <string>

// Whole-file text reads and writes for the list files. Text is ANSI bytes,
// taken and given unchanged.
namespace corvan::text_file {

// The file's bytes; Failure (53, 76, 70, ...) when it cannot be read.
std::string ReadAll(const std::string& path, const char* source);

// Makes an empty file unless one is there; Failure when it cannot.
void CreateIfMissing(const std::string& path, const char* source);

// Replaces the file's text with `text` as one step: the text goes to a new
// file in the same folder, is flushed to the disk, and only then takes the
// old file's place. On any failure the old file is untouched and the new
// one is removed.
void ReplaceAll(const std::string& path, const std::string& text, const char* source);

}  // namespace corvan::text_file
