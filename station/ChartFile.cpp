#include "station/ChartFile.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include <toml++/toml.h>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

namespace {
constexpr int kSmallestRegion = 16;
constexpr int kLargestRegion = 2000;
constexpr std::int64_t kMostSlots = 10000;
// Below this sine of the turn at a corner, three corners lie on a line.
constexpr double kStraightTurn = 1e-6;
constexpr double kDegree = 3.14159265358979323846 / 180.0;

using Keys = std::initializer_list<std::string_view>;

int lineOf(const toml::source_region& where) {
    return static_cast<int>(where.begin.line);
}

std::string shown(double v) {
    std::ostringstream s;
    s << v;
    return s.str();
}

std::string listed(Keys keys) {
    std::string out;
    for (const std::string_view k : keys) {
        out += (out.empty() ? "" : ", ") + std::string(k);
    }
    return out;
}

// How the four corners turn: +1 clockwise (y down), -1 counter-clockwise, 0 degenerate, 2 not
// convex.
int turning(const std::array<ChartPoint, 4>& c) {
    int clockwise = 0;
    int counter = 0;
    for (int i = 0; i < 4; ++i) {
        const ChartPoint &a = c[i], &b = c[(i + 1) % 4], &d = c[(i + 2) % 4];
        const double ex = b.x - a.x, ey = b.y - a.y, fx = d.x - b.x, fy = d.y - b.y;
        const double lengths = std::hypot(ex, ey) * std::hypot(fx, fy);
        const double cross = ex * fy - ey * fx;
        if (!(lengths > 0.0) || std::abs(cross) <= kStraightTurn * lengths) {
            return 0;
        }
        (cross > 0.0 ? clockwise : counter) += 1;
    }
    return clockwise == 4 ? 1 : counter == 4 ? -1 : 2;
}

// Reads one description; holds nothing but the source's name and what it has read so far.
class ChartReader {
public:
    explicit ChartReader(const std::string& source) : source_(source) {}

    ChartDescription read(const toml::table& root) {
        onlyKeys(root, "", {"name", "units", "shape", "edge", "mark", "slot", "zone"});
        chart_.name = text(required(root, "", "name", "the chart's name"), "name");
        if (const toml::node* units = root.get("units")) {
            chart_.units = text(*units, "units");
        }
        eachTable(root, "shape",
                  [&](const toml::table& t, const std::string& at) { shape(t, at); });
        eachTable(root, "edge", [&](const toml::table& t, const std::string& at) { edge(t, at); });
        eachTable(root, "mark", [&](const toml::table& t, const std::string& at) { mark(t, at); });
        eachTable(root, "zone", [&](const toml::table& t, const std::string& at) { zone(t, at); });
        eachTable(root, "slot", [&](const toml::table& t, const std::string& at) { slot(t, at); });
        if (chart_.shapes.empty() && chart_.edges.empty()) {
            refuse(1, "shape", "the chart has no [[shape]] and no [[edge]]");
        }
        std::string problem;
        if (!checkChartDescription(chart_, problem)) {
            throw Failure(Cause::BadInput, "chart " + source_ + ": " + problem);
        }
        return chart_;
    }

private:
    [[noreturn]] void refuse(int line, const std::string& key, const std::string& what) const {
        throw Failure(Cause::BadInput,
                      "chart " + source_ + ":" + std::to_string(line) + ": " + key + ": " + what);
    }
    [[noreturn]] void refuse(const toml::node& at, const std::string& key,
                             const std::string& what) const {
        refuse(lineOf(at.source()), key, what);
    }

    static std::string path(const std::string& at, std::string_view key) {
        return at.empty() ? std::string(key) : at + "." + std::string(key);
    }

    // A key outside `allowed` refused, the earliest in the file first.
    void onlyKeys(const toml::table& table, const std::string& at, Keys allowed) const {
        const toml::key* first = nullptr;
        for (auto&& [key, node] : table) {
            bool known = false;
            for (const std::string_view k : allowed) {
                known = known || key.str() == k;
            }
            if (!known && (first == nullptr || lineOf(key.source()) < lineOf(first->source()))) {
                first = &key;
            }
        }
        if (first != nullptr) {
            refuse(lineOf(first->source()), path(at, first->str()),
                   "unknown key (" + listed(allowed) + ")");
        }
    }

