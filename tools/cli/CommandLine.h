// Minimal "--name value" / "--flag" option reader for the command-line tool.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace talonvireo {
namespace cli {

// The first argument, a file name, when it is not an option; throws CliError (bad
// arguments) with `missing` otherwise. `rest` receives the arguments after it.
std::string leadingOperand(const std::vector<std::string>& args, const std::string& missing,
                           std::vector<std::string>& rest);

class CommandLine {
public:
    // `valued` names options that take a value, `flags` those that do not.
    // Throws std::invalid_argument for an unknown option or a missing value.
    CommandLine(const std::vector<std::string>& args, const std::set<std::string>& valued,
                const std::set<std::string>& flags);

    bool has(const std::string& name) const;
    double number(const std::string& name, double fallback) const;
    int integer(const std::string& name, int fallback) const;
    std::string text(const std::string& name, const std::string& fallback) const;

private:
    std::map<std::string, std::string> values_;
    std::set<std::string> flags_;
};

}  // namespace cli
}  // namespace talonvireo
