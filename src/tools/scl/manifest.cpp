#include "tools/scl/manifest.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <stdexcept>
#include <variant>

#include <toml.hpp>

#include "tools/scl/ansi_text.h"

namespace corvan::scl {
namespace {

using Value = toml::basic_value<toml::discard_comments, std::map, std::vector>;
using Table = Value::table_type;
using Checked = std::variant<std::string, int64_t>;

enum class Kind { Text, Int32, Int16, Boolean };

struct Key {
    const char* name;
    Kind kind;
    std::function<void(ItemRecord&, const std::string&)> setText;
    std::function<void(ItemRecord&, int64_t)> setNumber;
};

// Every column but CRC, which the build computes.
const std::vector<Key>& Keys() {
    static const std::vector<Key> keys = [] {
        auto text = [](const char* name, void (ItemRecord::*set)(const std::string&)) {
            return Key{name, Kind::Text, [set](ItemRecord& r, const std::string& v) { (r.*set)(v); }, {}};
        };
        return std::vector<Key>{
            text("OS", &ItemRecord::OS),
            text("Source", &ItemRecord::Source),
            text("FileName", &ItemRecord::FileName),
            text("Version", &ItemRecord::Version),
            text("ReleaseDate", &ItemRecord::ReleaseDate),
            text("Description", &ItemRecord::Description),
            text("Productname", &ItemRecord::Productname),
            {"Flag", Kind::Int32, {}, [](ItemRecord& r, int64_t v) { r.Flag(int32_t(v)); }},
            text("InstallSwitch", &ItemRecord::InstallSwitch),
            text("UninstallSwitch", &ItemRecord::UninstallSwitch),
            text("LocalSource", &ItemRecord::LocalSource),
            text("InstallFolder", &ItemRecord::InstallFolder),
            text("InstallGroup", &ItemRecord::InstallGroup),
            {"Register", Kind::Int16, {}, [](ItemRecord& r, int64_t v) { r.Register(int16_t(v)); }},
            {"ExecutePackage", Kind::Boolean, {}, [](ItemRecord& r, int64_t v) { r.ExecutePackage(v ? -1 : 0); }},
            text("InstallFileName", &ItemRecord::InstallFileName),
        };
    }();
    return keys;
}

const char* const kRequired[] = {"OS", "Source", "FileName"};

const Key* FindKey(const std::string& name) {
    for (const Key& key : Keys())
        if (name == key.name) return &key;
    return nullptr;
}

// Why `text` cannot stand in a row, or nothing when it can.
std::optional<std::string> RowTextProblem(const std::string& text) {
    if (text.find(',') != std::string::npos)
        return std::string("holds a comma, which the row format cannot carry (it would shift every later column)");
    if (text.find_first_of("\r\n") != std::string::npos)
        return std::string("holds a line break, which would end the row");
    for (char c : text)
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t') return std::string("holds a control character");
    return std::nullopt;
}

class Reader {
public:
    explicit Reader(Manifest& manifest) : manifest_(manifest) {}

    void Read(const Value& root) {
        const Table* defaults = nullptr;
        for (const auto& [name, value] : root.as_table()) {
            if (name == "defaults" && value.is_table())
                defaults = &value.as_table();
            else if (name == "package" && value.is_array())
                continue;
            else if (name == "package")
                Refuse(value, "", "package must be written as [[package]] tables, one per row");
            else
                Refuse(value, "", "unknown key " + name + " (a manifest holds [defaults] and [[package]] tables)");
        }
        std::map<std::string, Checked> shared;
        if (defaults != nullptr)
            for (const auto& [name, value] : *defaults) {
                if (name == "FileName")
                    Refuse(value, "defaults", "FileName belongs to each package, not to the defaults");
                else if (auto checked = Check(name, value, "defaults"))
                    shared.emplace(name, std::move(*checked));
            }
        if (!root.contains("package") || !root.at("package").is_array() || root.at("package").as_array().empty()) {
            manifest_.errors.push_back(manifest_.path + ": no [[package]] table: a manifest lists at least one package");
            return;
        }
        int index = 0;
        for (const Value& table : root.at("package").as_array()) {
            ManifestEntry entry;
            entry.index = ++index;
            entry.line = static_cast<int64_t>(table.location().line());
            if (!table.is_table()) {
                Refuse(table, "package " + std::to_string(index), "is not a table");
                continue;
            }
            const Table& own = table.as_table();
            if (auto file = own.find("FileName"); file != own.end() && file->second.is_string())
                entry.record.FileName(file->second.as_string().str);
            const std::string name = entry.Name();
            bool complete = true;
            for (const char* required : kRequired)
                if (!own.count(required) && !(defaults && defaults->count(required))) {
                    Refuse(table, name, std::string("has no ") + required);
                    complete = false;
                }
            for (const auto& [key, value] : shared)
                if (!own.count(key)) Set(entry, key, value);
            for (const auto& [key, value] : own)
                if (auto checked = Check(key, value, name)) Set(entry, key, *checked);
            if (complete) manifest_.entries.push_back(std::move(entry));
        }
    }

private:
    void Refuse(const Value& value, const std::string& entry, const std::string& why) {
        manifest_.errors.push_back(manifest_.path + ":" + std::to_string(value.location().line()) + ": " +
                                   (entry.empty() ? "" : entry + ": ") + why);
    }

