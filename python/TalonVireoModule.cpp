// talonvireo: the library for Python. Frames and regions are numpy arrays; failures raise.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "render/RegionEncoding.h"
#include "station/ChartJob.h"
#include "station/EdgeColumns.h"
#include "station/Failure.h"
#include "station/FocusJson.h"
#include "station/FocusStudy.h"
#include "station/FrameGrading.h"
#include "station/FrameJob.h"
#include "station/FrameStream.h"
#include "station/Limits.h"
#include "station/Measurand.h"
#include "station/Members.h"
#include "station/PixelPitch.h"
#include "station/RegionCut.h"
#include "talonvireo/talonVireoSFR.h"

namespace py = pybind11;
using namespace talonvireo;

namespace {

py::array_t<double> asArray(const std::vector<double>& v) {
    return py::array_t<double>(static_cast<py::ssize_t>(v.size()), v.data());
}

int defaultFormat(const py::array& a) {
    const bool wide = a.dtype().is(py::dtype::of<std::uint16_t>());
    if (a.ndim() == 2) {
        return wide ? PixelFormat::Grey16 : PixelFormat::Grey8;
    }
    return wide ? PixelFormat::Bgr16 : PixelFormat::Bgr8;
}

// Raises the module's exception class `type` (looked up by name, so no Python object
// outlives the interpreter in a C++ static).
[[noreturn]] void raise(const char* type, const std::string& message) {
    const py::object cls = py::module_::import("talonvireo").attr(type);
    PyErr_SetString(cls.ptr(), message.c_str());
    throw py::error_already_set();
}

// The module's exception class for a station failure's cause.
const char* exceptionFor(station::Cause cause) {
    switch (cause) {
        case station::Cause::BadInput:
        case station::Cause::UnreadableFile:
        case station::Cause::WrongFileSize:
        case station::Cause::SampleDepth:
            return "InvalidInput";
        case station::Cause::NotLocated:
        case station::Cause::RegionOutOfBounds:
        case station::Cause::WrongChart:
        case station::Cause::Misplaced:
        case station::Cause::NoQuadrilateral:
            return "ChartNotLocated";
        case station::Cause::SfrFailed:
            return "SfrCalculationFailed";
        case station::Cause::None:
        case station::Cause::Failed:
            break;
    }
    return "Error";
}

// A divisor of 0 asks for no custom figure; anything else must be a finite number above 0.
void checkDivisor(double freqDivisor) {
    if (!(freqDivisor >= 0.0) || !std::isfinite(freqDivisor)) {
        raise("InvalidInput",
              "freq_divisor must be a finite number above 0 (0: no custom "
              "figure), not " +
                  std::to_string(freqDivisor));
    }
}

py::object cellObject(const station::Cell& cell) {
    if (const auto* i = std::get_if<long long>(&cell)) {
        return py::int_(*i);
    }
    if (const auto* d = std::get_if<double>(&cell)) {
        return py::float_(*d);
    }
    if (const auto* t = std::get_if<std::string>(&cell)) {
        return py::str(*t);
    }
    if (const auto* b = std::get_if<bool>(&cell)) {
        return py::bool_(*b);
    }
    return py::none();
}

py::object figureOrNone(double v) {
    return std::isfinite(v) ? py::object(py::float_(v)) : py::object(py::none());
}

constexpr int kMaxSide = 100000;  // pixels; as the command line takes them
constexpr int kMaxLayoutBytes = 1 << 30;

// The region side and ring radius, by their Python names; the ring's bound by the frame width
// comes only where the width is known (0: not yet).
void checkRegionParams(const station::Member& m, int roiSize, int markSearchSize, int width) {
    const int most = width > 0 ? width / 2 : kMaxSide;
    if (markSearchSize < 1 || markSearchSize > most) {
        raise("InvalidInput", "mark_search_size must be 1 .. " + std::to_string(most) +
                                  (width > 0 ? " (half the frame width)" : "") + ", not " +
                                  std::to_string(markSearchSize));
    }
    if (m.forced90) {
        // These members cut 90 px regions whatever roi_size says; the ring must hold them.
        if (markSearchSize < 90) {
            raise("InvalidInput", "mark_search_size must be at least 90 for " + m.name + ", not " +
                                      std::to_string(markSearchSize));
        }
        return;
    }
    if (roiSize < 1 || roiSize > markSearchSize) {
        raise("InvalidInput", "roi_size must be 1 .. mark_search_size (" +
                                  std::to_string(markSearchSize) + "), not " +
                                  std::to_string(roiSize));
    }
}

// The member called `name` among `members`; InvalidInput listing them otherwise.
const station::Member* memberNamed(const std::vector<station::Member>& members,
                                   const std::string& name) {
    const station::Member* m = station::findMember(members, name);
    if (m == nullptr) {
        std::string names;
        for (const station::Member& each : members)
            names += " " + each.name;
        raise("InvalidInput", "unknown member '" + name + "'; one of:" + names);
    }
    return m;
}

// A frame of raw words: exactly a 2-D uint16 array (numpy's casts would read 8-bit or float
// values as words), its shape checked before anything is copied (a broadcast view of a few
// bytes can stand for a frame far larger than memory).
// Returns the frame's width.
int checkWordFrame(const py::object& raw) {
    if (!py::isinstance<py::array>(raw) ||
        !py::reinterpret_borrow<py::array>(raw).dtype().is(py::dtype::of<std::uint16_t>()) ||
        py::reinterpret_borrow<py::array>(raw).ndim() != 2) {
        throw py::type_error("raw must be a 2-D numpy array of uint16 (rows x columns)");
    }
    const py::array view = py::reinterpret_borrow<py::array>(raw);
    const std::int64_t rows = static_cast<std::int64_t>(view.shape(0));
    const std::int64_t cols = static_cast<std::int64_t>(view.shape(1));
    if (rows > INT32_MAX || cols > INT32_MAX || rows * cols > INT32_MAX) {
        raise("InvalidInput", "raw is " + std::to_string(rows) + " x " + std::to_string(cols) +
                                  ": a frame may hold at most 2147483647 pixels");
    }
    return static_cast<int>(cols);
}

// checkWordFrame, then the frame packed (same dtype, so only a non-contiguous view is copied).
py::array_t<std::uint16_t, py::array::c_style> wordFrame(const py::object& raw) {
    checkWordFrame(raw);
    auto frame = py::array_t<std::uint16_t, py::array::c_style>::ensure(raw);
    if (!frame) {
        throw py::type_error("raw must be a 2-D numpy array of uint16 (rows x columns)");
    }
    return frame;
}

// measure_frame's answer: one dict per edge.
py::list edgeDicts(const station::FrameReport& report, double freqDivisor) {
    py::list out;
    for (const station::EdgeRow& row : report.rows) {
        py::dict e;
        e["edge"] = row.index;
        e["x"] = row.measured.x;
        e["y"] = row.measured.y;
        e["side"] = row.side;
        e["sfr_quarter_nyquist"] = figureOrNone(row.measured.sfrQuarterNyquist);
        e["sfr_half_nyquist"] = figureOrNone(row.measured.sfrHalfNyquist);
        e["sfr_custom"] = freqDivisor > 0.0 ? figureOrNone(row.measured.sfrCustom) : py::none();
        out.append(e);
    }
    return out;
}

py::list measureFrame(py::object raw, const std::string& member, int roiSize, int markSearchSize,
                      double freqDivisor) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member* m = memberNamed(members, member);
    checkDivisor(freqDivisor);
    // The parameters against the frame's width, before anything is copied.
    checkRegionParams(*m, roiSize, markSearchSize, checkWordFrame(raw));
    const auto frame = wordFrame(raw);
    const int height = static_cast<int>(frame.shape(0));
    const int width = static_cast<int>(frame.shape(1));
    // The library only reads the frame; `frame` keeps the array alive while the GIL is
    // released.
    const cv::Mat words(height, width, CV_16UC1, const_cast<std::uint16_t*>(frame.data()));
    const SFRParam param{static_cast<float>(freqDivisor), roiSize, markSearchSize};
    station::FrameReport report;
    try {
        py::gil_scoped_release unlocked;
        report = station::measureRawFrame(*m, words, param);
    } catch (const station::Failure& failure) {
        raise(exceptionFor(failure.cause()), failure.what());
    }
    if (report.partial()) {
        raise(exceptionFor(report.memberCause), report.memberFailure);
    }
    return edgeDicts(report, freqDivisor);
}

