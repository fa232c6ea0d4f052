#include "engine/packing_list_comparison.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "common/text.h"
#include "files/list_rows.h"

namespace corvan {

TextRows::TextRows(std::string text) : text_(std::move(text)), starts_(IndexListRows(text_)) {}

std::string_view TextRows::Row(int32_t index) const {
    if (index > RowCount()) return {};
    return ListRow(text_, starts_, index);
}

ListForm CheckListForm(const ListRows& rows) {
    if (rows.RowCount() < 1) return ListForm::Empty;
    const std::string first = rows.GetRow(1);
    // Eleven fields are ten commas; later rows are not looked at.
    return std::count(first.begin(), first.end(), ',') >= 10 ? ListForm::Valid : ListForm::TooFewFields;
}

bool AppliesToMachine(std::string_view os, std::string_view versionName) {
    // The runtime's InStr finds nothing in an empty text, even an empty name.
    return (!os.empty() && os.find(versionName) != std::string_view::npos) || os == "ALL";
}

bool ListedForUninstall(const ItemRecord& item, const std::string& versionName) {
    return (item.OS() == versionName || item.OS() == "ALL") && item.Flag() == 0;
}

bool InstallGroupAllows(const std::string& usersGroups, const std::string& installGroup) {
    const std::string groups = Trim(usersGroups);
    const std::string group = Trim(installGroup);
    if (groups.empty() || group.empty()) return true;
    // Windows group names do not care about case.
    return UpperCase(groups).find(UpperCase(group)) != std::string::npos || UpperCase(group) == "ALL";
}

std::string ItemKey(ItemRecord& item) { return item.InstallFolder() + item.FileName(); }

RowColumns::RowColumns(std::string_view row) {
    size_t start = 0;
    for (size_t column = 0; column < kColumns; ++column) {
        const size_t comma = row.find(',', start);
        columns_[column] = row.substr(start, comma == std::string_view::npos ? row.npos : comma - start);
        if (comma == std::string_view::npos) break;
        start = comma + 1;
    }
    // The folder as the item keeps it: a trailing backslash, the default
    // folder when the row names none.
    folder_.assign(columns_[12]);
    if (folder_.empty() || folder_.back() != '\\') folder_ += '\\';
    if (folder_ == "\\") folder_ = kDefaultInstallFolder;
}

PackingListComparison::PackingListComparison(std::string versionName, std::string systemRoot)
    : versionName_(std::move(versionName)), defaultLocalSource_(std::move(systemRoot) + "Talo") {}

namespace {

// Calls judge(row, columns, key) for each row of `rows` that is not blank and
// applies to the machine; the key is the folder as the item keeps it
// followed by the file name, in the row's own case.
template <typename Judge>
void EachApplicableRow(const ListRows& rows, std::string_view versionName, Judge judge) {
    std::string scratch, key;
    for (int32_t index = 1, count = rows.RowCount(); index <= count; ++index) {
        const std::string_view row = rows.RowView(index, scratch);
        if (row.empty()) continue;
        const RowColumns columns(row);
        if (!AppliesToMachine(columns.OS(), versionName)) continue;
        key.assign(columns.InstallFolder()).append(columns.FileName());
        judge(row, columns, key);
    }
}

}  // namespace

void PackingListComparison::Reset() { colItems_ = KeyedCollection<ItemRecord>(); }

bool PackingListComparison::LoadFileIntoCollection(const ListRows& rows, bool markDirty) {
    bool result = true;
    const bool secondLoad = !colItems_.Empty();
    const int32_t rowCount = rows.RowCount();
    if (secondLoad) {
        // A different number of lines is a difference, blank ones included.
        if (rowCount != firstListRowCount_) result = false;
    } else {
        firstListRowCount_ = rowCount;
        colItems_.Reserve(static_cast<size_t>(rowCount));
    }

    // Most rows of a second load are found again unchanged: they are judged
    // on their OS, key and CRC columns alone, and only a row that is kept
    // becomes an item.
    std::string folded;
    EachApplicableRow(rows, versionName_, [&](std::string_view row, const RowColumns& columns, const std::string& key) {
        ItemRecord* existing;
        if (!secondLoad) {
            // A first load keeps nearly every row: made into an item at once.
            existing = colItems_.AddOrFind(key, NewItem(row, markDirty, secondLoad));
            if (!existing) return;
        } else {
            folded.assign(key);
            UpperCaseInPlace(folded);
            existing = colItems_.FindUpperCase(folded);
            if (!existing) {
                // The server has a row that the local list lacks.
                ItemRecord item = NewItem(row, markDirty, secondLoad);
                item.IsDirty(kVbTrue);
                colItems_.Add(key, std::move(item));
                result = false;
                return;
            }
        }

        existing->Removed(kVbFalse);
        // The key ignores case but the folder test does not: the same file
        // under a folder spelt otherwise is kept as it was, changed or not.
        if (existing->InstallFolder() == columns.InstallFolder() && existing->CRC() != columns.CRC()) {
            ItemRecord item = NewItem(row, markDirty, secondLoad);
            colItems_.Remove(key);
            item.IsDirty(kVbTrue);
            item.Removed(kVbFalse);
            mustInstall_ = true;
            colItems_.Add(key, std::move(item));
            result = false;
        } else if (!forceInstall_) {
            existing->IsDirty(kVbFalse);
        }
    });
    return result;
}

PackingListComparison::Agreement PackingListComparison::CompareLists(const ListRows& local,
                                                                   const ListRows& server) const {
    // The loads' rules over what they look at: each key's folder as the item
    // keeps it and its CRC, the texts read in place.
    struct Kept {
        std::string folder;
        std::string crc;  // a row read through a copy does not outlive the next
    };
    std::unordered_map<std::string, Kept> kept;
    kept.reserve(static_cast<size_t>(std::max(local.RowCount(), 0)));
    std::string folded;
    // Each load: a key not yet kept is added (a difference only when the
    // collection was not empty as the load began); one kept under the same
    // folder with another CRC takes the row's CRC, and the lists must be
    // installed. A first load differs only through such a doubled key.
    Agreement agreement{true, true, false};
    auto load = [&](const ListRows& rows) {
        const bool secondLoad = !kept.empty();
        bool same = !secondLoad || rows.RowCount() == local.RowCount();
        EachApplicableRow(rows, versionName_, [&](std::string_view, const RowColumns& columns, const std::string& key) {
            folded.assign(key);
            UpperCaseInPlace(folded);
            auto [found, added] = kept.try_emplace(folded, Kept{columns.InstallFolder(), std::string(columns.CRC())});
            if (added) {
                if (secondLoad) same = false;
            } else if (found->second.folder == columns.InstallFolder() && found->second.crc != columns.CRC()) {
                found->second.crc.assign(columns.CRC());
                agreement.mustInstall = true;
                same = false;
            }
        });
        return same;
    };
    agreement.localLoaded = load(local);
    agreement.serverLoaded = load(server);
    return agreement;
}

ItemRecord PackingListComparison::NewItem(std::string_view row, bool markDirty, bool secondLoad) const {
    ItemRecord item;
    item.UniformString(row);
    if (item.LocalSource().empty()) item.LocalSource(defaultLocalSource_);
    if (markDirty) item.IsDirty(kVbTrue);
    // Every local item starts out to be removed; the server list clears the
    // mark of each item it still has.
    if (!secondLoad) item.Removed(kVbTrue);
    return item;
}

std::string PackingListComparison::UninstallListText() {
    std::string text;
    for (auto& entry : colItems_) {
        ItemRecord& item = entry.second;
        if (ListedForUninstall(item, versionName_)) text += item.UniformString() + "\r\n";
    }
    return text;
}

}  // namespace corvan
