// Parsing of a subcommand's arguments.
#include "command_line.h"

#include <cerrno>
#include <cstdlib>

namespace mdbtool {

bool CommandLine::Parse(int argc, char **argv, int first, const std::vector<OptionDef> &definitions, std::string &error) {
    m_options.clear();
    m_positionals.clear();
    bool optionsEnded = false;
    for (int i = first; i < argc; ++i) {
        std::string arg = argv[i];
        if (optionsEnded || arg.size() < 3 || arg.compare(0, 2, "--") != 0) {
            if (arg == "--") {
                optionsEnded = true;
                continue;
            }
            m_positionals.push_back(arg);
            continue;
        }
        std::string name = arg.substr(2);
        std::string value;
        bool inlineValue = false;
        std::string::size_type eq = name.find('=');
        if (eq != std::string::npos) {
            value = name.substr(eq + 1);
            name = name.substr(0, eq);
            inlineValue = true;
        }
        const OptionDef *definition = nullptr;
        for (const OptionDef &candidate : definitions) {
            if (name == candidate.name) {
                definition = &candidate;
            }
        }
        if (definition == nullptr) {
            error = "unknown option --" + name;
            return false;
        }
        if (definition->takesValue && !inlineValue) {
            if (i + 1 >= argc) {
                error = "option --" + name + " needs a value";
                return false;
            }
            value = argv[++i];
        } else if (!definition->takesValue && inlineValue) {
            error = "option --" + name + " takes no value";
            return false;
        }
        m_options[name] = value;
    }
    return true;
}

std::string CommandLine::Value(const std::string &name, const std::string &fallback) const {
    auto found = m_options.find(name);
    return found != m_options.end() ? found->second : fallback;
}

bool CommandLine::Unsigned(const std::string &name, uint32_t fallback, uint32_t &value, std::string &error) const {
    value = fallback;
    auto found = m_options.find(name);
    if (found == m_options.end()) {
        return true;
    }
    const std::string &text = found->second;
    char *end = nullptr;
    errno = 0;
    unsigned long long number = text.empty() || text[0] == '-' ? 0 : strtoull(text.c_str(), &end, 10);
    if (text.empty() || text[0] == '-' || end == nullptr || *end != '\0' || errno != 0 || number > UINT32_MAX) {
        error = "--" + name + " needs a number from 0 to 4294967295, not \"" + text + "\"";
        return false;
    }
    value = static_cast<uint32_t>(number);
    return true;
}

}  // namespace mdbtool
