// A command's options as CLI11 parses them, converted afterwards by this class so that every
// refusal names the option and the values it takes ("--width takes an integer", "--min-sfr
// must be a number from 0 to 2").
#pragma once

#include <map>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace talonvireo {
namespace cli {

class OptionValues {
public:
    explicit OptionValues(CLI::App& command) : command_(&command) {}
    OptionValues(const OptionValues&) = delete;
    OptionValues& operator=(const OptionValues&) = delete;

    // A required file operand, such as FRAME.
    OptionValues& operand(const std::string& name, const std::string& description);
    // One or more file operands, such as FRAMES... (none at all when not `required`).
    OptionValues& operands(const std::string& name, const std::string& description,
                           bool required = true);
    // "--name VALUE"; `typeName` shows in the help (INT, NUMBER, PATH, ...).
    OptionValues& option(const std::string& name, const std::string& typeName,
                         const std::string& description);
    OptionValues& flag(const std::string& name, const std::string& description);

    CLI::App& command() const { return *command_; }

    bool has(const std::string& name) const;
    std::string text(const std::string& name, const std::string& fallback = "") const;
    // Every value of an operand list (empty when none was given).
    std::vector<std::string> list(const std::string& name) const;
    // Throws station::Failure (bad input) for a value that is not a whole number (decimal, or hex
    // with 0x) or lies outside min .. max.
    int integer(const std::string& name, int fallback, int min, int max) const;
    // Throws station::Failure (bad input) for a value that is not a finite number, or lies
    // outside min .. max (above min only, when `minExcluded`).
    double number(const std::string& name, double fallback, double min, double max,
                  bool minExcluded = false) const;

private:
    CLI::App* command_;
    std::map<std::string, std::string> texts_;  // nodes stay put: CLI11 writes into them
    std::map<std::string, std::vector<std::string>> lists_;
};

}  // namespace cli
}  // namespace talonvireo
