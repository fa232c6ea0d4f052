#include "tools/scl/lint.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

#include "common/conversions.h"
#include "common/failure.h"
#include "common/keyed_collection.h"
#include "common/text.h"
#include "engine/packing_list_comparison.h"
#include "files/cCRC32.h"
#include "files/list_rows.h"
#include "items/ItemRecord.h"
#include "tools/scl/row_columns.h"

namespace corvan::scl {
namespace {

const char kReDownloaded[] = "so the package is downloaded and run again on every visit";

// Editor line numbers: CR LF, LF and a lone CR each end a line.
class LineCounter {
public:
    explicit LineCounter(std::string_view text) : starts_(1, 0) {
        for (size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (c == '\n' || (c == '\r' && (i + 1 >= text.size() || text[i + 1] != '\n'))) starts_.push_back(i + 1);
        }
    }
    int64_t At(size_t offset) const {
        return std::upper_bound(starts_.begin(), starts_.end(), offset) - starts_.begin();
    }

private:
    std::vector<size_t> starts_;  // offset where each line begins
};

// The engine's view of the rows, over the text lint already indexed.
class IndexedRows : public ListRows {
public:
    IndexedRows(std::string_view text, const std::vector<size_t>& starts) : text_(text), starts_(starts) {}
    int32_t RowCount() const override { return static_cast<int32_t>(starts_.size()) - 1; }
    std::string GetRow(int32_t index) const override {
        return index > RowCount() ? std::string() : std::string(ListRow(text_, starts_, index));
    }

private:
    std::string_view text_;
    const std::vector<size_t>& starts_;
};

struct Field {
    std::string_view text;
    size_t offset;  // in the whole list
};

std::vector<Field> SplitFields(std::string_view row, size_t rowOffset) {
    std::vector<Field> fields;
    size_t start = 0;
    for (;;) {
        const size_t comma = row.find(',', start);
        const size_t end = comma == std::string_view::npos ? row.size() : comma;
        fields.push_back({row.substr(start, end - start), rowOffset + start});
        if (comma == std::string_view::npos) return fields;
        start = comma + 1;
    }
}

std::string Quoted(std::string_view text) {
    std::string quoted(1, '"');
    quoted.append(text).push_back('"');
    return quoted;
}

std::string FieldCount(size_t count) { return std::to_string(count) + (count == 1 ? " field" : " fields"); }

// The client's form of a CRC written in hexadecimal of any case and with
// any leading zeros; nothing when it is no 32-bit hexadecimal number.
std::optional<std::string> CanonicalCrc(std::string_view text) {
    if (text.empty() || text.size() > 8) return std::nullopt;
    uint32_t value = 0;
    for (char c : text) {
        const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
        if (digit < 0) return std::nullopt;
        value = value << 4 | uint32_t(digit);
    }
    return CrcText(static_cast<int32_t>(value));
}

std::string JoinNames(const std::vector<std::string>& names) {
    std::string joined;
    for (const std::string& name : names) joined += (joined.empty() ? "" : ", ") + Quoted(name);
    return joined;
}

// What one row leaves for the checks that look across rows.
struct RowKey {
    int64_t line;
    std::string os;
    std::string key;
};

class Linter {
public:
    Linter(std::string_view text, const LintOptions& options) : text_(text), options_(options), lines_(text) {}

    std::vector<LintProblem> Run() {
        if (const size_t nul = text_.find('\0'); nul != std::string_view::npos) {
            Report(lines_.At(nul), "list", "not a text file (a NUL byte at offset " + std::to_string(nul) +
                                               "): a packing list is plain text, one row per line");
            return std::move(problems_);
        }
        const std::vector<size_t> starts = IndexListRows(text_);
        const int32_t count = static_cast<int32_t>(starts.size()) - 1;
        form_ = CheckListForm(IndexedRows(text_, starts));
        if (form_ == ListForm::Empty) {
            if (text_.find_first_not_of(" \t\r\n") == std::string_view::npos)
                Report(1, "list", "the list is empty: the client takes it for invalid and fetches it again on every visit");
            else
                Report(1, "list", "no line ends in a carriage return (CR LF): the client reads no row at all");
            return std::move(problems_);
        }
        for (int32_t index = 1; index <= count + 1; ++index) {
            const std::string_view row = ListRow(text_, starts, index);
            if (index == count + 1 && row.empty()) break;
            const size_t offset = row.empty() ? starts[index - 1] : size_t(row.data() - text_.data());
            const int64_t line = lines_.At(offset) + (row.empty() && index > 1 ? 1 : 0);
            if (index == count + 1)
                Report(line, "row", "the last row has no line break after it: the client never reads it (end it with CR LF)");
            if (row.empty() && index > 1) {
                Report(line, "row", "blank row: the client skips it but counts it, so lists that differ only by it "
                                    "compare as changed");
                continue;
            }
            CheckRow(row, offset, line, index == 1);
        }
        CheckDuplicates();
        std::stable_sort(problems_.begin(), problems_.end(),
                         [](const LintProblem& a, const LintProblem& b) { return a.line < b.line; });
        return std::move(problems_);
    }

private:
    void Report(int64_t line, std::string_view column, std::string message) {
        problems_.push_back({line, std::string(column), std::move(message)});
    }

