// scl lint on any text: it never fails, names problems in line order with a
// column it knows, and a list it passes without a word is one the client
// takes: a valid first row, seventeen fields to every row, every row ended
// by a carriage return, CRCs in the client's form, no key twice.
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "common/conversions.h"
#include "common/text.h"
#include "engine/packing_list_comparison.h"
#include "fuzz_check.h"
#include "items/ItemRecord.h"
#include "tools/scl/lint.h"
#include "tools/scl/row_columns.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace corvan;
    static const std::vector<std::string> kMachines[] = {{}, {"Windows XP"}, {"Windows XP", "Windows 2000"}, {""}};
    fuzz::Input input(data, size);
    scl::LintOptions options;
    options.osNames = kMachines[input.Byte() & 3];
    const std::string text = input.Rest();

    const std::vector<scl::LintProblem> problems = scl::LintList(text, options);
    size_t editorLines = 1;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'))) ++editorLines;
    int64_t previous = 1;
    for (const scl::LintProblem& problem : problems) {
        FUZZ_CHECK(problem.line >= previous && problem.line <= static_cast<int64_t>(editorLines) + 1);
        previous = problem.line;
        FUZZ_CHECK(!problem.message.empty());
        FUZZ_CHECK(problem.column == "row" || problem.column == "list" ||
                   std::find(scl::kColumnNames.begin(), scl::kColumnNames.end(), problem.column) !=
                       scl::kColumnNames.end());
    }
    if (!problems.empty()) return 0;

    // Nothing to say: the client must take the list as it stands.
    const TextRows rows(text);
    FUZZ_CHECK(IsWholeList(rows));
    FUZZ_CHECK(text.find('\0') == std::string::npos);
    // Nothing but line feeds after the last carriage return: no row is lost.
    const size_t lastReturn = text.rfind('\r');
    FUZZ_CHECK(lastReturn != std::string::npos && text.find_first_not_of('\n', lastReturn + 1) == std::string::npos);
    std::set<std::string> keys;
    for (int32_t index = 1; index <= rows.RowCount(); ++index) {
        const std::string row = rows.GetRow(index);
        FUZZ_CHECK(!row.empty());
        FUZZ_CHECK(std::count(row.begin(), row.end(), ',') == 16 && row.find('\n') == std::string::npos);
        ItemRecord item;
        item.UniformString(row);
        // The CRC in the client's form: upper-case hexadecimal, no leading zero.
        const std::string crc = item.CRC();
        FUZZ_CHECK(!crc.empty() && crc.size() <= 8 && crc.find_first_not_of("0123456789ABCDEF") == std::string::npos);
        FUZZ_CHECK(crc == "0" || crc[0] != '0');
        FUZZ_CHECK(!item.FileName().empty() && !item.GetFileExtention().empty());
        // Every number reads as written: nothing is left at an old value.
        const std::vector<std::string> fields = fuzz::Fields(row);
        FUZZ_CHECK(IsNumericText(fields[8]) && fuzz::Try([&] { return LenientLong(fields[8]); }).value == item.Flag());
        FUZZ_CHECK(fuzz::Try([&] { return StrictInteger(fields[14]); }).value == item.Register());
        FUZZ_CHECK(fuzz::Try([&] { return StrictBoolean(fields[15]); }).value == (item.ExecutePackage() != 0));
        if (item.OS() == "ALL") FUZZ_CHECK(keys.insert(UpperCase(ItemKey(item))).second);
    }
    return 0;
}
