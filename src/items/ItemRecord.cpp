#include "items/ItemRecord.h"

#include <string_view>

#include "common/conversions.h"

namespace corvan {

namespace {

// The row's first `kColumns` fields, as views into the row; the count of
// fields found (fields past the last column are not looked at).
constexpr size_t kColumns = 17;
size_t SplitAtCommas(std::string_view row, std::string_view (&fields)[kColumns]) {
    size_t start = 0;
    for (size_t count = 0; count < kColumns; ++count) {
        const size_t comma = row.find(',', start);
        if (comma == std::string_view::npos) {
            fields[count] = row.substr(start);
            return count + 1;
        }
        fields[count] = row.substr(start, comma - start);
        start = comma + 1;
    }
    return kColumns;
}

}  // namespace

const std::string& ItemRecord::InstallFolder() {
    if (installFolder_.empty() || installFolder_.back() != '\\') installFolder_ += '\\';
    if (installFolder_ == "\\") installFolder_ = kDefaultInstallFolder;
    return installFolder_;
}

void ItemRecord::UniformString(std::string_view row) {
    // An empty row sets nothing, not even column 0.
    if (row.empty()) return;
    // A list holds many thousands of rows: the fields are read in place and
    // each column goes straight into its member.
    std::string_view fields[kColumns];
    const size_t count = SplitAtCommas(row, fields);
    using Assign = void (*)(ItemRecord&, std::string_view);
    static constexpr Assign columns[kColumns] = {
        [](ItemRecord& r, std::string_view f) { r.os_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.source_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.fileName_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.version_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.releaseDate_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.crc_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.description_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.productname_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.flag_ = LenientLong(f); },
        [](ItemRecord& r, std::string_view f) { r.installSwitch_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.uninstallSwitch_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.localSource_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.installFolder_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.installGroup_.assign(f); },
        [](ItemRecord& r, std::string_view f) { r.register_ = StrictInteger(f); },
        [](ItemRecord& r, std::string_view f) { r.executePackage_ = StrictBoolean(f) ? -1 : 0; },
        [](ItemRecord& r, std::string_view f) { r.installFileName_.assign(f); },
    };
    for (size_t column = 0; column < count; ++column) {
        // Each column stands alone: one that cannot be read keeps its value
        // and the rest of the row is still taken.
        try {
            columns[column](*this, fields[column]);
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