    void CheckRow(std::string_view row, size_t offset, int64_t line, bool first) {
        for (size_t lf = row.find('\n'); lf != std::string_view::npos; lf = row.find('\n', lf + 1))
            Report(lines_.At(offset + lf), "row",
                   "the line ends in a line feed without a carriage return: the client reads it and the next line as "
                   "one row");
        const std::vector<Field> fields = SplitFields(row, offset);
        const size_t n = fields.size();
        if (first && form_ == ListForm::TooFewFields)
            Report(line, kColumnNames[n], "the first row has " + FieldCount(n) +
                                              ": the client takes a list whose first row has fewer than eleven for "
                                              "invalid and fetches it again on every visit");
        else if (n < kColumnNames.size())
            Report(line, kColumnNames[n], "the row has " + FieldCount(n) + ", 17 expected: " +
                                              std::string(kColumnNames[n]) + " and the columns after it are missing");
        else if (n > kColumnNames.size())
            Report(line, "row", "the row has " + FieldCount(n) +
                                    ", 17 expected: a comma inside a value shifts every later column");
        if (row.empty()) return;

        ItemRecord item;
        item.UniformString(std::string(row));
        auto at = [&](size_t column) -> const Field* { return column < n ? &fields[column] : nullptr; };
        auto lineOf = [&](const Field& f) { return lines_.At(f.offset); };

        if (const Field* f = at(column::kOS)) CheckOS(f->text, lineOf(*f));
        if (const Field* f = at(column::kSource); f && !EndsWith(f->text, "/"))
            Report(lineOf(*f), "Source", Quoted(f->text) + " does not end in \"/\": the client fetches Source followed "
                                         "directly by FileName");
        if (const Field* f = at(column::kFileName)) {
            if (f->text.empty())
                Report(lineOf(*f), "FileName", "empty file name");
            else if (item.GetFileExtention().empty())
                Report(lineOf(*f), "FileName", Quoted(f->text) + " has no extension: the client runs a package by "
                                               "its extension");
            if (!f->text.empty() && (f->text.front() == ' ' || f->text.back() == ' '))
                Report(lineOf(*f), "FileName", Quoted(f->text) + " has blanks at its ends, which are part of the name");
        }
        if (const Field* f = at(column::kCRC)) CheckCrc(f->text, lineOf(*f), at(column::kFileName));
        if (const Field* f = at(column::kFlag)) CheckNumber(*f, lineOf(*f), "Flag", [](std::string_view t) {
            LenientLong(t);
            return IsNumericText(t);
        });
        if (const Field* f = at(column::kRegister)) CheckNumber(*f, lineOf(*f), "Register", [](std::string_view t) {
            StrictInteger(t);
            return true;
        });
        if (const Field* f = at(column::kExecutePackage))
            CheckNumber(*f, lineOf(*f), "ExecutePackage", [](std::string_view t) {
                StrictBoolean(t);
                return true;
            });
        if (n > column::kFileName) keys_.push_back({line, item.OS(), item.InstallFolder() + item.FileName()});
    }

    void CheckOS(std::string_view os, int64_t line) {
        const bool wrongCaseAll = os != "ALL" && EqualsNoCase(os, "ALL");
        if (os.empty()) {
            Report(line, "OS", "empty: the row applies to no machine and is never installed");
        } else if (!options_.osNames.empty() &&
                   std::none_of(options_.osNames.begin(), options_.osNames.end(),
                                [&](const std::string& name) { return AppliesToMachine(std::string(os), name); })) {
            Report(line, "OS", Quoted(os) + " applies to none of " + JoinNames(options_.osNames) +
                                   (wrongCaseAll ? " (only \"ALL\" in capitals means every machine)" : "") +
                                   ": the row is never installed there");
        } else if (wrongCaseAll) {
            Report(line, "OS", Quoted(os) + ": only \"ALL\" in capitals means every machine");
        }
    }

