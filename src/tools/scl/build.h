#pragma once
#include <functional>
#include <string>
#include <vector>

#include "tools/scl/manifest.h"

namespace corvan::scl {

struct BuildOptions {
    std::string folder;                 // the packages
    std::vector<std::string> osNames;   // version names the list must serve
    std::string output;                 // where the list goes: not a package when it lies in the folder
};

struct BuildResult {
    std::string list;                   // the rows, each ended by CR LF; empty when refused
    std::vector<std::string> errors;    // one line each, naming the manifest entry
    std::vector<std::string> notes;     // worth saying, not worth refusing
};

// The packing list of a manifest's packages: one row per entry in manifest
// order, each with the CRC of its file in the folder and, where the file has
// a version resource, that version. Refuses (errors, no list) what the
// client would read wrongly: a value the row cannot carry, a missing file,
// a version that contradicts the file's, and whatever the list's own lint
// finds. `progress` hears one line per package.
BuildResult BuildList(const Manifest& manifest, const BuildOptions& options,
                      const std::function<void(const std::string&)>& progress = {});

}  // namespace corvan::scl
