// A packing-list row, read and built: whatever the row, reading never fails,
// the built row has seventeen fields, and reading the built row back builds
// the same row again (the normalisation of folder, file name, flag and
// Booleans happens once, on the first build).
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "items/ItemRecord.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using corvan::ItemRecord;
    using corvan::fuzz::Fields;
    // The first byte picks whether the row lands on a fresh item or on one
    // that already holds a full row (a short row keeps the old columns).
    corvan::fuzz::Input input(data, size);
    const bool onFullItem = input.Byte() & 1;
    const std::string row = input.Rest();

    ItemRecord item;
    if (onFullItem)
        item.UniformString("XP,https://h/installer/,a.msi,1,d,1A,desc,prod,1,/i,/u,\\\\s\\x,C:\\TALO,G,1,-1,b.msi");
    ItemRecord old = item;
    item.UniformString(row);
    const std::string first = item.UniformString();

    ItemRecord again;
    again.UniformString(first);
    FUZZ_CHECK(again.UniformString() == first);
    // Building twice changes nothing either.
    FUZZ_CHECK(item.UniformString() == first);

    const std::vector<std::string> built = Fields(first);
    FUZZ_CHECK(built.size() == 17);
    FUZZ_CHECK(!built[12].empty() && built[12].back() == '\\');
    FUZZ_CHECK(built[15] == "-1" || built[15] == "0");
    FUZZ_CHECK(!built[16].empty() || built[2].empty());

    // The text columns are taken as they stand; an absent one keeps the old
    // item's value. The engine flags are never touched by a row.
    const std::vector<std::string> given = row.empty() ? std::vector<std::string>{} : Fields(row);
    const std::vector<std::string> kept = Fields(old.UniformString());
    for (size_t column : {0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 13})
        FUZZ_CHECK(built[column] == (column < given.size() ? given[column] : kept[column]));
    FUZZ_CHECK(item.IsDirty() == 0 && item.Removed() == 0);
    return 0;
}