    void CheckCrc(std::string_view crc, int64_t line, const Field* fileName) {
        const std::optional<std::string> canonical = CanonicalCrc(crc);
        if (crc.empty())
            Report(line, "CRC", std::string("empty: no file matches it, ") + kReDownloaded);
        else if (!canonical)
            Report(line, "CRC", Quoted(crc) + " is not a hexadecimal CRC-32: no file matches it, " + kReDownloaded);
        else if (*canonical != crc)
            Report(line, "CRC", Quoted(crc) + " must be written " + Quoted(*canonical) +
                                    " (upper-case, no leading zeros): the client compares the text, " + kReDownloaded);
        if (options_.filesDir.empty() || fileName == nullptr || fileName->text.empty()) return;
        const std::string path = (std::filesystem::path(options_.filesDir) / std::string(fileName->text)).string();
        const std::optional<std::string> actual = FileCrc(path);
        if (!actual)
            Report(lines_.At(fileName->offset), "FileName", Quoted(fileName->text) + " is not a readable file in " +
                                                                Quoted(options_.filesDir));
        else if (canonical != actual)
            Report(line, "CRC", Quoted(crc) + " does not match " + Quoted(path) + ", whose CRC is " + *actual + ": " +
                                    kReDownloaded);
    }

    template <typename Convert>
    void CheckNumber(const Field& field, int64_t line, std::string_view column, Convert convert) {
        bool clean = false;
        try {
            clean = convert(field.text);
        } catch (const Failure&) {
        }
        if (field.text.empty())
            Report(line, column, "empty: the client reads 0");
        else if (!clean && column == "Flag")
            Report(line, column, Quoted(field.text) + " is not a plain number: the client reads it as " +
                                     FlagReading(field.text));
        else if (!clean)
            Report(line, column, Quoted(field.text) + " will not convert: the client leaves the column at 0");
    }

    static std::string FlagReading(std::string_view text) {
        try {
            return std::to_string(LenientLong(text));
        } catch (const Failure&) {
            return "0";
        }
    }

    std::optional<std::string> FileCrc(const std::string& path) {
        auto known = crcs_.find(path);
        if (known == crcs_.end()) {
            std::optional<std::string> crc;
            try {
                crc = FileCrcText(path);
            } catch (const Failure&) {
            }
            known = crcs_.emplace(path, crc).first;
        }
        return known->second;
    }

    // Two rows with one key that both apply on some machine: the client
    // keeps one of them. The machines are the names asked for, or else the
    // OS texts the list itself uses.
    void CheckDuplicates() {
        std::vector<std::string> machines = options_.osNames;
        if (machines.empty()) {
            std::set<std::string> named;
            for (const RowKey& row : keys_)
                if (!row.os.empty() && row.os != "ALL") named.insert(row.os);
            machines.assign(named.begin(), named.end());
            if (machines.empty()) machines.push_back("");  // only ALL rows: any machine
        }
        std::set<int64_t> reported;
        for (const std::string& machine : machines) {
            KeyedCollection<int64_t> seen;
            for (const RowKey& row : keys_) {
                if (!(row.os == "ALL" || (!machine.empty() && AppliesToMachine(row.os, machine)))) continue;
                if (const int64_t* twin = seen.Find(row.key)) {
                    if (reported.insert(row.line).second)
                        Report(row.line, "FileName",
                               "same key (InstallFolder + FileName " + Quoted(row.key) + ") as line " +
                                   std::to_string(*twin) + (machine.empty() ? "" : " on " + Quoted(machine)) +
                                   ": the client keeps only one of the two rows");
                } else {
                    seen.Add(row.key, row.line);
                }
            }
        }
    }

    std::string_view text_;
    const LintOptions& options_;
    LineCounter lines_;
    std::vector<LintProblem> problems_;
    std::vector<RowKey> keys_;
    ListForm form_ = ListForm::Empty;
    std::map<std::string, std::optional<std::string>> crcs_;
};

}  // namespace

std::vector<LintProblem> LintList(std::string_view text, const LintOptions& options) {
    return Linter(text, options).Run();
}

}  // namespace corvan::scl
