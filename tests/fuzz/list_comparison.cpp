// The comparison of a local and a server packing list, both made from the
// input. Whatever the lists hold, colItems ends with each key once, and the
// dirty and removed marks, the order, the result and blnMustInstall follow
// the rules of the comparison for every key that each list names at most
// once (a key twice in one list has rules of its own: only the removed mark
// is checked for it). The comparison without items answers as the loads do.
#include <map>
#include <set>
#include <string>
#include <vector>

#include "common/text.h"
#include "engine/packing_list_comparison.h"
#include "fuzz_check.h"

namespace {

using namespace corvan;

struct Row {
    std::string exactKey;
    std::string crc;
    std::string folder;
};

// The applicable rows of a list, in list order, under their folded keys.
std::vector<std::pair<std::string, Row>> ApplicableRows(const TextRows& rows, const std::string& versionName) {
    std::vector<std::pair<std::string, Row>> result;
    for (int32_t index = 1; index <= rows.RowCount(); ++index) {
        const std::string text = rows.GetRow(index);
        if (text.empty()) continue;
        ItemRecord item;
        item.UniformString(text);
        if (!AppliesToMachine(item.OS(), versionName)) continue;
        const std::string key = ItemKey(item);
        result.push_back({UpperCase(key), {key, item.CRC(), item.InstallFolder()}});
    }
    return result;
}

std::map<std::string, int> Counts(const std::vector<std::pair<std::string, Row>>& rows) {
    std::map<std::string, int> counts;
    for (const auto& row : rows) ++counts[row.first];
    return counts;
}

const Row* Only(const std::vector<std::pair<std::string, Row>>& rows, const std::string& key) {
    for (const auto& row : rows)
        if (row.first == key) return &row.second;
    return nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const char* const kVersionNames[] = {"Windows XP", "XP", "ALL", ""};
    fuzz::Input input(data, size);
    const uint8_t flags = input.Byte();
    const bool force = flags & 1;
    const bool serverMarksDirty = flags & 2;
    const std::string versionName = kVersionNames[(flags >> 2) & 3];
    const TextRows localList(input.TextUntil('\0'));
    const TextRows serverList(input.Rest());
    CheckListForm(localList);
    CheckListForm(serverList);

    PackingListComparison comparison(versionName, "C:\\WINDOWS\\");
    comparison.blnForceInstall(force);
    const bool localResult = comparison.LoadFileIntoCollection(localList, true);
    const bool serverResult = comparison.LoadFileIntoCollection(serverList, serverMarksDirty);
    // The update check compares without items, and must answer as the loads do.
    const auto agreement = comparison.CompareLists(localList, serverList);
    FUZZ_CHECK(agreement.localLoaded == localResult && agreement.serverLoaded == serverResult &&
               agreement.mustInstall == comparison.blnMustInstall());

    const auto local = ApplicableRows(localList, versionName);
    const auto server = ApplicableRows(serverList, versionName);
    auto localCounts = Counts(local), serverCounts = Counts(server);
    std::set<std::string> expectedKeys;
    for (const auto& row : local) expectedKeys.insert(row.first);
    for (const auto& row : server) expectedKeys.insert(row.first);

    // Each key once, every key of either list, every item for this machine.
    std::vector<std::string> order;
    for (auto& [key, item] : comparison.colItems()) {
        FUZZ_CHECK(UpperCase(key) == UpperCase(ItemKey(item)));
        FUZZ_CHECK(AppliesToMachine(item.OS(), versionName));
        FUZZ_CHECK(!item.LocalSource().empty());
        order.push_back(UpperCase(key));
    }
    const std::set<std::string> keys(order.begin(), order.end());
    FUZZ_CHECK(keys.size() == order.size());
    FUZZ_CHECK(keys == expectedKeys);

    // Loading into an empty collection finds no difference, unless the list
    // itself names a key twice with another CRC.
    if (localCounts.size() == local.size()) FUZZ_CHECK(localResult);
    const bool singles = localCounts.size() == local.size() && serverCounts.size() == server.size();

    if (local.empty()) {
        // Nothing local applied: the server list was loaded as a first list.
        if (singles) FUZZ_CHECK(serverResult);
        for (auto& [key, item] : comparison.colItems()) {
            if (serverCounts[UpperCase(key)] != 1) continue;
            FUZZ_CHECK(item.Removed() == kVbTrue);
            FUZZ_CHECK(item.IsDirty() == (serverMarksDirty ? kVbTrue : kVbFalse));
        }
        return 0;
    }

    bool changedAny = false, serverOnlyAny = false;
    std::vector<std::string> expectedOrder;
    for (const auto& row : local) {
        const Row* other = Only(server, row.first);
        const bool changed = other && other->folder == row.second.folder && other->crc != row.second.crc;
        if (!changed) expectedOrder.push_back(row.first);
    }
    for (auto& [key, item] : comparison.colItems()) {
        const std::string folded = UpperCase(key);
        const int inLocal = localCounts[folded], inServer = serverCounts[folded];
        // Removed only while the local list alone names the key, once.
        FUZZ_CHECK((item.Removed() == kVbTrue) == (inLocal == 1 && inServer == 0));
        FUZZ_CHECK(item.Removed() == kVbTrue || item.Removed() == kVbFalse);
        if (inServer > 0 && inLocal == 0) serverOnlyAny = true;
        if (inLocal > 1 || inServer > 1) continue;

        if (inServer == 0 || inLocal == 0) {
            FUZZ_CHECK(item.IsDirty() == kVbTrue);
            continue;
        }
        const Row& was = *Only(local, folded);
        const Row& now = *Only(server, folded);
        // The key ignores case, the folder test does not.
        const bool changed = was.folder == now.folder && was.crc != now.crc;
        const Row& kept = changed ? now : was;
        changedAny = changedAny || changed;
        FUZZ_CHECK(ItemKey(item) == kept.exactKey && item.CRC() == kept.crc);
        FUZZ_CHECK(item.IsDirty() == (changed || force ? kVbTrue : kVbFalse));
    }
    // A server-only key always counts as a difference.
    if (serverOnlyAny) FUZZ_CHECK(!serverResult);

    if (singles) {
        for (const auto& row : server) {
            const Row* was = Only(local, row.first);
            if (!was || (was->folder == row.second.folder && was->crc != row.second.crc))
                expectedOrder.push_back(row.first);
        }
        FUZZ_CHECK(order == expectedOrder);
        FUZZ_CHECK(comparison.blnMustInstall() == changedAny);
        const bool sameCount = localList.RowCount() == serverList.RowCount();
        FUZZ_CHECK(serverResult == (sameCount && !serverOnlyAny && !changedAny));
    }

    // The uninstall list: one CR LF ended row per listed item, in order.
    const std::string uninstall = comparison.UninstallListText();
    size_t listed = 0, rows = 0;
    for (auto& [key, item] : comparison.colItems()) listed += ListedForUninstall(item, versionName);
    for (size_t end = 0; (end = uninstall.find("\r\n", end)) != std::string::npos; end += 2) ++rows;
    FUZZ_CHECK(rows == listed);
    FUZZ_CHECK(uninstall.empty() || uninstall.substr(uninstall.size() - 2) == "\r\n");
    return 0;
}
