#include "tools/scl/cli.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <new>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "corvan/build_config.h"
#include "tools/scl/ansi_text.h"
#include "tools/scl/build.h"
#include "tools/scl/lint.h"
#include "tools/scl/manifest.h"
#include "tools/scl/plan.h"

namespace corvan::scl {
namespace {

namespace fs = std::filesystem;

// A packing list the client could hold is far smaller; anything larger is
// not read into memory.
constexpr uintmax_t kLargestList = 512ull << 20;

const char kUsage[] =
    "usage: scl build FOLDER MANIFEST [-o LIST] [--os NAME]...\n"
    "       scl lint LIST [--files DIR] [--os NAME]... [--json]\n"
    "       scl plan LOCAL SERVER --os NAME [--groups TEXT] [--installed 0|1] [--ie N] [--acrobat 0|1]\n"
    "       scl help [COMMAND] | scl COMMAND --help | scl --version\n";

const char kHelp[] =
    "scl: build, lint and plan the packing lists of the installer server.\n"
    "\n"
    "  scl build FOLDER MANIFEST   write a packing list from a folder of packages and a TOML manifest\n"
    "  scl lint LIST               report every problem the client would meet in a packing list\n"
    "  scl plan LOCAL SERVER       what a PC holding LOCAL does when the server publishes SERVER\n"
    "\n"
    "Run scl COMMAND --help for a command's options. Exit status: 0 done (lint: clean),\n"
    "1 problems found (lint), manifest refused (build) or server list refused by every PC (plan),\n"
    "2 bad usage or unreadable input.\n";

const char kBuildHelp[] =
    "usage: scl build FOLDER MANIFEST [-o LIST] [--os NAME]...\n"
    "\n"
    "Writes the packing list of the packages in FOLDER described by MANIFEST (TOML): one row per\n"
    "[[package]], in manifest order, seventeen columns, CR LF after every row. The CRC of every\n"
    "file is computed; the version comes from the file's version resource where it has one.\n"
    "Values the row cannot carry (a comma, a line break, a character outside Windows-1252) are\n"
    "refused with the manifest entry named, and so is anything scl lint would fault.\n"
    "\n"
    "  -o, --output LIST   write the list there (whole or not at all); default: standard output\n"
    "  --os NAME           a Windows version name the list must serve (\"Windows XP\"); repeat or\n"
    "                      separate with commas; every row must apply to one of them\n"
    "  -q, --quiet         no progress lines and no notes, only refusals\n"
    "\n"
    "Exit status: 0 written, 1 refused (nothing written), 2 bad usage or unreadable input.\n";

const char kLintHelp[] =
    "usage: scl lint LIST [--files DIR] [--os NAME]... [--json]\n"
    "\n"
    "Reports every problem of the packing list LIST as the client would read it, one per line:\n"
    "LIST:LINE: COLUMN: message. Too few fields, a CRC not in the client's form (upper-case\n"
    "hexadecimal, no leading zeros), a numeric column that will not convert, a duplicate key\n"
    "(InstallFolder + FileName), a Source without its trailing \"/\", a file name without an\n"
    "extension, a last row without its line break, a line break without its carriage return,\n"
    "an empty list.\n"
    "\n"
    "  --files DIR   check every CRC against the file of that name in DIR\n"
    "  --os NAME     a Windows version name the list must serve; repeat or separate with commas;\n"
    "                a row that applies to none of them is a problem\n"
    "  --json        one JSON object: {\"list\", \"problems\": [{\"line\", \"column\", \"message\"}]}\n"
    "\n"
    "Exit status: 0 clean, 1 problems, 2 bad usage or unreadable LIST.\n";

const char kPlanHelp[] =
    "usage: scl plan LOCAL SERVER --os NAME [--groups TEXT] [--installed 0|1] [--ie N] [--acrobat 0|1]\n"
    "\n"
    "Tells what an install run does on a PC whose local list is LOCAL when the server publishes\n"
    "SERVER, with the engine's own comparison and install-pass decisions: one item per line,\n"
    "ACTION<TAB>KEY<TAB>REASON, ACTION being install, update, remove, keep or skip, KEY the\n"
    "item's InstallFolder + FileName, in the order the PC works through them; the server's rows\n"
    "for other machines follow as skip. What happens before the pass (a list fetched again, no\n"
    "pass at all) and a count go to standard error.\n"
    "\n"
    "  --os NAME         the PC's Windows version name, as the client reads it (\"Windows XP\")\n"
    "  --groups TEXT     the user's groups as the page passes them (default: none, every group)\n"
    "  --installed 0|1   whether the client is installed (\"InstallComplete\"; default 1)\n"
    "  --ie N            Internet Explorer's major version (default 6)\n"
    "  --acrobat 0|1     whether a suitable Adobe Acrobat is present (default 0)\n"
    "\n"
    "Exit status: 0 plan made, 1 every PC refuses SERVER (nothing changes), 2 bad usage or\n"
    "unreadable input.\n";

class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Option {
    const char* name;   // long name, without "--"
    char shortName;     // or 0
    bool takesValue;
};

struct CommandLine {
    std::vector<std::string> positional;
    std::map<std::string, std::vector<std::string>> values;  // by long name
    bool Has(const std::string& name) const { return values.count(name) != 0; }
    std::string Last(const std::string& name) const { return Has(name) ? values.at(name).back() : std::string(); }
};

CommandLine Parse(const std::vector<std::string>& args, const std::vector<Option>& options) {
    CommandLine line;
    bool onlyPositional = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (onlyPositional || arg.size() < 2 || arg[0] != '-') {
            line.positional.push_back(arg);
            continue;
        }
        if (arg == "--") {
            onlyPositional = true;
            continue;
        }
        std::string name = arg, value;
        bool inlineValue = false;
        const Option* option = nullptr;
        if (arg.rfind("--", 0) == 0) {
            name = arg.substr(2);
            if (const size_t equals = name.find('='); equals != std::string::npos) {
                value = name.substr(equals + 1);
                name.resize(equals);
                inlineValue = true;
            }
            for (const Option& o : options)
                if (name == o.name) option = &o;
        } else if (arg.size() == 2) {
            for (const Option& o : options)
                if (o.shortName == arg[1]) option = &o;
        }
        if (option == nullptr) throw UsageError("unknown option " + arg);
        if (option->takesValue && !inlineValue) {
            if (i + 1 >= args.size()) throw UsageError("option " + arg + " needs a value");
            value = args[++i];
        } else if (!option->takesValue && inlineValue) {
            throw UsageError("option --" + name + " takes no value");
        }
        line.values[option->name].push_back(value);
    }
    return line;
}

// Every --os value, commas separating names too (no OS column holds one).
std::vector<std::string> OsNames(const CommandLine& line) {
    std::vector<std::string> names;
    if (!line.Has("os")) return names;
    for (const std::string& value : line.values.at("os")) {
        std::stringstream parts(value);
        for (std::string name; std::getline(parts, name, ',');)
            if (!name.empty()) names.push_back(name);
    }
    if (names.empty()) throw UsageError("--os needs a Windows version name, such as \"Windows XP\"");
    return names;
}

std::string ReadListFile(const std::string& path) {
    std::error_code error;
    const auto status = fs::status(path, error);
    if (!fs::exists(status)) throw std::runtime_error("cannot read " + path + ": no such file");
    if (fs::is_directory(status)) throw std::runtime_error("cannot read " + path + ": it is a folder");
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    auto tooLarge = [&] {
        return std::runtime_error(path + " is larger than " + std::to_string(kLargestList >> 20) +
                          " MiB: too large for a packing list");
    };
    const uintmax_t size = fs::file_size(path, error);
    if (!error && size > kLargestList) throw tooLarge();
    std::string text;
    if (!error) text.reserve(size_t(size));
    std::vector<char> block(1 << 16);
    while (in.read(block.data(), std::streamsize(block.size())) || in.gcount() > 0) {
        text.append(block.data(), size_t(in.gcount()));
        if (text.size() > kLargestList) throw tooLarge();
    }
    if (in.bad()) throw std::runtime_error("cannot read " + path);
    return text;
}

// Writes the whole text or nothing: a new file beside the target, then moved
// over it.
void WriteWholeFile(const std::string& path, const std::string& text) {
    const std::string temporary = path + ".scl-new";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out.write(text.data(), std::streamsize(text.size()));
        out.flush();
        if (!out) {
            std::error_code ignored;
            fs::remove(temporary, ignored);
            throw std::runtime_error("cannot write " + path);
        }
    }
    std::error_code error;
    fs::rename(temporary, path, error);
    if (error) {
        fs::remove(temporary, error);
        throw std::runtime_error("cannot write " + path + ": " + error.message());
    }
}

