#include "engine/packing_list_comparison.h"

#include <algorithm>
#include <utility>

#include "common/text.h"
#include "files/list_rows.h"

namespace corvan {

TextRows::TextRows(std::string text) : text_(std::move(text)), starts_(IndexListRows(text_)) {}

std::string TextRows::GetRow(int32_t index) const {
    if (index > RowCount()) return {};
    return std::string(ListRow(text_, starts_, index));
}

ListForm CheckListForm(const ListRows& rows) {
    if (rows.RowCount() < 1) return ListForm::Empty;
    const std::string first = rows.GetRow(1);
    // Eleven fields are ten commas; later rows are not looked at.
    return std::count(first.begin(), first.end(), ',') >= 10 ? ListForm::Valid : ListForm::TooFewFields;
}

bool AppliesToMachine(const std::string& os, const std::string& versionName) {
    // The runtime's InStr finds nothing in an empty text, even an empty name.
    return (!os.empty() && os.find(versionName) != std::string::npos) || os == "ALL";
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

PackingListComparison::PackingListComparison(std::string versionName, std::string systemRoot)
    : versionName_(std::move(versionName)), defaultLocalSource_(std::move(systemRoot) + "Talo") {}

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

    for (int32_t index = 1; index <= rowCount; ++index) {
        const std::string row = rows.GetRow(index);
        if (row.empty()) continue;
        ItemRecord item;
        item.UniformString(row);
        if (item.LocalSource().empty()) item.LocalSource(defaultLocalSource_);
        if (!AppliesToMachine(item.OS(), versionName_)) continue;
        if (markDirty) item.IsDirty(kVbTrue);
        // Every local item starts out to be removed; the server list clears
        // the mark of each item it still has.
        if (!secondLoad) item.Removed(kVbTrue);

        std::string key = ItemKey(item);
        ItemRecord* existing = colItems_.AddOrFind(key, std::move(item));
        if (!existing) {
            if (secondLoad) {
                colItems_.Item(key).IsDirty(kVbTrue);
                result = false;
            }
            continue;
        }

        existing->Removed(kVbFalse);
        // The key ignores case but the folder test does not: the same file
        // under a folder spelt otherwise is kept as it was, changed or not.
        if (existing->InstallFolder() == item.InstallFolder() && existing->CRC() != item.CRC()) {
            colItems_.Remove(key);
            item.IsDirty(kVbTrue);
            item.Removed(kVbFalse);
            mustInstall_ = true;
            colItems_.Add(std::move(key), std::move(item));
            result = false;
        } else if (!forceInstall_) {
            existing->IsDirty(kVbFalse);
        }
    }
    return result;
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
