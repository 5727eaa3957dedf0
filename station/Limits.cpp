#include "station/Limits.h"

#include <cmath>
#include <set>
#include <string_view>

#include <toml++/toml.h>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

namespace {
const std::set<std::string_view> kFigureKeys = {"sfr_quarter_nyquist", "sfr_half_nyquist",
                                                "sfr_custom",          "mtf50",
                                                "mtf50_lp_per_mm",     "mtf50_lw_per_ph"};
// The figure keys, closing the list of a table's keys in a refusal.
constexpr const char* kFigureList =
    "sfr_quarter_nyquist, sfr_half_nyquist, sfr_custom, mtf50, mtf50_lp_per_mm, mtf50_lw_per_ph)";

bool needsPitch(std::string_view key) {
    return key == "mtf50_lp_per_mm" || key == "mtf50_lw_per_ph";
}

[[noreturn]] void refuse(const std::string& path, const toml::source_region& where,
                         const std::string& what) {
    throw Failure(Cause::BadInput,
                  "limits " + path + ":" + std::to_string(where.begin.line) + ": " + what);
}

double number(const std::string& path, const toml::node& node, std::string_view key, double lo,
              double hi) {
    const std::optional<double> v = node.value<double>();
    if (!node.is_number() || !v || !std::isfinite(*v) || *v < lo || *v > hi) {
        refuse(path, node.source(),
               "'" + std::string(key) + "' must be a number from " +
                   std::to_string(lo).substr(0, 4) + " to " + std::to_string(hi).substr(0, 4));
    }
    return *v;
}

// A figure key into `limits`; false when `key` is not a figure.
bool readFigure(const std::string& path, std::string_view key, const toml::node& node,
                FigureLimits& limits) {
    if (kFigureKeys.count(key) == 0) {
        return false;
    }
    // SFR can exceed 1 a little on a sharpened edge; MTF50 is in cycles per pixel, or in
    // sensor units up to Nyquist of a 0.1 um pitch (5000 lp/mm) and of a 100k-row picture.
    const double hi = key == "mtf50"             ? 1.0
                      : key == "mtf50_lp_per_mm" ? 5000.0
                      : key == "mtf50_lw_per_ph" ? 100000.0
                                                 : 2.0;
    const double v = number(path, node, key, 0.0, hi);
    (key == "sfr_quarter_nyquist" ? limits.sfrQuarterNyquist
     : key == "sfr_half_nyquist"  ? limits.sfrHalfNyquist
     : key == "sfr_custom"        ? limits.sfrCustom
     : key == "mtf50"             ? limits.mtf50
     : key == "mtf50_lp_per_mm"   ? limits.mtf50LpPerMm
                                  : limits.mtf50LwPerPh) = v;
    return true;
}

FigureLimits figuresOf(const std::string& path, const toml::table& table, std::string_view where) {
    FigureLimits limits;
    for (auto&& [key, node] : table) {
        if (!readFigure(path, key.str(), node, limits)) {
            refuse(path, node.source(),
                   "unknown key '" + std::string(key.str()) + "' in " + std::string(where) + " (" +
                       kFigureList);
        }
    }
    return limits;
}

const toml::table& tableAt(const std::string& path, const toml::node& node, std::string_view what) {
    if (!node.is_table()) {
        refuse(path, node.source(), std::string(what) + " must be a table");
    }
    return *node.as_table();
}

// `where` names the table and opens the list of its keys; the figures close it.
[[noreturn]] void unknownKey(const std::string& path, const toml::node& node, std::string_view key,
                             const std::string& where) {
    refuse(path, node.source(), "unknown key '" + std::string(key) + "' in " + where + kFigureList);
}

void require(const std::string& path, const toml::table& table, bool present,
             const std::string& what) {
    if (!present) {
        refuse(path, table.source(), what);
    }
}

ZoneLimits readZone(const std::string& path, const toml::table& table) {
    ZoneLimits zone;
    bool hasHeight = false;
    for (auto&& [key, node] : table) {
        const std::string_view k = key.str();
        if (k == "name") {
            if (!node.is_string()) {
                refuse(path, node.source(), "'name' must be a string");
            }
            zone.name = *node.value<std::string>();
            for (const char c : zone.name) {
                if (c == '"' || static_cast<unsigned char>(c) < 0x20) {
                    refuse(path, node.source(), "'name' may not hold quotes or control characters");
                }
            }
        } else if (k == "max_height") {
            zone.maxHeight = number(path, node, k, 0.0, 1000.0);
            hasHeight = true;
        } else if (k == "tangential" || k == "sagittal") {
            (k == "tangential" ? zone.tangential : zone.sagittal) = figuresOf(
                path, tableAt(path, node, "zone." + std::string(k)), "zone." + std::string(k));
        } else if (!readFigure(path, k, node, zone.figures)) {
            unknownKey(path, node, k, "a zone (name, max_height, tangential, sagittal, ");
        }
    }
    require(path, table, hasHeight, "a zone needs 'max_height' (% of the half-diagonal)");
    return zone;
}

SlotLimits readSlot(const std::string& path, const toml::table& table) {
    SlotLimits slot;
    bool hasIndex = false;
    for (auto&& [key, node] : table) {
        const std::string_view k = key.str();
        // `edge`, as every output names the record slot; `index`, as files written before did.
        if (k == "edge" || k == "index") {
            const std::optional<std::int64_t> v = node.value<std::int64_t>();
            if (!node.is_integer() || !v || *v < 0 || *v > 1000) {
                refuse(path, node.source(), "'edge' must be a record slot, 0 to 1000");
            }
            if (hasIndex) {
                refuse(path, node.source(), "a slot has one 'edge'");
            }
            slot.index = static_cast<int>(*v);
            slot.line = static_cast<int>(node.source().begin.line);
            hasIndex = true;
        } else if (!readFigure(path, k, node, slot.figures)) {
            unknownKey(path, node, k, "a slot (edge, ");
        }
    }
    require(path, table, hasIndex, "a slot needs 'edge' (its record slot)");
    return slot;
}

template <class Read>
auto readArrayOfTables(const std::string& path, const toml::node& node, std::string_view name,
                       Read read) {
    std::vector<decltype(read(path, std::declval<const toml::table&>()))> out;
    const toml::array* array = node.as_array();
    if (array == nullptr) {
        refuse(path, node.source(),
               "'" + std::string(name) + "' must be [[" + std::string(name) + "]] tables");
    }
    for (const toml::node& each : *array) {
        out.push_back(read(path, tableAt(path, each, "each [[" + std::string(name) + "]]")));
    }
    return out;
}
}  // namespace

