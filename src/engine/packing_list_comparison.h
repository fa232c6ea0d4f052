#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/keyed_collection.h"
#include "items/ItemRecord.h"

namespace corvan {

// The rows of one list file, numbered from 1 as the file object numbers
// them: row i is the text before the i-th carriage return, without its line
// breaks. The text after the last carriage return is not counted.
class ListRows {
public:
    virtual ~ListRows() = default;
    virtual int32_t RowCount() const = 0;
    // Empty past the last row.
    virtual std::string GetRow(int32_t index) const = 0;
    // The same row, as a view that lives as long as the rows or `scratch`
    // (a source that holds its text whole needs no copy).
    virtual std::string_view RowView(int32_t index, std::string& scratch) const {
        scratch = GetRow(index);
        return scratch;
    }
};

// Rows of a list held in memory as its whole text, its own copy.
class TextRows : public ListRows {
public:
    explicit TextRows(std::string text);

    int32_t RowCount() const override { return static_cast<int32_t>(starts_.size()) - 1; }
    std::string GetRow(int32_t index) const override { return std::string(Row(index)); }
    std::string_view RowView(int32_t index, std::string&) const override { return Row(index); }
    std::string_view Row(int32_t index) const;

private:
    std::string text_;
    std::vector<size_t> starts_;  // where each row begins, by the file object's rule (files/list_rows.h)
};

// The form of a list as the engine checks it: only the first row is looked
// at, and it must have at least eleven fields.
enum class ListForm { Valid, Empty, TooFewFields };
ListForm CheckListForm(const ListRows& rows);

// A list that is empty or whose first row is short is never taken from the
// server: a list published broken would otherwise mark every item removed.
inline bool IsWholeList(const ListRows& rows) { return CheckListForm(rows) == ListForm::Valid; }

// A row applies to this machine when its OS names the machine's Windows
// version anywhere in the text, or is "ALL".
bool AppliesToMachine(std::string_view os, std::string_view versionName);

// The uninstall list is stricter than loading: the OS must be the version
// name exactly (or "ALL"), and rows with a Flag are never listed.
bool ListedForUninstall(const ItemRecord& item, const std::string& versionName);

// The group rule of the install pass: with both texts non-empty (blanks
// trimmed), the user's groups must contain the item's group, ignoring case,
// or the group must be "ALL" in any case; an empty text on either side lets
// the item through.
bool InstallGroupAllows(const std::string& usersGroups, const std::string& installGroup);

// The item's 16-bit Booleans, as the runtime writes them.
inline constexpr int16_t kVbTrue = -1;
inline constexpr int16_t kVbFalse = 0;

// Loads packing lists into colItems and compares them: first the local
// list into an empty collection, then the server list over it. What the
// second load finds decides what the install pass does:
//  - a key only the local list has stays dirty and removed (to uninstall);
//  - a key only the server has, or one whose CRC changed, is dirty and not
//    removed (to install), and a changed one moves to the end;
//  - a key both have with the same CRC is clean, unless force install is on.
// Items are keyed by InstallFolder followed directly by FileName, without
// regard to case.
class PackingListComparison {
public:
    // `versionName` is the machine's Windows version name; `systemRoot` the
    // system root folder with its trailing backslash (rows without a local
    // source get systemRoot + "Talo").
    PackingListComparison(std::string versionName, std::string systemRoot);

    // A new, empty colItems; the flags stay as they are.
    void Reset();

    // Loads every applicable row of `rows`. True when the load found nothing
    // that differs from what colItems already held (always on the first
    // load into an empty collection).
    bool LoadFileIntoCollection(const ListRows& rows, bool markDirty);

    KeyedCollection<ItemRecord>& colItems() { return colItems_; }
    const KeyedCollection<ItemRecord>& colItems() const { return colItems_; }

    bool blnForceInstall() const { return forceInstall_; }
    void blnForceInstall(bool value) { forceInstall_ = value; }
    bool blnMustInstall() const { return mustInstall_; }
    void blnMustInstall(bool value) { mustInstall_ = value; }

    const std::string& VersionName() const { return versionName_; }

    // What loading `local` and then `server` into an empty collection would
    // answer, found without making a single item (the update check asks
    // nothing more): whether each load found nothing that differs, and
    // whether they set blnMustInstall. colItems is left as it is.
    struct Agreement {
        bool localLoaded;
        bool serverLoaded;
        bool mustInstall;
    };
    Agreement CompareLists(const ListRows& local, const ListRows& server) const;

    // The text of SC_Uninstall.scl for colItems: each listed row followed by
    // CR LF, in collection order.
    std::string UninstallListText();

private:
    ItemRecord NewItem(std::string_view row, bool markDirty, bool secondLoad) const;

    std::string versionName_;
    std::string defaultLocalSource_;
    KeyedCollection<ItemRecord> colItems_;
    int32_t firstListRowCount_ = 0;
    bool forceInstall_ = false;
    bool mustInstall_ = false;
};

// The key of an item in colItems.
std::string ItemKey(ItemRecord& item);

// The columns of a row that the comparison reads, as the item would read
// them, without making an item: OS, FileName, CRC and the install folder
// normalised as the item normalises it.
class RowColumns {
public:
    explicit RowColumns(std::string_view row);
    std::string_view OS() const { return columns_[0]; }
    std::string_view FileName() const { return columns_[2]; }
    std::string_view CRC() const { return columns_[5]; }
    const std::string& InstallFolder() const { return folder_; }

private:
    static constexpr size_t kColumns = 17;
    std::string_view columns_[kColumns];
    std::string folder_;
};

}  // namespace corvan