// A tracker of one member's chart through a stream of frames (talonvireo.Tracker).
class PyTracker {
public:
    PyTracker(const std::string& member, int roiSize, int markSearchSize, double freqDivisor)
        : members_(station::allMembers()),
          member_(memberNamed(members_, member)),
          param_{static_cast<float>(freqDivisor), roiSize, markSearchSize},
          tracker_(*member_->info, param_) {
        checkDivisor(freqDivisor);
        checkRegionParams(*member_, roiSize, markSearchSize, 0);
    }

    py::list measure(py::object raw) {
        const auto frame = wordFrame(raw);
        const int height = static_cast<int>(frame.shape(0));
        const int width = static_cast<int>(frame.shape(1));
        checkRegionParams(*member_, param_.roiSize, param_.markSearchSize, width);
        MemberFrameReport pass;
        int status = 0;
        {
            py::gil_scoped_release unlocked;
            status = tracker_.measure(frame.data(), width, height, pass);
        }
        if (status != 0) {
            raise("InvalidInput", member_->name + " refused the frame");
        }
        const station::FrameReport report = station::frameReportOf(*member_, pass, param_);
        if (report.partial()) {
            raise(exceptionFor(report.memberCause), report.memberFailure);
        }
        return edgeDicts(report, param_.freqDivisor);
    }

    bool relocated() const { return tracker_.relocated(); }

private:
    std::vector<station::Member> members_;
    const station::Member* member_;
    SFRParam param_;
    MemberTracker tracker_;
};

