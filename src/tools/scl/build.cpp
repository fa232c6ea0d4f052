#include "tools/scl/build.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "common/failure.h"
#include "files/cCRC32.h"
#include "tools/scl/lint.h"
#include "tools/scl/pe_version.h"

namespace corvan::scl {
namespace {

std::string Where(const Manifest& manifest, const ManifestEntry& entry) {
    return manifest.path + ":" + std::to_string(entry.line) + ": " + entry.Name() + ": ";
}

}  // namespace

BuildResult BuildList(const Manifest& manifest, const BuildOptions& options,
                      const std::function<void(const std::string&)>& progress) {
    namespace fs = std::filesystem;
    BuildResult result;
    result.errors = manifest.errors;
    std::string list;
    std::set<std::string> listed;
    size_t done = 0;
    for (const ManifestEntry& original : manifest.entries) {
        ManifestEntry entry = original;
        ItemRecord& record = entry.record;
        const std::string where = Where(manifest, entry);
        const fs::path path = fs::path(options.folder) / record.FileName();
        listed.insert(fs::path(record.FileName()).lexically_normal().string());
        if (progress) {
            std::string line(1, '[');
            line.append(std::to_string(++done)).append("/").append(std::to_string(manifest.entries.size()));
            progress(line.append("] ").append(record.FileName()));
        }
        std::error_code error;
        if (!fs::is_regular_file(path, error)) {
            result.errors.push_back(where + "FileName \"" + record.FileName() + "\" is not a file in " +
                                    options.folder);
            continue;
        }
        try {
            record.CRC(FileCrcText(path.string()));
        } catch (const Failure& failure) {
            result.errors.push_back(where + "cannot read " + path.string() + ": " + failure.Description());
            continue;
        }
        if (const auto version = ReadFileVersion(path.string())) {
            if (entry.versionGiven && record.Version() != *version) {
                result.errors.push_back(where + "Version \"" + record.Version() + "\" contradicts the file's version "
                                                "resource, " + *version + " (leave Version out to take the file's)");
                continue;
            }
            record.Version(*version);
        }
        list += record.UniformString() + "\r\n";
    }
    if (!result.errors.empty()) return result;

    // The list's own lint is the last word: a row it faults is refused,
    // named by its entry (row N is entry N).
    for (const LintProblem& problem : LintList(list, {options.osNames, options.folder})) {
        const size_t row = static_cast<size_t>(problem.line);
        const std::string where = row >= 1 && row <= manifest.entries.size()
                                      ? Where(manifest, manifest.entries[row - 1])
                                      : manifest.path + ": ";
        result.errors.push_back(where + problem.column + ": " + problem.message);
    }
    if (!result.errors.empty()) return result;

    // Files left out are worth a word; the manifest and the list are not packages.
    auto same = [](const fs::path& a, const std::string& b) {
        std::error_code ignored;
        return !b.empty() && fs::equivalent(a, b, ignored);
    };
    std::error_code error;
    for (fs::directory_iterator it(options.folder, error), end; !error && it != end; it.increment(error))
        if (it->is_regular_file(error) && !listed.count(it->path().filename().string()) &&
            !same(it->path(), manifest.path) && !same(it->path(), options.output))
            result.notes.push_back(it->path().string() + " is in the folder but not in the manifest");
    std::sort(result.notes.begin(), result.notes.end());
    result.list = std::move(list);
    return result;
}

}  // namespace corvan::scl
