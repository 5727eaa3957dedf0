// talonvireo: the library for Python. Frames and regions are numpy arrays; failures raise.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "render/RegionEncoding.h"
#include "station/Failure.h"
#include "station/FrameGrading.h"
#include "station/Limits.h"
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

py::object figureOrNone(double v) {
    return std::isfinite(v) ? py::object(py::float_(v)) : py::object(py::none());
}

py::list measureFrame(py::object raw, const std::string& member, int roiSize, int markSearchSize,
                      double freqDivisor) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member* m = station::findMember(members, member);
    if (m == nullptr) {
        std::string names;
        for (const station::Member& each : members)
            names += " " + each.name;
        raise("InvalidInput", "unknown member '" + member + "'; one of:" + names);
    }
    checkDivisor(freqDivisor);
    // Exactly a 2-D uint16 array: numpy's casts would read 8-bit or float values as words.
    if (!py::isinstance<py::array>(raw) ||
        !py::reinterpret_borrow<py::array>(raw).dtype().is(py::dtype::of<std::uint16_t>()) ||
        py::reinterpret_borrow<py::array>(raw).ndim() != 2) {
        throw py::type_error("raw must be a 2-D numpy array of uint16 (rows x columns)");
    }
    // Same dtype, so this only copies a non-contiguous view.
    auto frame = py::array_t<std::uint16_t, py::array::c_style>::ensure(raw);
    if (!frame) {
        throw py::type_error("raw must be a 2-D numpy array of uint16 (rows x columns)");
    }
    const int height = static_cast<int>(frame.shape(0));
    const int width = static_cast<int>(frame.shape(1));
    // The members take a mutable pointer but only read the frame; `frame` keeps the array
    // alive while the GIL is released.
    const std::uint16_t* samples = frame.data();
    SFRParam param{static_cast<float>(freqDivisor), roiSize, markSearchSize};
    std::vector<SFREdgeResult> edges;
    int status;
    {
        py::gil_scoped_release unlocked;
        status = m->measure(samples, width, height, param, edges);
    }
    switch (status) {
        case 0:
            break;
        case -2:
            raise("ChartNotLocated", "chart not located, or a region off the frame (status -2)");
        case -3:
            raise("SfrCalculationFailed", "SFR calculation failed on a region (status -3)");
        default:
            raise("InvalidInput",
                  "frame or parameters refused (status " + std::to_string(status) + ")");
    }
    py::list out;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        py::dict e;
        e["index"] = i;
        e["x"] = edges[i].x;
        e["y"] = edges[i].y;
        e["side"] =
            m->regionSide(static_cast<int>(i), static_cast<int>(edges.size()), param.roiSize);
        e["sfr_quarter_nyquist"] = figureOrNone(edges[i].sfrQuarterNyquist);
        e["sfr_half_nyquist"] = figureOrNone(edges[i].sfrHalfNyquist);
        e["sfr_custom"] = freqDivisor > 0.0 ? figureOrNone(edges[i].sfrCustom) : py::none();
        out.append(e);
    }
    return out;
}

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
class EdgeTable {
public:
    void add(const std::string& column, py::object value) { columns_[column].push_back(value); }
    // Pads every column to `rows` values, so that a frame's missing figures stay aligned.
    void pad(std::size_t rows) {
        for (auto& [name, values] : columns_) {
            while (values.size() < rows) {
                values.push_back(py::none());
            }
        }
    }
    py::object frame(const std::vector<std::string>& order) {
        py::dict data;
        for (const std::string& name : order) {
            auto it = columns_.find(name);
            if (it != columns_.end()) {
                data[py::str(name)] = py::cast(it->second);
            }
        }
        py::object frame = py::module_::import("pandas").attr("DataFrame")(data);
        // Whole-number columns stay whole (pandas' nullable integers) beside a failed frame.
        py::dict whole;
        for (const char* name : {"edge", "x", "y", "side"}) {
            if (columns_.count(name) != 0) {
                whole[name] = "Int64";
            }
        }
        return frame.attr("astype")(whole);
    }

private:
    std::map<std::string, std::vector<py::object>> columns_;
};