    // `at` empty: the root, which has no header line; its keys are missed at the top.
    const toml::node& required(const toml::table& table, const std::string& at,
                               std::string_view key, const std::string& what) const {
        const toml::node* node = table.get(key);
        if (node == nullptr) {
            refuse(at.empty() ? 1 : lineOf(table.source()), path(at, key), "missing: " + what);
        }
        return *node;
    }

    template <class Read>
    void eachTable(const toml::table& root, std::string_view key, Read read) const {
        const toml::node* node = root.get(key);
        if (node == nullptr) {
            return;
        }
        const std::string name(key);
        const toml::array* array = node->as_array();
        if (array == nullptr) {
            refuse(*node, name, "expected [[" + name + "]] tables");
        }
        for (std::size_t i = 0; i < array->size(); ++i) {
            const std::string at = name + "[" + std::to_string(i) + "]";
            const toml::table* table = (*array)[i].as_table();
            if (table == nullptr) {
                refuse((*array)[i], at, "expected a table, as [[" + name + "]] writes one");
            }
            read(*table, at);
        }
    }

    std::string text(const toml::node& node, const std::string& key) const {
        const std::optional<std::string> v = node.value<std::string>();
        if (!node.is_string() || !v || v->empty()) {
            refuse(node, key, "expected a text in quotes, not empty");
        }
        return *v;
    }

    double number(const toml::node& node, const std::string& key, double lo, double hi) const {
        const std::optional<double> v = node.value<double>();
        if (!node.is_number() || !v || !std::isfinite(*v)) {
            refuse(node, key, "expected a number");
        }
        if (*v < lo || *v > hi) {
            refuse(
                node, key,
                "expected a number from " + shown(lo) + " to " + shown(hi) + ", not " + shown(*v));
        }
        return *v;
    }

    double positive(const toml::node& node, const std::string& key) const {
        const std::optional<double> v = node.value<double>();
        if (!node.is_number() || !v || !std::isfinite(*v) || !(*v > 0.0)) {
            refuse(node, key, "expected a number above 0");
        }
        return *v;
    }

    std::int64_t integer(const toml::node& node, const std::string& key, std::int64_t lo,
                         std::int64_t hi) const {
        const std::optional<std::int64_t> v = node.value<std::int64_t>();
        if (!node.is_integer() || !v) {
            refuse(node, key, "expected a whole number");
        }
        if (*v < lo || *v > hi) {
            refuse(node, key,
                   "expected " + std::to_string(lo) + " .. " + std::to_string(hi) + ", not " +
                       std::to_string(*v));
        }
        return *v;
    }

    // [x, y]; false when `node` is not one.
    static bool pointOf(const toml::node& node, ChartPoint& p) {
        const toml::array* a = node.as_array();
        if (a == nullptr || a->size() != 2) {
            return false;
        }
        const std::optional<double> x = (*a)[0].value<double>(), y = (*a)[1].value<double>();
        if (!(*a)[0].is_number() || !(*a)[1].is_number() || !x || !y || !std::isfinite(*x) ||
            !std::isfinite(*y)) {
            return false;
        }
        p = {*x, *y};
        return true;
    }

    ChartPoint point(const toml::node& node, const std::string& key) const {
        ChartPoint p;
        if (!pointOf(node, p)) {
            refuse(node, key, "expected [x, y], two numbers");
        }
        return p;
    }

    int polarity(const toml::node& node, const std::string& key) const {
        const std::optional<std::string> v = node.value<std::string>();
        if (node.is_string() && v && (*v == "dark" || *v == "light")) {
            return *v == "dark" ? 1 : -1;
        }
        refuse(node, key,
               "expected \"dark\" or \"light\"" + (v ? ", not \"" + *v + "\"" : std::string()));
    }

    std::array<ChartPoint, 4> corners(const toml::node& node, const std::string& key) const {
        std::array<ChartPoint, 4> c{};
        const toml::array* a = node.as_array();
        bool good = a != nullptr && a->size() == 4;
        for (std::size_t i = 0; good && i < 4; ++i) {
            good = pointOf((*a)[i], c[i]);
        }
        if (!good) {
            refuse(node, key, "expected 4 [x, y] points");
        }
        return c;
    }