py::dict sfr(py::object regionObject, std::optional<int> format, std::vector<double> frequencies,
             bool normalAxis, const std::string& method, bool perChannelRaw) {
    if (method != "classic" && method != "precise") {
        raise("InvalidInput", "method must be 'classic' or 'precise', not '" + method + "'");
    }
    py::array region = py::array::ensure(regionObject, py::array::c_style);
    if (!region || (region.ndim() != 2 && !(region.ndim() == 3 && region.shape(2) == 3)) ||
        !(region.dtype().is(py::dtype::of<std::uint8_t>()) ||
          region.dtype().is(py::dtype::of<std::uint16_t>()))) {
        throw py::type_error(
            "region must be a uint8 or uint16 numpy array, rows x columns "
            "(grey or Bayer) or rows x columns x 3 (BGR)");
    }
    const int code = format ? *format : defaultFormat(region);
    // The library reads width x height pixels of the format's size: the array must hold
    // exactly that, or it would read past the buffer.
    const int type = render::formatMatrixType(code);
    const int arrayChannels = region.ndim() == 3 ? static_cast<int>(region.shape(2)) : 1;
    if (type < 0) {
        raise("InvalidInput", "unknown pixel format " + std::to_string(code));
    }
    const int bytes = static_cast<int>(CV_ELEM_SIZE1(type));
    const int formatChannels = CV_MAT_CN(type);
    if (bytes != static_cast<int>(region.itemsize()) || formatChannels != arrayChannels) {
        raise("InvalidInput",
              "format " + std::to_string(code) + " takes " + (bytes == 1 ? "uint8" : "uint16") +
                  (formatChannels == 1 ? " rows x columns" : " rows x columns x 3") + ", not " +
                  std::to_string(8 * region.itemsize()) + "-bit with " +
                  std::to_string(arrayChannels) + " channel" + (arrayChannels == 1 ? "" : "s"));
    }
    for (double f : frequencies) {
        if (!std::isfinite(f) || f < 0.0) {
            raise("InvalidInput",
                  "frequencies must be finite and at least 0 cycles per pixel, "
                  "not " +
                      std::to_string(f));
        }
    }
    const bool mosaic = station::isMosaicFormat(code);
    if (perChannelRaw && method != "precise") {
        raise("InvalidInput", "per_channel_raw needs method='precise'");
    }
    if (perChannelRaw && !mosaic) {
        raise("InvalidInput",
              "per_channel_raw needs a Bayer format (0x010, 0x020, 0x040 or "
              "0x080 plus a phase), not " +
                  std::to_string(code));
    }
    SfrCurveOptions options;
    options.frequencies = std::move(frequencies);
    options.normalFrequencyAxis = normalAxis;
    options.method = method == "precise" ? SfrMethod::kPrecise : SfrMethod::kClassic;
    options.perChannelRaw = perChannelRaw;
    SfrCurve curve;
    int status;
    {
        py::gil_scoped_release unlocked;
        status = measureSfrCurve(static_cast<const unsigned char*>(region.data()),
                                 static_cast<int>(region.shape(1)),
                                 static_cast<int>(region.shape(0)), code, options, curve);
    }
    switch (status) {
        case 0:
            break;
        case -2:
            raise("EdgeRefused", "edge contrast below 20 % (status -2)");
        case -3:
            raise("EdgeRefused", "edge steeper than 1.25 columns per row (status -3)");
        case -4:
            raise("EdgeRefused", perChannelRaw
                                     ? "edge too close to the pixel grid for each colour plane "
                                       "to see enough phases (status -4)"
                                     : "edge exactly on the pixel grid (status -4)");
        default:
            raise("InvalidInput", "region refused: too small, bad format or size (status -1)");
    }
    py::list channels;
    for (const SfrChannelCurve& c : curve.channels) {
        py::dict d;
        d["channel"] = c.name;
        d["frequency"] = asArray(c.frequency);
        d["sfr"] = asArray(c.sfr);
        d["esf"] = asArray(c.esf);
        d["lsf"] = asArray(c.lsf);
        d["esf_bin_width"] = c.esfBinWidth;
        d["edge_angle"] = c.edgeAngle;
        d["kernel_sigma"] = c.kernelSigma;
        d["mtf10"] = figureOrNone(c.mtf10);
        d["mtf30"] = figureOrNone(c.mtf30);
        d["mtf50"] = figureOrNone(c.mtf50);
        d["sfr_at"] = asArray(c.sfrAt);
        channels.append(d);
    }
    py::dict out;
    out["method"] = curve.method == SfrMethod::kPrecise ? "precise" : "classic";
    out["normal_frequency_axis"] = curve.normalFrequencyAxis;
    out["channels"] = channels;
    return out;
}

// Columns of the table measure_files returns, filled row by row.
// One path (str, bytes or os.PathLike) or an iterable of them: each as the file system takes
// it, beside its text for the table.
std::vector<std::pair<std::string, py::object>> pathList(const py::object& paths) {
    const py::module_ os = py::module_::import("os");
    std::vector<std::pair<std::string, py::object>> files;
    const auto add = [&](const py::handle path) {
        files.emplace_back(os.attr("fsencode")(path).cast<std::string>(),
                           os.attr("fsdecode")(path));
    };
    // A string is iterable too, character by character: it is one path, as is a Path.
    if (py::isinstance<py::str>(paths) || py::isinstance<py::bytes>(paths) ||
        py::hasattr(paths, "__fspath__")) {
        add(paths);
        return files;
    }
    if (!py::isinstance<py::iterable>(paths)) {
        throw py::type_error("paths must be a path or an iterable of paths");
    }
    for (const py::handle each : paths) {
        add(each);
    }
    return files;
}