void NeedPositional(const CommandLine& line, size_t count, const char* names) {
    if (line.positional.size() != count) throw UsageError(std::string("expects ") + names);
}

int Build(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    const CommandLine line = Parse(args, {{"output", 'o', true}, {"os", 0, true}, {"quiet", 'q', false}, {"help", 'h', false}});
    if (line.Has("help")) return out << kBuildHelp, kExitClean;
    NeedPositional(line, 2, "FOLDER MANIFEST");
    BuildOptions options{line.positional[0], OsNames(line), line.Last("output")};
    std::error_code error;
    if (!fs::is_directory(options.folder, error)) throw std::runtime_error("no folder " + options.folder);
    const Manifest manifest = ReadManifest(line.positional[1]);
    auto progress = [&](const std::string& text) {
        if (!line.Has("quiet")) err << text << std::endl;
    };
    const BuildResult result = BuildList(manifest, options, progress);
    if (!line.Has("quiet"))
        for (const std::string& note : result.notes) err << "note: " << note << "\n";
    if (!result.errors.empty()) {
        for (const std::string& e : result.errors) err << e << "\n";
        err << "scl build: refused (" << result.errors.size() << (result.errors.size() == 1 ? " problem" : " problems")
            << "); nothing written\n";
        return kExitProblems;
    }
    if (options.output.empty()) {
        out << result.list << std::flush;
    } else {
        WriteWholeFile(options.output, result.list);
        if (!line.Has("quiet"))
            err << "scl build: wrote " << manifest.entries.size() << " rows to " << options.output << "\n";
    }
    return kExitClean;
}

