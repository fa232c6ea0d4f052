#include "host/host_options.h"

#include <cctype>

namespace corvan::host {

namespace {

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool TakesValue(const std::string& name) {
    return name == "mode" || name == "url" || name == "groups" || name == "answer";
}

}  // namespace

ParsedOptions ParseHostOptions(const std::vector<std::string>& arguments) {
    ParsedOptions parsed;
    HostOptions& o = parsed.options;
    bool modeGiven = false;
    auto fail = [&](std::string message) {
        parsed.error = std::move(message);
        return parsed;
    };
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument.size() < 2 || (argument[0] != '/' && argument[0] != '-'))
            return fail("unexpected argument '" + argument + "'");
        std::string name = argument.substr(argument[1] == '-' ? 2 : 1);
        std::optional<std::string> value;
        size_t separator = name.find_first_of(":=");
        if (separator != std::string::npos) {
            value = name.substr(separator + 1);
            name.resize(separator);
        }
        name = Lower(name);
        if (name == "?" || name == "h" || name == "help") {
            o.help = true;
            continue;
        }
        if (TakesValue(name) && !value) {
            if (i + 1 >= arguments.size()) return fail("option /" + name + " needs a value");
            value = arguments[++i];
        } else if (!TakesValue(name) && value) {
            return fail("option /" + name + " takes no value");
        }
        if (name == "mode") {
            if (value->size() != 1 || (*value)[0] < '1' || (*value)[0] > '5')
                return fail("/mode must be 1 (install or update), 2 (repair), 3 (uninstall), 4 (force uninstall) or 5, not '" +
                            *value + "'");
            o.mode = (*value)[0] - '0';
            modeGiven = true;
        } else if (name == "url") {
            std::string lower = Lower(*value);
            if ((lower.rfind("https://", 0) != 0 && lower.rfind("http://", 0) != 0) || value->find('/', 8) == std::string::npos)
                return fail("/url must be an http or https address of a page on the installer server, such as "
                            "https://extranet.example/installer/default.asp, not '" + *value + "'");
            o.url = *value;
        } else if (name == "groups") {
            o.groups = *value;
        } else if (name == "answer") {
            std::string answer = Lower(*value);
            if (answer != "yes" && answer != "no") return fail("/answer must be yes or no, not '" + *value + "'");
            o.answerYes = answer == "yes";
        } else if (name == "check") {
            o.check = true;
        } else if (name == "quiet") {
            o.quiet = true;
        } else if (name == "trace") {
            o.trace = true;
        } else if (name == "local") {
            o.local = true;
        } else {
            return fail("unknown option '" + argument + "'");
        }
    }
    if (o.check && modeGiven) return fail("/check and /mode cannot be used together");
    return parsed;
}

std::string HostUsage() {
    return "Runs the Corvan Connect client manager as the extranet page would.\n"
           "\n"
           "CorvanClient [/mode N | /check] [/url URL] [/groups GROUPS] [/answer yes|no]\n"
           "             [/quiet] [/trace] [/local]\n"
           "\n"
           "  /mode N      1 install or update (default), 2 repair (force install),\n"
           "               3 uninstall, 4 force uninstall (rebuild the uninstall list), 5 as 1\n"
           "  /check       only ask whether anything must be installed\n"
           "  /url URL     the page address; the installer base URL is the part up to its last \"/\"\n"
           "  /groups G    the Windows groups of the user, as the page passes them\n"
           "  /answer A    answer the control's questions yes or no (default no); each\n"
           "               question is printed with its title and the answer given\n"
           "  /quiet       print only errors and the summary line\n"
           "  /trace       also print the control's trace lines\n"
           "  /local       load CorvanInstaller.ocx from this program's folder instead of\n"
           "               the registered control\n"
           "\n"
           "Exit codes: 0 done (or /check: nothing to do), 1 the run failed, 2 bad usage,\n"
           "3 the control could not be created, 4 /check: something must be installed.\n";
}

}  // namespace corvan::host
