#include "items/ItemRecord.h"

#include <functional>
#include <vector>

#include "common/conversions.h"

namespace corvan {

namespace {

std::vector<std::string> SplitAtCommas(const std::string& row) {
    std::vector<std::string> fields;
    size_t start = 0;
    for (;;) {
        size_t comma = row.find(',', start);
        if (comma == std::string::npos) {
            fields.push_back(row.substr(start));
            return fields;
        }
        fields.push_back(row.substr(start, comma - start));
        start = comma + 1;
    }
}

}  // namespace

const std::string& ItemRecord::InstallFolder() {
    if (installFolder_.empty() || installFolder_.back() != '\\') installFolder_ += '\\';
    if (installFolder_ == "\\") installFolder_ = kDefaultInstallFolder;
    return installFolder_;
}

void ItemRecord::UniformString(const std::string& row) {
    // An empty row sets nothing, not even column 0.
    if (row.empty()) return;
    const std::vector<std::string> fields = SplitAtCommas(row);
    using Assign = std::function<void(const std::string&)>;
    const Assign columns[17] = {
        [this](const std::string& f) { OS(f); },
        [this](const std::string& f) { Source(f); },
        [this](const std::string& f) { FileName(f); },
        [this](const std::string& f) { Version(f); },
        [this](const std::string& f) { ReleaseDate(f); },
        [this](const std::string& f) { CRC(f); },
        [this](const std::string& f) { Description(f); },
        [this](const std::string& f) { Productname(f); },
        [this](const std::string& f) { Flag(LenientLong(f)); },
        [this](const std::string& f) { InstallSwitch(f); },
        [this](const std::string& f) { UninstallSwitch(f); },
        [this](const std::string& f) { LocalSource(f); },
        [this](const std::string& f) { InstallFolder(f); },
        [this](const std::string& f) { InstallGroup(f); },
        [this](const std::string& f) { Register(StrictInteger(f)); },
        [this](const std::string& f) { ExecutePackage(StrictBoolean(f) ? -1 : 0); },
        [this](const std::string& f) { InstallFileName(f); },
    };
    for (size_t column = 0; column < 17 && column < fields.size(); ++column) {
        // Each column stands alone: one that cannot be read keeps its value
        // and the rest of the row is still taken.
        try {
            columns[column](fields[column]);
        } catch (const std::exception&) {
        }
    }
}

std::string ItemRecord::UniformString() {
    const std::string folder = InstallFolder();
    const std::string fields[17] = {
        os_, source_, fileName_, version_, releaseDate_, crc_, description_, productname_,
        std::to_string(flag_), installSwitch_, uninstallSwitch_, localSource_, folder, installGroup_,
        std::to_string(register_), std::to_string(executePackage_), InstallFileName(),
    };
    std::string row = fields[0];
    for (size_t column = 1; column < 17; ++column) {
        row += ',';
        row += fields[column];
    }
    return row;
}

std::string ItemRecord::GetFileExtention() const {
    size_t dot = fileName_.rfind('.');
    if (dot == std::string::npos) return "";
    return fileName_.substr(dot + 1);
}

}  // namespace corvan