FigureLimits FigureLimits::overriddenBy(const FigureLimits& over) const {
    FigureLimits out = *this;
    for (auto [mine, theirs] :
         {std::pair{&out.sfrQuarterNyquist, &over.sfrQuarterNyquist},
          std::pair{&out.sfrHalfNyquist, &over.sfrHalfNyquist},
          std::pair{&out.sfrCustom, &over.sfrCustom}, std::pair{&out.mtf50, &over.mtf50},
          std::pair{&out.mtf50LpPerMm, &over.mtf50LpPerMm},
          std::pair{&out.mtf50LwPerPh, &over.mtf50LwPerPh}}) {
        if (*theirs) {
            *mine = *theirs;
        }
    }
    return out;
}

namespace {
// Whether any zone, orientation or slot sets the figure `field`.
bool setsFigure(const Limits& limits, std::optional<double> FigureLimits::*field) {
    for (const ZoneLimits& z : limits.zones) {
        if (z.figures.*field || z.tangential.*field || z.sagittal.*field) {
            return true;
        }
    }
    for (const SlotLimits& s : limits.slots) {
        if (s.figures.*field) {
            return true;
        }
    }
    return false;
}

// The earliest key anywhere under `node` that needs a pixel pitch (the tables iterate in key
// order, not file order).
void findPitchKey(const toml::node& node, Limits& limits) {
    if (const toml::table* table = node.as_table()) {
        for (auto&& [key, child] : *table) {
            const int line = static_cast<int>(child.source().begin.line);
            if (needsPitch(key.str()) && (limits.pitchKey.empty() || line < limits.pitchLine)) {
                limits.pitchKey = std::string(key.str());
                limits.pitchLine = line;
            }
            findPitchKey(child, limits);
        }
    } else if (const toml::array* array = node.as_array()) {
        for (const toml::node& child : *array) {
            findPitchKey(child, limits);
        }
    }
}
}  // namespace

bool Limits::needsMtf50() const {
    return setsFigure(*this, &FigureLimits::mtf50) ||
           setsFigure(*this, &FigureLimits::mtf50LpPerMm) ||
           setsFigure(*this, &FigureLimits::mtf50LwPerPh);
}

bool Limits::needsCustom() const {
    return setsFigure(*this, &FigureLimits::sfrCustom);
}

Limits readLimits(const std::string& path) {
    Limits limits;
    limits.path = path;
    toml::table root;
    try {
        root = toml::parse_file(path);
    } catch (const toml::parse_error& e) {
        const auto& where = e.source();
        if (where.begin.line == 0) {
            throw Failure(Cause::UnreadableFile,
                          "cannot read limits " + path + ": " + std::string(e.description()));
        }
        throw Failure(Cause::BadInput, "limits " + path + ":" + std::to_string(where.begin.line) +
                                           ": " + std::string(e.description()));
    }
    for (auto&& [key, node] : root) {
        const std::string_view k = key.str();
        if (k == "zone") {
            limits.zones = readArrayOfTables(path, node, "zone", readZone);
        } else if (k == "slot") {
            limits.slots = readArrayOfTables(path, node, "slot", readSlot);
        } else {
            refuse(path, node.source(), "unknown key '" + std::string(k) + "' (zone, slot)");
        }
    }
    findPitchKey(root, limits);
    if (limits.zones.empty()) {
        throw Failure(Cause::BadInput,
                      "limits " + path + ": no [[zone]]: at least one zone, with max_height");
    }
    for (std::size_t i = 1; i < limits.zones.size(); ++i) {
        if (!(limits.zones[i].maxHeight > limits.zones[i - 1].maxHeight)) {
            throw Failure(Cause::BadInput, "limits " + path + ": zones must grow in max_height ('" +
                                               limits.zones[i].name + "' after '" +
                                               limits.zones[i - 1].name + "')");
        }
    }
    return limits;
}

void checkLimitSlots(const Limits& limits, const std::string& member, int slots) {
    for (const SlotLimits& slot : limits.slots) {
        if (slot.index >= slots) {
            throw Failure(Cause::BadInput, "limits " + limits.path + ":" +
                                               std::to_string(slot.line) + ": [[slot]] edge " +
                                               std::to_string(slot.index) + " is not a slot of " +
                                               member + "'s chart (0 to " +
                                               std::to_string(slots - 1) + ")");
        }
    }
}

void checkLimitUnits(const Limits& limits, double pixelPitchUm) {
    if (limits.needsPitch() && !std::isfinite(pixelPitchUm)) {
        throw Failure(Cause::BadInput,
                      "limits " + limits.path + ":" + std::to_string(limits.pitchLine) + ": '" +
                          limits.pitchKey + "' needs a pixel pitch (--pixel-pitch)");
    }
}

}  // namespace station
}  // namespace talonvireo