    // Corners from a centre, a size and a turn: clockwise (y down) from the top-left corner of
    // the unturned shape, so side 0 is its top, 1 its right, 2 its bottom, 3 its left.
    static std::array<ChartPoint, 4> turnedRectangle(ChartPoint c, double width, double height,
                                                     double angleDeg) {
        const double ux = std::cos(angleDeg * kDegree), uy = std::sin(angleDeg * kDegree);
        const double hw = 0.5 * width, hh = 0.5 * height;
        std::array<ChartPoint, 4> out{};
        const int su[4] = {-1, 1, 1, -1};
        const int sv[4] = {-1, -1, 1, 1};
        for (int i = 0; i < 4; ++i) {
            out[i] = {c.x + su[i] * hw * ux - sv[i] * hh * uy,
                      c.y + su[i] * hw * uy + sv[i] * hh * ux};
        }
        return out;
    }

    void shape(const toml::table& t, const std::string& at) {
        onlyKeys(t, at,
                 {"id", "corners", "centre", "side", "width", "height", "angle_deg", "polarity"});
        ChartShape s;
        const toml::node* corners = t.get("corners");
        const toml::node* centre = t.get("centre");
        if (corners != nullptr) {
            for (const std::string_view k : {"centre", "side", "width", "height", "angle_deg"}) {
                if (const toml::node* extra = t.get(k)) {
                    refuse(*extra, path(at, k), "goes with centre, not with corners");
                }
            }
            s.corners = this->corners(*corners, path(at, "corners"));
        } else if (centre != nullptr) {
            const ChartPoint c = point(*centre, path(at, "centre"));
            const toml::node* side = t.get("side");
            const toml::node* width = t.get("width");
            const toml::node* height = t.get("height");
            double w = 0.0, h = 0.0;
            if (side != nullptr) {
                for (const toml::node* extra : {width, height}) {
                    if (extra != nullptr) {
                        refuse(*extra, path(at, extra == width ? "width" : "height"),
                               "give side (a square) or width and height, not both");
                    }
                }
                w = h = positive(*side, path(at, "side"));
            } else if (width != nullptr && height != nullptr) {
                w = positive(*width, path(at, "width"));
                h = positive(*height, path(at, "height"));
            } else {
                refuse(t,
                       path(at, width != nullptr    ? "height"
                                : height != nullptr ? "width"
                                                    : "side"),
                       "missing: a shape with a centre needs side, or width and height");
            }
            const toml::node* angle = t.get("angle_deg");
            const double deg =
                angle != nullptr ? number(*angle, path(at, "angle_deg"), -360.0, 360.0) : 0.0;
            s.corners = turnedRectangle(c, w, h, deg);
        } else {
            refuse(t, path(at, "corners"),
                   "missing: a shape needs corners, or centre with side (or width and height)");
        }
        s.polarity =
            polarity(required(t, at, "polarity", "\"dark\" or \"light\""), path(at, "polarity"));
        const int turn = turning(s.corners);
        const std::string where = path(at, corners != nullptr ? "corners" : "centre");
        const toml::node& geometry = corners != nullptr ? *corners : *centre;
        if (turn == 0) {
            refuse(geometry, where, "degenerate: corners coincide or three lie on a line");
        }
        if (turn == 2) {
            refuse(geometry, where, "not a convex quadrilateral (a dent, or corners out of order)");
        }
        // Counter-clockwise: the same corners the other way round from the first, the slots
        // following (side i becomes side 3 - i, run the other way).
        reversed_.push_back(turn < 0);
        if (turn < 0) {
            std::swap(s.corners[1], s.corners[3]);
        }
        if (const toml::node* id = t.get("id")) {
            const std::string name = text(*id, path(at, "id"));
            const auto [it, fresh] =
                shapeIds_.emplace(name, Named{chart_.shapes.size(), lineOf(id->source())});
            if (!fresh) {
                refuse(*id, path(at, "id"),
                       "'" + name + "' is already shape[" + std::to_string(it->second.index) +
                           "]'s (line " + std::to_string(it->second.line) + ")");
            }
        }
        chart_.shapes.push_back(s);
    }