int Lint(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    const CommandLine line = Parse(args, {{"files", 0, true}, {"os", 0, true}, {"json", 0, false}, {"help", 'h', false}});
    if (line.Has("help")) return out << kLintHelp, kExitClean;
    NeedPositional(line, 1, "one LIST");
    const std::string& path = line.positional[0];
    LintOptions options{OsNames(line), line.Last("files")};
    std::error_code error;
    if (line.Has("files") && !fs::is_directory(options.filesDir, error))
        throw std::runtime_error("no folder " + options.filesDir);
    const std::vector<LintProblem> problems = LintList(ReadListFile(path), options);
    if (line.Has("json")) {
        nlohmann::json report = {{"list", path}, {"problems", nlohmann::json::array()}};
        for (const LintProblem& p : problems)
            report["problems"].push_back(
                {{"line", p.line}, {"column", p.column}, {"message", AnsiToUtf8(p.message)}});
        out << report.dump(1, '\t', false, nlohmann::json::error_handler_t::replace) << "\n";
    } else {
        for (const LintProblem& p : problems) out << path << ":" << p.line << ": " << p.column << ": " << p.message << "\n";
    }
    out << std::flush;
    if (problems.empty()) return kExitClean;
    err << "scl lint: " << problems.size() << (problems.size() == 1 ? " problem" : " problems") << " in " << path << "\n";
    return kExitProblems;
}

