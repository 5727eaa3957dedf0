#include "CommandLine.h"

#include <cstddef>
#include <stdexcept>

#include "CliError.h"

namespace talonvireo {
namespace cli {

std::string leadingOperand(const std::vector<std::string>& args, const std::string& missing,
                           std::vector<std::string>& rest) {
    if (args.empty() || args[0].rfind("--", 0) == 0) {
        throw CliError(kExitBadArguments, missing);
    }
    rest.assign(args.begin() + 1, args.end());
    return args[0];
}

CommandLine::CommandLine(const std::vector<std::string>& args, const std::set<std::string>& valued,
                         const std::set<std::string>& flags) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (flags.count(a) != 0) {
            flags_.insert(a);
        } else if (valued.count(a) != 0) {
            if (i + 1 >= args.size()) {
                throw std::invalid_argument("option " + a + " needs a value");
            }
            values_[a] = args[++i];
        } else {
            throw std::invalid_argument("unknown option " + a);
        }
    }
}

bool CommandLine::has(const std::string& name) const {
    return flags_.count(name) != 0 || values_.count(name) != 0;
}

std::string CommandLine::text(const std::string& name, const std::string& fallback) const {
    const auto it = values_.find(name);
    return it == values_.end() ? fallback : it->second;
}

double CommandLine::number(const std::string& name, double fallback) const {
    const auto it = values_.find(name);
    if (it == values_.end()) {
        return fallback;
    }
    size_t used = 0;
    const double v = std::stod(it->second, &used);
    if (used != it->second.size()) {
        throw std::invalid_argument("option " + name + " takes a number");
    }
    return v;
}

int CommandLine::integer(const std::string& name, int fallback) const {
    const auto it = values_.find(name);
    if (it == values_.end()) {
        return fallback;
    }
    size_t used = 0;
    const int v = std::stoi(it->second, &used, 0);  // base 0: accepts 0x100
    if (used != it->second.size()) {
        throw std::invalid_argument("option " + name + " takes an integer");
    }
    return v;
}

}  // namespace cli
}  // namespace talonvireo