// measure_files' options, checked by their Python names before any frame is read.
station::FrameOptions fileOptions(const station::Member& m, int width, int height,
                                  const std::string& packing, int stride, int offset, int roiSize,
                                  int markSearchSize, double freqDivisor,
                                  const std::optional<std::string>& limits,
                                  const std::string& method, bool perChannelRaw,
                                  const std::optional<std::string>& pixelPitch) {
    checkDivisor(freqDivisor);
    checkRegionParams(m, roiSize, markSearchSize, 0);
    for (const auto& [name, value] :
         {std::pair<const char*, int>{"width", width}, {"height", height}}) {
        if (value < 0 || value > kMaxSide) {
            raise("InvalidInput", std::string(name) + " must be 0 (not a raw file) or 1 .. " +
                                      std::to_string(kMaxSide) + ", not " + std::to_string(value));
        }
    }
    if ((width == 0) != (height == 0)) {
        raise("InvalidInput", std::string(width == 0 ? "width" : "height") +
                                  " must be given with " + (width == 0 ? "height" : "width") +
                                  ": a raw file needs both");
    }
    station::FrameOptions options;
    options.param = SFRParam{static_cast<float>(freqDivisor), roiSize, markSearchSize};
    options.layout.width = width;
    options.layout.height = height;
    try {
        options.layout.packing = station::parsePacking(packing);
    } catch (const station::Failure&) {
        raise("InvalidInput",
              "packing must be 'words16', 'mipi10', 'mipi12' or 'raw8', not '" + packing + "'");
    }
    if (offset < 0 || offset > kMaxLayoutBytes) {
        raise("InvalidInput", "offset must be 0 .. " + std::to_string(kMaxLayoutBytes) +
                                  " bytes, not " + std::to_string(offset));
    }
    const std::uint64_t line = station::packedLineBytes(width, options.layout.packing);
    if (stride < 0 || stride > kMaxLayoutBytes ||
        (stride > 0 && static_cast<std::uint64_t>(stride) < line)) {
        raise("InvalidInput", "stride must be 0 (lines packed end to end) or " +
                                  std::to_string(std::max<std::uint64_t>(line, 1)) + " .. " +
                                  std::to_string(kMaxLayoutBytes) + " bytes, not " +
                                  std::to_string(stride));
    }
    options.layout.stride = stride;
    options.layout.offset = offset;
    if (method != "classic" && method != "precise") {
        raise("InvalidInput", "method must be 'classic' or 'precise', not '" + method + "'");
    }
    options.precise = method == "precise";
    if (perChannelRaw && !options.precise) {
        raise("InvalidInput", "per_channel_raw needs method='precise'");
    }
    options.planes = perChannelRaw;
    if (pixelPitch) {
        try {
            options.pixelPitchUm = station::parsePixelPitch(*pixelPitch);
        } catch (const station::Failure&) {
            raise("InvalidInput",
                  "pixel_pitch must be a length of 0.1 to 100 um with its unit, such as '1.12um' "
                  "or '0.00112mm', not '" +
                      *pixelPitch + "'");
        }
    }
    try {
        if (limits) {
            options.limits = station::readLimits(*limits);  // its messages name the file
        }
    } catch (const station::Failure& e) {
        raise(exceptionFor(e.cause()), e.what());
    }
    if (options.limits && options.limits->needsCustom() && !(freqDivisor > 0.0)) {
        raise("InvalidInput", "freq_divisor must be above 0: the limits set sfr_custom");
    }
    try {
        station::checkFrameOptions(options);
    } catch (const station::Failure& e) {
        raise(exceptionFor(e.cause()), e.what());
    }
    return options;
}

py::object measureFiles(const py::object& paths, const std::string& member, int width, int height,
                        const std::string& packing, int stride, int offset, int roiSize,
                        int markSearchSize, double freqDivisor, std::optional<std::string> limits,
                        const std::string& method, bool perChannelRaw,
                        std::optional<std::string> pixelPitch, bool acceptClipped) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member* m = station::findMember(members, member);
    if (m == nullptr) {
        raise("InvalidInput", "unknown member '" + member + "'");
    }
    station::FrameOptions options =
        fileOptions(*m, width, height, packing, stride, offset, roiSize, markSearchSize,
                    freqDivisor, limits, method, perChannelRaw, pixelPitch);
    options.acceptClipped = acceptClipped;
    if (options.limits) {
        try {
            station::checkLimitSlots(*options.limits, m->name, m->info->slots);
            station::checkLimitUnits(*options.limits, options.pixelPitchUm);
        } catch (const station::Failure& e) {
            raise("InvalidInput", std::string("limits: ") + e.what());
        }
    }
    // Every row has every column: the frame's own, then the edge columns these options
    // give (the same table the command line's CSV and JSON and the database read).
    const station::FrameReport layout = station::reportLayout(*m, options);
    const std::vector<const station::EdgeColumn*> columns = station::columnsOf(layout);
    std::vector<std::string> order = {"file", "error", "warnings"};
    for (const station::EdgeColumn* c : columns) {
        order.push_back(c->name);
    }
    std::map<std::string, std::vector<py::object>> table;
    const py::module_ pyWarnings = py::module_::import("warnings");
    for (const auto& [file, name] : pathList(paths)) {
        station::GradedFrame graded;
        std::string error;
        std::vector<std::string> warnings;
        {
            py::gil_scoped_release unlocked;
            try {
                graded = station::gradeFrameFile(*m, file, options);
                warnings = graded.report.warnings;
            } catch (const station::Failure& e) {
                error = e.what();
                warnings = e.warnings();
            } catch (const std::exception& e) {
                error = e.what();
            }
        }
        // Warnings travel with the frame: in its rows, and through Python's own warnings, so
        // that a notebook or a Dask worker's log shows them.
        for (const std::string& w : warnings) {
            pyWarnings.attr("warn")(py::str(py::str(name).cast<std::string>() + ": " + w));
        }
        const py::object warningText = py::str(station::joinWarnings(warnings));
        if (!error.empty()) {
            // A frame that fails is one row with its cause; the batch goes on. Graded, it
            // fails: a frame that could not be measured never passes.
            table["file"].push_back(name);
            table["error"].push_back(py::str(error));
            table["warnings"].push_back(warningText);
            for (const station::EdgeColumn* c : columns) {
                table[c->name].push_back(std::strcmp(c->name, "pass") == 0
                                             ? py::object(py::bool_(false))
                                             : py::object(py::none()));
            }
            continue;
        }
        const station::FrameReport& r = graded.report;
        for (const station::EdgeRow& e : r.rows) {
            table["file"].push_back(name);
            table["error"].push_back(py::none());
            table["warnings"].push_back(warningText);
            for (const station::EdgeColumn* c : columns) {
                table[c->name].push_back(cellObject(c->value(r, e)));
            }
        }
    }
    py::dict data;
    py::dict whole;
    for (const std::string& column : order) {
        data[py::str(column)] = py::cast(table[column]);
    }
    for (const station::EdgeColumn* c : columns) {
        // Whole-number columns stay whole (pandas' nullable integers) beside a failed frame.
        if (c->type == station::ColumnType::Integer) {
            whole[c->name] = "Int64";
        }
    }
    return py::module_::import("pandas").attr("DataFrame")(data).attr("astype")(whole);
}