int32_t NumberOption(const CommandLine& line, const std::string& name, int32_t fallback, int32_t low, int32_t high) {
    if (!line.Has(name)) return fallback;
    const std::string text = line.Last(name);
    try {
        size_t used = 0;
        const long value = std::stol(text, &used);
        if (used == text.size() && value >= low && value <= high) return static_cast<int32_t>(value);
    } catch (const std::exception&) {
    }
    throw UsageError("--" + name + " takes a number from " + std::to_string(low) + " to " + std::to_string(high) +
                     ", not \"" + text + "\"");
}

int MakePlanCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    const CommandLine line = Parse(args, {{"os", 0, true},
                                          {"groups", 0, true},
                                          {"installed", 0, true},
                                          {"ie", 0, true},
                                          {"acrobat", 0, true},
                                          {"help", 'h', false}});
    if (line.Has("help")) return out << kPlanHelp, kExitClean;
    NeedPositional(line, 2, "LOCAL SERVER");
    if (!line.Has("os") || line.Last("os").empty())
        throw UsageError("--os names the PC's Windows version, such as \"Windows XP\"");
    PlanMachine machine;
    machine.versionName = line.Last("os");
    machine.usersGroups = line.Last("groups");
    machine.installed = NumberOption(line, "installed", 1, 0, 1) == 1;
    machine.ieMajorVersion = NumberOption(line, "ie", 6, 0, 99);
    machine.acrobatPresent = NumberOption(line, "acrobat", 0, 0, 1) == 1;
    const std::string local = ReadListFile(line.positional[0]);
    const std::string server = ReadListFile(line.positional[1]);
    const Plan plan = MakePlan(local, server, machine);
    if (plan.refused) return err << "scl plan: " << plan.refusal << "\n", kExitProblems;
    for (const std::string& note : plan.notes) err << "scl plan: " << note << "\n";
    std::map<std::string, size_t> counts;
    for (const PlanItem& item : plan.items) {
        out << item.action << '\t' << item.key << '\t' << item.reason << '\n';
        ++counts[item.action];
    }
    out << std::flush;
    err << "scl plan:";
    for (const char* action : {"install", "update", "remove", "keep", "skip"})
        err << " " << counts[action] << " " << action << (std::string(action) == "skip" ? "\n" : ",");
    return kExitClean;
}

struct Command {
    const char* name;
    int (*run)(const std::vector<std::string>&, std::ostream&, std::ostream&);
    const char* help;
};

const Command kCommands[] = {
    {"build", Build, kBuildHelp},
    {"lint", Lint, kLintHelp},
    {"plan", MakePlanCommand, kPlanHelp},
};

const Command* FindCommand(const std::string& name) {
    for (const Command& command : kCommands)
        if (name == command.name) return &command;
    return nullptr;
}

int NoCommand(const std::string& name, std::ostream& err) {
    err << "scl: no command " << name << " (the commands:";
    for (const Command& command : kCommands) err << " " << command.name;
    err << "; see scl --help)\n";
    return kExitUsage;
}

}  // namespace

int RunScl(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    if (args.empty()) return err << kUsage, kExitUsage;
    const std::string& first = args[0];
    if (first == "--help" || first == "-h") return out << kHelp, kExitClean;
    if (first == "--version") return out << "scl " << CORVAN_VERSION_TEXT << "\n", kExitClean;
    if (first == "help") {
        if (args.size() == 1) return out << kHelp, kExitClean;
        const Command* command = FindCommand(args[1]);
        if (command == nullptr) return NoCommand(args[1], err);
        return out << command->help, kExitClean;
    }
    const Command* command = FindCommand(first);
    if (command == nullptr) return NoCommand(first, err);
    try {
        return command->run(std::vector<std::string>(args.begin() + 1, args.end()), out, err);
    } catch (const UsageError& e) {
        err << "scl " << command->name << ": " << e.what() << " (see scl " << command->name << " --help)\n";
    } catch (const std::bad_alloc&) {
        err << "scl " << command->name << ": out of memory\n";
    } catch (const std::exception& e) {
        err << "scl " << command->name << ": " << e.what() << "\n";
    }
    return kExitUsage;
}

}  // namespace corvan::scl