    void edge(const toml::table& t, const std::string& at) {
        onlyKeys(t, at, {"from", "to", "polarity"});
        ChartEdge e;
        e.from = point(required(t, at, "from", "its first end, [x, y]"), path(at, "from"));
        const toml::node& to = required(t, at, "to", "its last end, [x, y]");
        e.to = point(to, path(at, "to"));
        if (e.from.x == e.to.x && e.from.y == e.to.y) {
            refuse(to, path(at, "to"), "the same point as from");
        }
        e.polarity = polarity(
            required(t, at, "polarity", "\"dark\" or \"light\" to the right of from -> to"),
            path(at, "polarity"));
        chart_.edges.push_back(e);
    }

    void mark(const toml::table& t, const std::string& at) {
        onlyKeys(t, at, {"centre", "diameter", "polarity"});
        ChartMark m;
        m.centre = point(required(t, at, "centre", "[x, y]"), path(at, "centre"));
        m.diameter =
            positive(required(t, at, "diameter", "a number above 0"), path(at, "diameter"));
        m.polarity =
            polarity(required(t, at, "polarity", "\"dark\" or \"light\""), path(at, "polarity"));
        chart_.marks.push_back(m);
    }

    void zone(const toml::table& t, const std::string& at) {
        onlyKeys(t, at, {"name", "from", "to"});
        ChartZone z;
        const toml::node& name = required(t, at, "name", "the zone's name");
        z.name = text(name, path(at, "name"));
        const auto [it, fresh] =
            zones_.emplace(z.name, Named{chart_.zones.size(), lineOf(name.source())});
        if (!fresh) {
            refuse(name, path(at, "name"),
                   "'" + z.name + "' is already zone[" + std::to_string(it->second.index) +
                       "]'s (line " + std::to_string(it->second.line) + ")");
        }
        const toml::node* from = t.get("from");
        const toml::node* to = t.get("to");
        if (from != nullptr) {
            z.fromField = number(*from, path(at, "from"), 0.0, 1.0);
        }
        if (to != nullptr) {
            z.toField = number(*to, path(at, "to"), 0.0, 1.0);
        }
        if (z.fromField > z.toField) {
            refuse(to != nullptr ? *to : *from, path(at, to != nullptr ? "to" : "from"),
                   "the zone ends (to " + shown(z.toField) + ") before it starts (from " +
                       shown(z.fromField) + ")");
        }
        chart_.zones.push_back(z);
    }

    // The shape a slot names: a 0-based index or an id.
    int shapeOf(const toml::node& node, const std::string& key) const {
        const int count = static_cast<int>(chart_.shapes.size());
        if (const std::optional<std::string> id = node.value<std::string>();
            node.is_string() && id) {
            const auto it = shapeIds_.find(*id);
            if (it == shapeIds_.end()) {
                refuse(node, key, "no shape has id '" + *id + "'");
            }
            return static_cast<int>(it->second.index);
        }
        const std::optional<std::int64_t> index = node.value<std::int64_t>();
        if (!node.is_integer() || !index) {
            refuse(node, key, "expected a shape's id (\"S12\") or its index from 0");
        }
        if (*index < 0 || *index >= count) {
            refuse(node, key,
                   "no shape " + std::to_string(*index) + ": the chart has " +
                       std::to_string(count) +
                       (count == 0 ? "" : " (0 .. " + std::to_string(count - 1) + ")"));
        }
        return static_cast<int>(*index);
    }