// The edge columns of `report` as a DataFrame: whole-number columns as pandas' nullable
// integers.
py::object edgeFrame(const station::FrameReport& report) {
    const std::vector<const station::EdgeColumn*> columns = station::columnsOf(report);
    py::dict data;
    py::dict whole;
    for (const station::EdgeColumn* c : columns) {
        py::list values;
        for (const station::EdgeRow& e : report.rows) {
            values.append(cellObject(c->value(report, e)));
        }
        data[py::str(c->name)] = values;
        if (c->type == station::ColumnType::Integer) {
            whole[c->name] = "Int64";
        }
    }
    return py::module_::import("pandas").attr("DataFrame")(data).attr("astype")(whole);
}

// measure_chart's frame from a numpy array: its layout from the dtype and shape, or `format`.
station::ChartFrame chartFrameOf(const py::object& image, std::optional<int> format,
                                 std::optional<int> bits) {
    if (!py::isinstance<py::array>(image)) {
        throw py::type_error("image must be a numpy array of uint8 or uint16");
    }
    const py::array a = py::reinterpret_borrow<py::array>(image);
    const bool wide = a.dtype().is(py::dtype::of<std::uint16_t>());
    if ((!wide && !a.dtype().is(py::dtype::of<std::uint8_t>())) ||
        !(a.ndim() == 2 || (a.ndim() == 3 && a.shape(2) == 3))) {
        throw py::type_error(
            "image must be a 2-D (grey or mosaic) or rows x columns x 3 (BGR) numpy array of "
            "uint8 or uint16");
    }
    const std::int64_t rows = static_cast<std::int64_t>(a.shape(0));
    const std::int64_t cols = static_cast<std::int64_t>(a.shape(1));
    if (rows <= 0 || cols <= 0 || rows > INT32_MAX || cols > INT32_MAX || rows * cols > INT32_MAX) {
        raise("InvalidInput", "image is " + std::to_string(rows) + " x " + std::to_string(cols) +
                                  ": a frame holds 1 to 2147483647 pixels");
    }
    station::ChartFrame f;
    f.format = format ? *format : defaultFormat(a);
    const int layout = f.format & PixelFormat::LayoutMask;
    const bool mosaicLayout = layout == PixelFormat::Bayer8 || layout == PixelFormat::Bayer16 ||
                              layout == PixelFormat::Bayer16B || layout == PixelFormat::Bayer16C;
    const int expected = a.ndim() == 3  ? (wide ? PixelFormat::Bgr16 : PixelFormat::Bgr8)
                         : mosaicLayout ? (wide ? layout : PixelFormat::Bayer8)
                                        : (wide ? PixelFormat::Grey16 : PixelFormat::Grey8);
    if (layout != expected || (mosaicLayout == ((f.format & PixelFormat::PhaseMask) == 0))) {
        raise("InvalidInput", "format " + std::to_string(f.format) + " does not fit a " +
                                  std::string(wide ? "uint16" : "uint8") + " array of " +
                                  std::to_string(a.ndim()) +
                                  " dimensions (a mosaic needs a Bayer layout with its phase)");
    }
    if (bits && (!wide || *bits < 8 || *bits > 16)) {
        raise("InvalidInput", "bits must be 8 to 16, for uint16 samples only");
    }
    f.bits = bits ? *bits : 0;
    const auto contiguous = py::array::ensure(a, py::array::c_style);
    const int type = a.ndim() == 3 ? (wide ? CV_16UC3 : CV_8UC3) : (wide ? CV_16UC1 : CV_8UC1);
    // One copy into memory the frame owns, so the GIL can be released while it is measured.
    cv::Mat(static_cast<int>(rows), static_cast<int>(cols), type,
            const_cast<void*>(contiguous.data()))
        .copyTo(f.image);
    if (f.bits > 0 && f.bits < 16) {
        double largest = 0.0;
        cv::minMaxLoc(f.image.reshape(1), nullptr, &largest);
        if (largest > std::ldexp(1.0, f.bits) - 1.0) {
            raise("InvalidInput", "samples reach " + std::to_string(static_cast<long>(largest)) +
                                      ", above " + std::to_string(f.bits) + "-bit full scale");
        }
    }
    return f;
}

