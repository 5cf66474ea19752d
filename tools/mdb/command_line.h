// The arguments of one mdb subcommand: options ("--name value", "--name=value" or a bare flag)
// and positional arguments, checked against the options the subcommand accepts.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace mdbtool {

struct OptionDef {
    const char *name;  // without the leading "--"
    bool takesValue;
};

class CommandLine {
public:
    // Parses argv[first..argc-1]. "--" ends the options. False, with a sentence in error, for an
    // unknown option or an option without its value.
    bool Parse(int argc, char **argv, int first, const std::vector<OptionDef> &definitions, std::string &error);

    bool Has(const std::string &name) const { return m_options.count(name) != 0; }
    std::string Value(const std::string &name, const std::string &fallback = std::string()) const;
    // The option as an unsigned 32-bit decimal; false with a sentence in error when it is not one.
    bool Unsigned(const std::string &name, uint32_t fallback, uint32_t &value, std::string &error) const;
    const std::vector<std::string> &Positionals() const { return m_positionals; }

private:
    std::map<std::string, std::string> m_options;
    std::vector<std::string> m_positionals;
};

}  // namespace mdbtool