    void slot(const toml::table& t, const std::string& at) {
        onlyKeys(t, at, {"name", "slot", "shape", "side", "edge", "along", "region", "zone"});
        ChartSlot s;
        const toml::node& name = required(t, at, "name", "the slot's name, as tables show it");
        s.name = text(name, path(at, "name"));
        const toml::node& slotNode = required(t, at, "slot", "its record slot, from 0");
        s.slot = static_cast<int>(integer(slotNode, path(at, "slot"), 0, kMostSlots - 1));
        const toml::node* shape = t.get("shape");
        const toml::node* side = t.get("side");
        const toml::node* edge = t.get("edge");
        if (shape != nullptr && edge != nullptr) {
            refuse(*edge, path(at, "edge"), "a slot names a shape's side or a lone edge, not both");
        }
        if (shape != nullptr) {
            s.shape = shapeOf(*shape, path(at, "shape"));
            if (side == nullptr) {
                refuse(t, path(at, "side"),
                       "missing: which side of the shape, 0 .. 3 (side i runs from corner i to "
                       "corner i + 1)");
            }
            s.side = static_cast<int>(integer(*side, path(at, "side"), 0, 3));
        } else if (edge != nullptr) {
            if (side != nullptr) {
                refuse(*side, path(at, "side"), "goes with shape, not with edge");
            }
            const std::int64_t count = static_cast<std::int64_t>(chart_.edges.size());
            if (count == 0) {
                refuse(*edge, path(at, "edge"), "the chart has no [[edge]]");
            }
            s.edge = static_cast<int>(integer(*edge, path(at, "edge"), 0, count - 1));
        } else {
            refuse(t, path(at, "shape"), "missing: a slot needs shape (with side) or edge");
        }
        if (const toml::node* along = t.get("along")) {
            s.along = number(*along, path(at, "along"), 0.0, 1.0);
        }
        if (const toml::node* region = t.get("region")) {
            const std::int64_t v = integer(*region, path(at, "region"), 0, kLargestRegion);
            if (v != 0 && v < kSmallestRegion) {
                refuse(*region, path(at, "region"),
                       "expected 0 (fitted to the edge) or " + std::to_string(kSmallestRegion) +
                           " .. " + std::to_string(kLargestRegion) + " px, not " +
                           std::to_string(v));
            }
            s.regionSize = static_cast<int>(v);
        }
        if (const toml::node* zone = t.get("zone")) {
            s.zone = text(*zone, path(at, "zone"));
            if (zones_.count(s.zone) == 0) {
                refuse(*zone, path(at, "zone"), "no [[zone]] is named '" + s.zone + "'");
            }
        }
        if (s.shape >= 0 && reversed_[s.shape]) {
            s.side = 3 - s.side;
            s.along = 1.0 - s.along;
        }
        const std::size_t index = chart_.slots.size();
        const auto [slotIt, freshSlot] =
            slots_.emplace(s.slot, Named{index, lineOf(slotNode.source())});
        if (!freshSlot) {
            refuse(slotNode, path(at, "slot"),
                   std::to_string(s.slot) + " is already slot[" +
                       std::to_string(slotIt->second.index) + "]'s (line " +
                       std::to_string(slotIt->second.line) + ")");
        }
        const auto [nameIt, freshName] =
            slotNames_.emplace(s.name, Named{index, lineOf(name.source())});
        if (!freshName) {
            refuse(name, path(at, "name"),
                   "'" + s.name + "' is already slot[" + std::to_string(nameIt->second.index) +
                       "]'s (line " + std::to_string(nameIt->second.line) + ")");
        }
        chart_.slots.push_back(s);
    }

    struct Named {
        std::size_t index;
        int line;
    };

    const std::string& source_;
    ChartDescription chart_;
    std::vector<bool> reversed_;  // per shape: its corners were given counter-clockwise
    std::map<std::string, Named> shapeIds_;
    std::map<std::string, Named> zones_;
    std::map<int, Named> slots_;
    std::map<std::string, Named> slotNames_;
};
}  // namespace

ChartDescription parseChartDescription(const std::string& text, const std::string& sourceName) {
    toml::table root;
    try {
        root = toml::parse(text, sourceName);
    } catch (const toml::parse_error& e) {
        const toml::source_position where = e.source().begin;
        throw Failure(Cause::BadInput, "chart " + sourceName + ":" + std::to_string(where.line) +
                                           ": TOML syntax (column " + std::to_string(where.column) +
                                           "): " + std::string(e.description()));
    }
    return ChartReader(sourceName).read(root);
}

ChartDescription readChartFile(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw Failure(Cause::UnreadableFile, "cannot read chart " + path + ": no such file");
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file) {
        throw Failure(Cause::UnreadableFile, "cannot read chart " + path);
    }
    return parseChartDescription(text.str(), path);
}

}  // namespace station
}  // namespace talonvireo