py::object measureChartArray(const py::object& image, const std::string& chart,
                             std::optional<int> format, std::optional<int> bits,
                             const std::string& method, bool perChannelRaw, double freqDivisor,
                             std::optional<std::string> limits,
                             std::optional<std::string> pixelPitch, bool acceptClipped) {
    checkDivisor(freqDivisor);
    if (method != "classic" && method != "precise") {
        raise("InvalidInput", "method must be 'classic' or 'precise', not '" + method + "'");
    }
    station::ChartChoice choice;
    station::FrameOptions options;
    try {
        choice = station::chooseChart(chart);
        if (limits) {
            options.limits = station::readLimits(*limits);
        }
        if (pixelPitch) {
            options.pixelPitchUm = station::parsePixelPitch(*pixelPitch);
        }
    } catch (const station::Failure& e) {
        raise(exceptionFor(e.cause()), e.what());
    }
    options.param.freqDivisor = static_cast<float>(freqDivisor);
    options.chartMethod = method == "precise" ? SfrMethod::kPrecise : SfrMethod::kClassic;
    options.planes = perChannelRaw;
    options.acceptClipped = acceptClipped;
    station::ChartFrame frame = chartFrameOf(image, format, bits);
    station::GradedFrame graded;
    std::string error;
    station::Cause cause = station::Cause::None;
    {
        py::gil_scoped_release unlocked;
        try {
            graded = station::gradeChartFrame(choice, frame, options, "");
        } catch (const station::Failure& e) {
            error = e.what();
            cause = e.cause();
        }
    }
    if (cause == station::Cause::NoQuadrilateral) {
        // Nothing to measure is an answer, not a failure: an empty table, and why.
        py::module_::import("warnings").attr("warn")(py::str(error));
        return edgeFrame(
            station::reportLayout(station::chartMeasurand(choice, {}, false), options));
    }
    if (cause != station::Cause::None) {
        raise(exceptionFor(cause), error);
    }
    for (const std::string& w : graded.report.warnings) {
        py::module_::import("warnings").attr("warn")(py::str(w));
    }
    return edgeFrame(graded.report);
}

// The stack's frames: an iterable of (path, z) pairs, or the path of a "file,z" list.
std::vector<station::FocusFrame> focusFrames(const py::object& frames) {
    if (py::isinstance<py::str>(frames) || py::hasattr(frames, "__fspath__")) {
        const std::string list = py::str(py::module_::import("os").attr("fspath")(frames));
        try {
            return station::readFocusList(list);
        } catch (const station::Failure& e) {
            raise(exceptionFor(e.cause()), e.what());
        }
    }
    std::vector<station::FocusFrame> out;
    for (const py::handle item : frames) {
        const py::tuple pair = py::tuple(py::reinterpret_borrow<py::object>(item));
        if (pair.size() != 2) {
            raise("InvalidInput", "frames must be (path, z) pairs or a file,z list's path");
        }
        station::FocusFrame f;
        f.path = py::str(py::module_::import("os").attr("fspath")(pair[0]));
        f.z = pair[1].cast<double>();
        if (!std::isfinite(f.z)) {
            raise("InvalidInput", f.path + ": z must be finite");
        }
        out.push_back(f);
    }
    return out;
}

py::dict throughFocus(const py::object& frames, std::optional<std::string> member,
                      std::optional<std::string> chart, const std::string& pixelPitch, int width,
                      int height, const std::string& packing, double frequency, double minSfr,
                      const std::string& bayer, int bits) {
    if (member.has_value() == chart.has_value()) {
        raise("InvalidInput", "through_focus measures with a member= or a chart=, one of them");
    }
    if (!(frequency > 0.0 && frequency <= 0.5)) {
        raise("InvalidInput", "frequency must be above 0 and at most 0.5 cycles per pixel");
    }
    if (!(minSfr >= 0.0 && minSfr <= 2.0)) {
        raise("InvalidInput", "min_sfr must be 0 .. 2");
    }
    const double divisor = std::abs(frequency - 0.125) < 1e-12 ? 0.0 : 0.5 / frequency;
    const std::vector<station::Member> members = station::allMembers();
    std::optional<station::Measurand> measurand;
    station::FrameOptions options;
    try {
        if (member) {
            const station::Member* m = station::findMember(members, *member);
            if (m == nullptr) {
                raise("InvalidInput", "unknown member '" + *member + "'");
            }
            options = fileOptions(*m, width, height, packing, 0, 0, 80, 100, divisor, std::nullopt,
                                  "classic", false, pixelPitch);
            measurand = station::memberMeasurand(*m);
        } else {
            if (*chart == "auto" || *chart == "AUTO") {
                raise("InvalidInput",
                      "through_focus needs edges that keep their slot from frame to frame: a "
                      "member or a chart description, not chart='auto'");
            }
            options.layout.width = width;
            options.layout.height = height;
            options.layout.packing = station::parsePacking(packing);
            options.param.freqDivisor = static_cast<float>(divisor);
            options.pixelPitchUm = station::parsePixelPitch(pixelPitch);
            station::ChartSamples samples;
            samples.bayer = bayer;
            samples.bits = bits;
            measurand =
                station::chartMeasurand(station::chooseChart(*chart), samples, bayer != "RG");
        }
    } catch (const station::Failure& e) {
        raise(exceptionFor(e.cause()), e.what());
    }
    const std::vector<station::FocusFrame> stack = focusFrames(frames);
    std::string text;
    std::optional<station::Failure> failure;
    {
        py::gil_scoped_release unlocked;
        try {
            station::FrameStream stream(*measurand, options);
            text = station::focusStudyJson(
                       station::studyFocus(stream, stack, frequency, minSfr, options.pixelPitchUm))
                       .dump(-1, ' ', false, station::Json::error_handler_t::replace);
        } catch (const station::Failure& e) {
            failure = e;
        }
    }
    if (failure) {
        raise(exceptionFor(failure->cause()), failure->what());
    }
    // The command line's JSON, as tables: one name for every figure.
    const py::dict doc = py::module_::import("json").attr("loads")(text);
    const py::object frame = py::module_::import("pandas").attr("DataFrame");
    py::list edges, curves;
    for (const py::handle e : doc["edges"]) {
        py::dict row = py::reinterpret_borrow<py::dict>(e);
        for (const py::handle point : row["curve"]) {
            py::dict sample;
            sample["edge"] = row["edge"];
            sample["name"] = row["name"];
            sample["z_um"] = point["z_um"];
            sample["sfr"] = point["sfr"];
            curves.append(sample);
        }
        py::dict copy(row);
        copy.attr("pop")("curve");
        edges.append(copy);
    }
    py::dict out;
    out["edges"] = frame(edges);
    out["curves"] =
        frame(curves, py::arg("columns") = std::vector<std::string>{"edge", "name", "z_um", "sfr"});
    out["zones"] = frame(doc["zones"]);
    out["frames"] = frame(doc["frames"]);
    py::dict surface = doc["surface"];
    out["surface"] = surface;
    return out;
}

}  // namespace