py::object measureFiles(py::iterable paths, const std::string& member, int width, int height,
                        const std::string& packing, int stride, int offset, int roiSize,
                        int markSearchSize, double freqDivisor, std::optional<std::string> limits,
                        const std::string& method, bool perChannelRaw,
                        std::optional<std::string> pixelPitch) {
    const std::vector<station::Member> members = station::allMembers();
    const station::Member* m = station::findMember(members, member);
    if (m == nullptr) {
        raise("InvalidInput", "unknown member '" + member + "'");
    }
    checkDivisor(freqDivisor);
    // Every option is checked, and the limits read, before the first frame.
    station::FrameOptions options;
    try {
        options.param = SFRParam{static_cast<float>(freqDivisor), roiSize, markSearchSize};
        options.layout.width = width;
        options.layout.height = height;
        options.layout.packing = station::parsePacking(packing);
        options.layout.stride = stride;
        options.layout.offset = offset;
        if (stride < 0 || offset < 0) {
            throw station::Failure(station::Cause::BadInput,
                                   "stride and offset are byte counts >= 0");
        }
        station::checkRawLayout(options.layout);
        options.precise = station::parseMethod(method) == SfrMethod::kPrecise;
        options.planes = perChannelRaw;
        if (limits) {
            options.limits = station::readLimits(*limits);
        }
        if (pixelPitch) {
            options.pixelPitchUm = station::parsePixelPitch(*pixelPitch);
        }
        station::checkFrameOptions(options);
    } catch (const station::Failure& e) {
        raise(exceptionFor(e.cause()), e.what());
    }
    std::vector<std::string> files;
    for (py::handle each : paths) {
        files.push_back(py::str(py::module_::import("os").attr("fspath")(each)));
    }
    EdgeTable table;
    std::size_t rows = 0;
    for (const std::string& file : files) {
        station::GradedFrame graded;
        std::string error;
        {
            py::gil_scoped_release unlocked;
            try {
                graded = station::gradeFrameFile(*m, file, options, stderr);
            } catch (const std::exception& e) {
                error = e.what();
            }
        }
        const station::FrameReport& r = graded.report;
        // A frame that fails is one row with its cause; the batch goes on.
        const std::size_t count = error.empty() ? r.rows.size() : 1;
        for (std::size_t i = 0; i < count; ++i) {
            table.add("file", py::str(file));
            table.add("error", error.empty() ? py::object(py::none()) : py::str(error));
            if (!error.empty()) {
                continue;
            }
            const station::EdgeRow& e = r.rows[i];
            table.add("edge", py::int_(e.index));
            table.add("x", py::int_(e.measured.x));
            table.add("y", py::int_(e.measured.y));
            table.add("side", py::int_(e.side));
            table.add("sfr_quarter_nyquist", figureOrNone(e.measured.sfrQuarterNyquist));
            table.add("sfr_half_nyquist", figureOrNone(e.measured.sfrHalfNyquist));
            if (r.hasCustom()) {
                table.add("sfr_custom", figureOrNone(e.measured.sfrCustom));
            }
            table.add("height_percent", figureOrNone(e.field.heightPercent));
            table.add("azimuth_deg", figureOrNone(e.field.azimuthDeg));
            table.add("orientation", py::str(e.field.orientation));
            if (r.hasMtf50) {
                table.add("mtf50", figureOrNone(e.mtf50));
            }
            if (r.hasPitch()) {
                table.add("mtf50_lp_per_mm",
                          figureOrNone(station::linePairsPerMm(e.mtf50, r.pixelPitchUm)));
            }
            if (r.hasPrecise) {
                table.add("precise_sfr_quarter_nyquist", figureOrNone(e.precise.sfrQuarterNyquist));
                table.add("precise_sfr_half_nyquist", figureOrNone(e.precise.sfrHalfNyquist));
                table.add("precise_mtf50", figureOrNone(e.precise.mtf50));
            }
            for (const station::CurveFigures& plane : e.planes) {
                table.add("raw_" + plane.channel + "_mtf50", figureOrNone(plane.mtf50));
            }
            if (!r.limitsPath.empty()) {
                table.add("zone", py::str(e.zone));
                table.add("failed_limit",
                          e.failedLimit.empty() ? py::object(py::none()) : py::str(e.failedLimit));
                table.add("pass", py::bool_(e.pass));
            }
            table.pad(rows + i + 1);
        }
        rows += count;
        table.pad(rows);
    }
    return table.frame({"file",
                        "error",
                        "edge",
                        "x",
                        "y",
                        "side",
                        "sfr_quarter_nyquist",
                        "sfr_half_nyquist",
                        "sfr_custom",
                        "height_percent",
                        "azimuth_deg",
                        "orientation",
                        "mtf50",
                        "mtf50_lp_per_mm",
                        "precise_sfr_quarter_nyquist",
                        "precise_sfr_half_nyquist",
                        "precise_mtf50",
                        "raw_R_mtf50",
                        "raw_Gr_mtf50",
                        "raw_Gb_mtf50",
                        "raw_B_mtf50",
                        "zone",
                        "failed_limit",
                        "pass"});
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
          "InvalidInput; TypeError for anything but a 2-D uint16 array.");
    m.def("measure_files", &measureFiles, py::arg("paths"), py::arg("member"), py::arg("width") = 0,
          py::arg("height") = 0, py::arg("packing") = "words16", py::arg("stride") = 0,
          py::arg("offset") = 0, py::arg("roi_size") = 80, py::arg("mark_search_size") = 100,
          py::arg("freq_divisor") = 0.0, py::arg("limits") = py::none(),
          py::arg("method") = "classic", py::arg("per_channel_raw") = false,
          py::arg("pixel_pitch") = py::none(),
          "Measures frame files (raw words with width and height; packing='mipi10', 'mipi12' "
          "or 'raw8'; stride= bytes per padded line, offset= header bytes; a 16-bit "
          "PGM/PNG/TIFF; or a camera raw file such as DNG, read through LibRaw) with one "
          "member, exactly as "
          "talonvireo-sfr measure does, and returns a pandas DataFrame with one row per edge: "
          "file, error (None), edge, x, y, side, the member's figures, height_percent, "
          "azimuth_deg, orientation, and as asked mtf50 (limits needing it, pixel_pitch, "
          "method='precise'), the precise and raw-plane figures, zone, failed_limit and pass "
          "(limits='file.toml'). A frame that cannot be measured is one row with its error; "
          "the others go on. Raises InvalidInput for bad options or limits, before any frame.");
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
