#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "items/ItemRecord.h"

namespace corvan::scl {

// One package of a manifest: its row as far as the manifest gives it (every
// text already in the list's code page and free of anything the row format
// cannot carry). The CRC, and the version when the file has a version
// resource, are the build's to fill.
struct ManifestEntry {
    int index = 0;        // 1-based position among the packages
    int64_t line = 0;     // manifest line of its [[package]] header
    ItemRecord record;
    bool versionGiven = false;  // the manifest names a Version

    // "package 3 (CorvanClient.msi)", for messages.
    std::string Name() const;
};

struct Manifest {
    std::string path;
    std::vector<ManifestEntry> entries;
    // One line per refused value or key, each naming its entry and line.
    std::vector<std::string> errors;
};

// Reads a TOML manifest: optional [defaults] whose keys apply to every
// package that does not give its own, then one [[package]] table per row.
// Keys are the row's column names (OS, Source, FileName, ...); CRC is not
// one of them. A file that cannot be read or parsed throws std::runtime_error
// with a one-line message; refused values go to `errors`.
Manifest ReadManifest(const std::string& path);

}  // namespace corvan::scl