    // The key's value as the row will carry it, or nothing after refusing it.
    std::optional<Checked> Check(const std::string& name, const Value& value,
                                                           const std::string& entry) {
        const Key* key = FindKey(name);
        if (name == "CRC") {
            Refuse(value, entry, "CRC is not given: scl build computes it from the file");
            return std::nullopt;
        }
        if (key == nullptr) {
            Refuse(value, entry, "unknown key " + name + " (the keys are the row's column names, such as OS, "
                                 "Source, FileName, Productname, InstallSwitch)");
            return std::nullopt;
        }
        switch (key->kind) {
            case Kind::Text: {
                if (!value.is_string()) break;
                const std::optional<std::string> ansi = Utf8ToAnsi(value.as_string().str);
                if (!ansi) {
                    Refuse(value, entry, name + " holds a character that the list's code page (Windows-1252) "
                                                "cannot carry");
                    return std::nullopt;
                }
                if (const auto problem = RowTextProblem(*ansi)) {
                    // The value is shown unless it would break the message's line.
                    const bool showable = std::none_of(ansi->begin(), ansi->end(),
                                                       [](char c) { return static_cast<unsigned char>(c) < 0x20; });
                    Refuse(value, entry, name + (showable ? " \"" + value.as_string().str + "\" " : " ") + *problem);
                    return std::nullopt;
                }
                return *ansi;
            }
            case Kind::Int32:
            case Kind::Int16: {
                if (!value.is_integer()) break;
                const int64_t number = value.as_integer();
                const bool wide = key->kind == Kind::Int32;
                const int64_t low = wide ? std::numeric_limits<int32_t>::min() : std::numeric_limits<int16_t>::min();
                const int64_t high = wide ? std::numeric_limits<int32_t>::max() : std::numeric_limits<int16_t>::max();
                if (number < low || number > high) {
                    Refuse(value, entry, name + " " + std::to_string(number) + " is out of range (" +
                                             std::to_string(low) + " to " + std::to_string(high) + ")");
                    return std::nullopt;
                }
                return number;
            }
            case Kind::Boolean:
                if (!value.is_boolean()) break;
                return int64_t(value.as_boolean() ? 1 : 0);
        }
        const char* wanted = key->kind == Kind::Text      ? "a string"
                             : key->kind == Kind::Boolean ? "true or false"
                                                          : "a whole number";
        Refuse(value, entry, name + " must be " + wanted);
        return std::nullopt;
    }

    static void Set(ManifestEntry& entry, const std::string& name, const Checked& value) {
        const Key& key = *FindKey(name);
        if (key.kind == Kind::Text)
            key.setText(entry.record, std::get<std::string>(value));
        else
            key.setNumber(entry.record, std::get<int64_t>(value));
        if (name == "Version") entry.versionGiven = true;
    }

    Manifest& manifest_;
};

// toml11's messages run over several lines; the first names the fault.
std::string FirstLine(const std::string& text) {
    std::string line = text.substr(0, text.find('\n'));
    if (line.rfind("[error] ", 0) == 0) line.erase(0, 8);
    return line;
}

}  // namespace

std::string ManifestEntry::Name() const {
    return "package " + std::to_string(index) +
           (record.FileName().empty() ? std::string() : " (" + record.FileName() + ")");
}

Manifest ReadManifest(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) throw std::runtime_error("cannot read manifest " + path + ": no such file");
    if (std::filesystem::is_directory(status))
        throw std::runtime_error("cannot read manifest " + path + ": it is a folder");
    Manifest manifest;
    manifest.path = path;
    Value root;
    try {
        root = toml::parse<toml::discard_comments, std::map, std::vector>(path);
    } catch (const toml::syntax_error& e) {
        throw std::runtime_error(path + ":" + std::to_string(e.location().line()) + ": " + FirstLine(e.what()));
    } catch (const std::exception& e) {
        throw std::runtime_error("cannot read manifest " + path + ": " + FirstLine(e.what()));
    }
    Reader(manifest).Read(root);
    return manifest;
}

}  // namespace corvan::scl
