#include "OptionValues.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>

#include "ExitStatus.h"

namespace talonvireo {
namespace cli {

namespace {
std::string shown(double v) {
    std::ostringstream out;
    out << v;
    return out.str();
}

// A refused value: shortened, so a megabyte of garbage does not end up in the message.
std::string quoted(const std::string& text) {
    return "'" + (text.size() > 40 ? text.substr(0, 40) + "..." : text) + "'";
}
}  // namespace

OptionValues& OptionValues::operand(const std::string& name, const std::string& description) {
    command_->add_option(name, texts_[name], description)->required()->type_name("FILE");
    return *this;
}

OptionValues& OptionValues::operands(const std::string& name, const std::string& description,
                                     bool required) {
    CLI::Option* option = command_->add_option(name, lists_[name], description);
    option->type_name("FILE...");
    if (required) {
        option->required();
    }
    return *this;
}

OptionValues& OptionValues::option(const std::string& name, const std::string& typeName,
                                   const std::string& description) {
    command_->add_option(name, texts_[name], description)->type_name(typeName);
    return *this;
}

OptionValues& OptionValues::flag(const std::string& name, const std::string& description) {
    command_->add_flag(name, description);
    return *this;
}

bool OptionValues::has(const std::string& name) const {
    return command_->count(name) > 0;
}

std::string OptionValues::text(const std::string& name, const std::string& fallback) const {
    const auto it = texts_.find(name);
    return has(name) && it != texts_.end() ? it->second : fallback;
}

std::vector<std::string> OptionValues::list(const std::string& name) const {
    const auto it = lists_.find(name);
    return it != lists_.end() ? it->second : std::vector<std::string>{};
}

int OptionValues::integer(const std::string& name, int fallback, int min, int max) const {
    if (!has(name)) {
        return fallback;
    }
    const std::string t = text(name);
    errno = 0;
    char* end = nullptr;
    const long long v = std::strtoll(t.c_str(), &end, 0);  // base 0: 0x100 too
    if (t.empty() || end != t.c_str() + t.size() ||
        std::isspace(static_cast<unsigned char>(t[0]))) {
        throw station::Failure(station::Cause::BadInput,
                               name + " takes an integer, not " + quoted(t));
    }
    if (errno == ERANGE || v < min || v > max) {
        throw station::Failure(station::Cause::BadInput, name + " is out of range: " + quoted(t) +
                                                             " (" + std::to_string(min) + " .. " +
                                                             std::to_string(max) + ")");
    }
    return static_cast<int>(v);
}

double OptionValues::number(const std::string& name, double fallback, double min, double max,
                            bool minExcluded) const {
    if (!has(name)) {
        return fallback;
    }
    const std::string t = text(name);
    char* end = nullptr;
    const double v = std::strtod(t.c_str(), &end);
    if (t.empty() || end != t.c_str() + t.size() ||
        std::isspace(static_cast<unsigned char>(t[0]))) {
        throw station::Failure(station::Cause::BadInput,
                               name + " takes a number, not " + quoted(t));
    }
    const bool below = minExcluded ? !(v > min) : !(v >= min);
    if (!std::isfinite(v) || below || !(v <= max)) {
        const std::string range = minExcluded ? "above " + shown(min) + " and at most " + shown(max)
                                              : "from " + shown(min) + " to " + shown(max);
        throw station::Failure(station::Cause::BadInput,
                               name + " must be a number " + range + ", not " + quoted(t));
    }
    return v;
}

}  // namespace cli
}  // namespace talonvireo