PYBIND11_MODULE(talonvireo, m) {
    m.doc() = "Slanted-edge SFR (ISO 12233 MTF) measurement of camera-module chart frames.";

    const py::object base = py::reinterpret_steal<py::object>(PyErr_NewExceptionWithDoc(
        "talonvireo.Error", "Base of every talonvireo failure.", PyExc_RuntimeError, nullptr));
    m.attr("Error") = base;
    // `parent` is Error itself or one of its subclasses; `extra` a second, built-in base.
    const auto derived = [&](const char* name, const char* doc, py::object parent,
                             py::object extra) {
        py::tuple bases = extra ? py::make_tuple(parent, extra) : py::make_tuple(parent);
        return py::reinterpret_steal<py::object>(
            PyErr_NewExceptionWithDoc(name, doc, bases.ptr(), nullptr));
    };
    const py::object invalid = derived("talonvireo.InvalidInput",
                                       "The frame, region or parameters were refused (status -1).",
                                       base, py::reinterpret_borrow<py::object>(PyExc_ValueError));
    const py::object notLocated =
        derived("talonvireo.ChartNotLocated",
                "The chart was not found, or a region ran off the frame (-2).", base, py::object());
    const py::object sfrFailed =
        derived("talonvireo.SfrCalculationFailed", "The slanted-edge calculation refused a region.",
                base, py::object());
    const py::object refused = derived(
        "talonvireo.EdgeRefused", "The region's edge cannot be measured (contrast, slope, grid).",
        sfrFailed, py::object());
    m.attr("InvalidInput") = invalid;
    m.attr("ChartNotLocated") = notLocated;
    m.attr("SfrCalculationFailed") = sfrFailed;
    m.attr("EdgeRefused") = refused;

    py::list names;
    for (const station::Member& each : station::allMembers())
        names.append(each.name);
    m.attr("MEMBERS") = names;
    m.attr("__version__") = TALONVIREO_VERSION;

    m.def("measure_frame", &measureFrame, py::arg("raw"), py::arg("member"),
          py::arg("roi_size") = 80, py::arg("mark_search_size") = 100,
          py::arg("freq_divisor") = 0.0,
          "Measures a raw chart frame (2-D uint16 array of Bayer R G words) with one library "
          "member (see MEMBERS) and returns one dict per edge: index, x, y, side, "
          "sfr_quarter_nyquist, sfr_half_nyquist, sfr_custom (None unless freq_divisor > 0, "
          "or where the figure does not exist). Raises ChartNotLocated, SfrCalculationFailed, "
          "InvalidInput (also for a frame over 2147483647 pixels, before anything is copied); "
          "TypeError for anything but a 2-D uint16 array.");
    py::class_<PyTracker>(m, "Tracker",
                          "Follows one member's chart through a stream of frames: the first is "
                          "located as the member locates it; every next one reads only the raw "
                          "words under the regions, reduced to grey bit for bit as the whole "
                          "frame's road gives them, and is measured where the chart now is (on "
                          "a still chart: the member's own figures). The chart is located afresh "
                          "when an edge is lost or moves beyond its region. One tracker per "
                          "stream.")
        .def(py::init<const std::string&, int, int, double>(), py::arg("member"),
             py::arg("roi_size") = 80, py::arg("mark_search_size") = 100,
             py::arg("freq_divisor") = 0.0)
        .def("measure", &PyTracker::measure, py::arg("raw"),
             "Measures one frame (2-D uint16 array) and returns what measure_frame returns.")
        .def_property_readonly("relocated", &PyTracker::relocated,
                               "Whether the last frame was located afresh.");
    m.def("measure_files", &measureFiles, py::arg("paths"), py::arg("member"), py::arg("width") = 0,
          py::arg("height") = 0, py::arg("packing") = "words16", py::arg("stride") = 0,
          py::arg("offset") = 0, py::arg("roi_size") = 80, py::arg("mark_search_size") = 100,
          py::arg("freq_divisor") = 0.0, py::arg("limits") = py::none(),
          py::arg("method") = "classic", py::arg("per_channel_raw") = false,
          py::arg("pixel_pitch") = py::none(), py::arg("accept_clipped") = false,
          "Measures frame files (one path or an iterable of paths; raw words with width and "
          "height; packing='mipi10', 'mipi12' "
          "or 'raw8'; stride= bytes per padded line, offset= header bytes; a 16-bit "
          "PGM/PNG/TIFF; or a camera raw file such as DNG, read through LibRaw) with one "
          "member, exactly as "
          "talonvireo-sfr measure does, and returns a pandas DataFrame with one row per edge: "
          "file, error (None), warnings (the frame's, '; '-separated), then the edge columns of "
          "`talonvireo-sfr columns` these options give (edge, state, x, y, side, the member's "
          "figures, mtf50, edge_angle_deg, contrast, snr, clipped_share, design_distance_px, "
          "flags, field position, and as asked the custom, pitch, precise and raw-plane "
          "figures, zone, failed_limit and pass). A flagged edge (clipped, off the design, SFR "
          "above 1, low contrast, noisy) fails under limits; accept_clipped=True only warns of "
          "clipping. Every warning is also raised through warnings.warn. A frame that cannot be "
          "measured is one row with its error (and pass False with limits); the others go on. "
          "Raises InvalidInput for bad options or limits, naming the parameter, before any "
          "frame is read.");
    m.def("measure_chart", &measureChartArray, py::arg("image"), py::arg("chart") = "auto",
          py::kw_only(), py::arg("format") = py::none(), py::arg("bits") = py::none(),
          py::arg("method") = "precise", py::arg("per_channel_raw") = false,
          py::arg("freq_divisor") = 0.0, py::arg("limits") = py::none(),
          py::arg("pixel_pitch") = py::none(), py::arg("accept_clipped") = false,
          "Finds and measures every slanted edge of a chart frame and returns a pandas "
          "DataFrame, one row per edge, with the edge columns of `talonvireo-sfr columns` for "
          "a chart: edge (the description's slot, else a running index), state, x, y (rounded), "
          "name, centre_x, centre_y (the region's centre: the edge's midpoint, or the slot's "
          "point on it; full-frame pixels, integer = pixel centre), angle_deg, length_px, "
          "bow_px, region_width, region_height, sfr_quarter_nyquist, sfr_half_nyquist "
          "(frequencies across the edge), mtf50, contrast, snr, clipped_share, flags, field "
          "position and as asked the custom, pitch, raw-plane figures and verdicts. chart: "
          "'auto' (every quadrilateral found), a built-in chart's name (HLX6C, K74T16BX, "
          "K83P09BQ, K31R22BX) or a chart description file (.toml). image: a 2-D uint8 or "
          "uint16 array is grey, rows x columns x 3 is BGR; format= a pixel-format code of "
          "sfr for a mosaic (e.g. 0x021, Bayer16 R G) with bits= its significant bits. A frame "
          "with no quadrilateral gives an empty DataFrame and a warning. Raises InvalidInput, "
          "ChartNotLocated (a description that does not register), TypeError.");
    m.def("through_focus", &throughFocus, py::arg("frames"), py::arg("member") = py::none(),
          py::kw_only(), py::arg("chart") = py::none(), py::arg("pixel_pitch"),
          py::arg("width") = 0, py::arg("height") = 0, py::arg("packing") = "words16",
          py::arg("frequency") = 0.125, py::arg("min_sfr") = 0.3, py::arg("bayer") = "RG",
          py::arg("bits") = 0,
          "Measures a through-focus stack as talonvireo-sfr focus does (a member's chart "
          "tracked from frame to frame, or a chart description's slots) and returns a dict: "
          "'edges' (DataFrame, one row per edge: edge, name, x, y, x_mm, y_mm, orientation, "
          "zone, best_focus_z_um, peak_sfr, above_limit_from_z_um, above_limit_to_z_um, "
          "samples_fitted), 'curves' (DataFrame: edge, name, z_um, sfr), 'zones' (DataFrame: "
          "tangential and sagittal best focus and astigmatism per field zone), 'frames' "
          "(DataFrame: file, z_um, relocated, error) and 'surface' (dict: best_focus_z_um, "
          "slope_x_um_per_mm, slope_y_um_per_mm, tilt_about_x_arcmin, tilt_about_y_arcmin, "
          "curvature_um_per_mm2, residual_um, edges, window_from_z_um, window_to_z_um, "
          "window_centre_z_um). frames: (path, z in um) pairs or the path of a file,z list. "
          "pixel_pitch: such as '1.4um'. frequency: cycles per pixel (default Nyquist/4); "
          "min_sfr: the limit of each edge's depth and of the common window. Best focus is the "
          "peak of a parabola fitted to the logarithm of the SFR near its maximum (exact for a "
          "Gaussian defocus). Raises InvalidInput and the failures of measure_files.");
    m.def("sfr", &sfr, py::arg("region"), py::arg("format") = py::none(),
          py::arg("frequencies") = std::vector<double>{}, py::arg("normal_axis") = false,
          py::arg("method") = "classic", py::arg("per_channel_raw") = false,
          "Measures one slanted-edge region (uint8/uint16, grey, Bayer with an explicit format, "
          "or BGR) and returns {'method', 'normal_frequency_axis', 'channels': [{'channel' "
          "('grey', 'B', 'G', 'R', or 'R', 'Gr', 'Gb', 'B' per raw plane), 'frequency', 'sfr', "
          "'esf', 'lsf', 'esf_bin_width', 'edge_angle', 'kernel_sigma', 'mtf10', 'mtf30', "
          "'mtf50', 'sfr_at'}]}. method='precise' holds its accuracy at every edge angle "
          "(frequencies across the edge); per_channel_raw=True (precise, Bayer formats) measures "
          "each colour plane from its own samples. Raises EdgeRefused or InvalidInput.");
}
