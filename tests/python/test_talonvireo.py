"""The talonvireo Python module against rendered ground truth."""
import ctypes
import math
import mmap
import os
import pathlib

import numpy as np
import pytest

import talonvireo


def edge_region(sigma=0.8, angle_deg=5.0, size=100, dark=40.0, bright=200.0):
    """A near-vertical edge through the region's centre, blurred by a Gaussian of `sigma`
    px, sampled at pixel centres (no pixel aperture), rounded to 8 bits."""
    rows, cols = np.mgrid[0:size, 0:size].astype(float)
    c = (size - 1) / 2.0
    t = math.tan(math.radians(angle_deg))
    distance = (cols - c - t * (rows - c)) * math.cos(math.radians(angle_deg))
    erf = np.vectorize(math.erf)
    level = dark + (bright - dark) * 0.5 * (1.0 + erf(distance / (sigma * math.sqrt(2.0))))
    return np.round(level).astype(np.uint8)


def gaussian_mtf50(sigma):
    # exp(-2 pi^2 sigma^2 f^2) = 0.5
    return math.sqrt(math.log(2.0) / 2.0) / (math.pi * sigma)


def test_measure_frame_finds_every_edge_of_the_chart(rendered_chart):
    raw, truth = rendered_chart
    edges = talonvireo.measure_frame(raw, member="talonvireoSFR_raw10_HLX6C", roi_size=80,
                                     mark_search_size=100, freq_divisor=4.0)
    expected = [e for layout in truth["layouts"] for e in layout["edges"]]
    assert len(edges) == 52 == len(expected)
    for got, want in zip(edges, expected):
        x, y = want["centres"]["100"]
        assert math.hypot(got["x"] - x, got["y"] - y) <= 3.0
        # The Malvar demosaic sharpens a little: within 0.06 of the rendered blur's truth.
        assert got["sfr_quarter_nyquist"] == pytest.approx(want["sfr_quarter_nyquist"], abs=0.06)
        assert got["sfr_half_nyquist"] == pytest.approx(want["sfr_half_nyquist"], abs=0.04)
        assert got["sfr_custom"] == pytest.approx(got["sfr_quarter_nyquist"])
    assert {e["side"] for e in edges[26:]} == {90}  # the HLX6C second set


def test_measure_frame_raises_when_the_chart_is_missing():
    with pytest.raises(talonvireo.ChartNotLocated):
        talonvireo.measure_frame(np.zeros((800, 1000), np.uint16),
                                 member="talonvireoSFR_raw10_HLX6C")


def test_measure_frame_refuses_bad_parameters_and_arrays():
    frame = np.zeros((300, 400), np.uint16)
    with pytest.raises(talonvireo.InvalidInput):
        talonvireo.measure_frame(frame, member="talonvireoSFR_raw16", roi_size=120,
                                 mark_search_size=100)
    with pytest.raises(ValueError):  # InvalidInput is a ValueError too
        talonvireo.measure_frame(frame, member="talonvireoSFR_raw16", mark_search_size=0)
    with pytest.raises(ValueError, match="unknown member"):
        talonvireo.measure_frame(frame, member="nope")
    with pytest.raises(TypeError):
        talonvireo.measure_frame(frame.astype(np.float32), member="talonvireoSFR_raw16")
    with pytest.raises(TypeError):
        talonvireo.measure_frame(np.zeros(100, np.uint16), member="talonvireoSFR_raw16")


def test_members_are_listed():
    assert len(talonvireo.MEMBERS) == 13
    assert "talonvireoSFR_raw16_HLX6C_8K" in talonvireo.MEMBERS


@pytest.mark.parametrize("sigma", [0.6, 0.9, 1.2])
def test_sfr_reads_the_mtf50_of_a_known_blur(sigma):
    curve = talonvireo.sfr(edge_region(sigma=sigma), normal_axis=True)
    (channel,) = curve["channels"]
    # Point-sampled edge: the truth is the Gaussian's alone, no pixel aperture.
    assert channel["mtf50"] == pytest.approx(gaussian_mtf50(sigma), rel=0.03)


def test_sfr_returns_the_whole_curve_as_arrays():
    curve = talonvireo.sfr(edge_region(), frequencies=[0.125, 0.25, 2.0])
    (c,) = curve["channels"]
    assert curve["normal_frequency_axis"] is False
    assert isinstance(c["frequency"], np.ndarray) and c["frequency"].shape == c["sfr"].shape
    assert c["frequency"][0] == 0.0 and c["sfr"][0] == 1.0
    assert np.all(np.diff(c["frequency"]) > 0)
    assert c["esf"].shape == c["lsf"].shape and c["esf"].size == 2 * c["sfr"].size
    assert c["esf_bin_width"] == 0.25
    assert c["edge_angle"] == pytest.approx(5.0, abs=0.1)
    assert c["mtf10"] > c["mtf30"] > c["mtf50"] > 0
    assert c["sfr_at"][0] == pytest.approx(np.interp(0.125, c["frequency"], c["sfr"]))
    assert math.isnan(c["sfr_at"][2])


def test_sfr_measures_colour_and_sixteen_bit_regions():
    grey = edge_region()
    bgr = np.dstack([grey, grey, grey])
    assert len(talonvireo.sfr(bgr)["channels"]) == 3
    wide = talonvireo.sfr(grey.astype(np.uint16) * 256)["channels"][0]
    assert wide["mtf50"] == pytest.approx(talonvireo.sfr(grey)["channels"][0]["mtf50"])


def test_sfr_raises_for_edges_it_cannot_measure():
    with pytest.raises(talonvireo.EdgeRefused, match="contrast"):
        talonvireo.sfr(np.full((100, 100), 120, np.uint8))
    with pytest.raises(talonvireo.SfrCalculationFailed):  # EdgeRefused's parent
        talonvireo.sfr(np.full((100, 100), 120, np.uint8))
    with pytest.raises(talonvireo.InvalidInput):
        talonvireo.sfr(np.zeros((3, 3), np.uint8))
    with pytest.raises(talonvireo.InvalidInput):
        talonvireo.sfr(edge_region(), format=0x123)
    with pytest.raises(TypeError):
        talonvireo.sfr(edge_region().astype(np.float64))


# ---- Buffers, types and numbers that must be refused, not read ----

class GuardedArray:
    """A uint8 array that ends exactly where a PROT_NONE page begins: reading one byte past
    it faults."""

    def __init__(self, rows, cols):
        page = mmap.PAGESIZE
        n = rows * cols
        self.pages = (n + page - 1) // page
        self.map = mmap.mmap(-1, (self.pages + 1) * page)
        self.base = ctypes.addressof(ctypes.c_char.from_buffer(self.map))
        self.libc = ctypes.CDLL(None, use_errno=True)
        self.libc.mprotect.argtypes = [ctypes.c_void_p, ctypes.c_size_t, ctypes.c_int]
        guard = self.base + self.pages * page
        assert self.libc.mprotect(guard, page, 0) == 0  # PROT_NONE
        offset = self.pages * page - n
        self.array = np.frombuffer(self.map, dtype=np.uint8, count=n, offset=offset).reshape(rows, cols)

    def release(self):
        page = mmap.PAGESIZE
        self.libc.mprotect(self.base + self.pages * page, page, 3)  # PROT_READ | PROT_WRITE


@pytest.mark.parametrize("code", [0x200, 0x400, 0x800, 0x021, 0x042])
def test_sfr_refuses_a_format_wider_than_a_uint8_array_at_a_guard_page(code):
    guarded = GuardedArray(100, 100)
    try:
        guarded.array[:] = edge_region()
        # The array itself is readable to its last byte.
        assert talonvireo.sfr(guarded.array, format=0x100)["channels"][0]["mtf50"] > 0
        with pytest.raises(talonvireo.InvalidInput, match="format"):
            talonvireo.sfr(guarded.array, format=code)
    finally:
        guarded.release()


def test_sfr_refuses_a_grey_format_for_a_colour_array():
    grey = edge_region()
    with pytest.raises(talonvireo.InvalidInput):
        talonvireo.sfr(np.dstack([grey, grey, grey]), format=0x100)
    with pytest.raises(talonvireo.InvalidInput):
        talonvireo.sfr(grey.astype(np.uint16), format=0x100)


def test_measure_frame_refuses_uint8_and_other_dtypes():
    for dtype in (np.uint8, np.int16, np.uint32, np.float64):
        with pytest.raises(TypeError, match="uint16"):
            talonvireo.measure_frame(np.zeros((300, 400), dtype), member="talonvireoSFR_raw16")


def test_measure_frame_needs_a_member_and_a_known_one():
    frame = np.zeros((300, 400), np.uint16)
    with pytest.raises(TypeError):
        talonvireo.measure_frame(frame)
    with pytest.raises(talonvireo.InvalidInput, match="unknown member 'nope'"):
        talonvireo.measure_frame(frame, member="nope")
    with pytest.raises(talonvireo.Error):
        talonvireo.measure_frame(frame, member="nope")


def test_bad_numbers_are_refused_with_the_name_and_range():
    frame = np.zeros((300, 400), np.uint16)
    for divisor in (-1.0, float("nan"), float("inf")):
        with pytest.raises(talonvireo.InvalidInput, match="freq_divisor must be a finite number"):
            talonvireo.measure_frame(frame, member="talonvireoSFR_raw16", freq_divisor=divisor)
    for f in (-1.0, float("nan")):
        with pytest.raises(talonvireo.InvalidInput, match="frequencies must be finite"):
            talonvireo.sfr(edge_region(), frequencies=[0.1, f])


def test_custom_figure_is_none_unless_asked(rendered_chart):
    raw, _ = rendered_chart
    edges = talonvireo.measure_frame(raw, member="talonvireoSFR_raw10_HLX6C")
    assert all(e["sfr_custom"] is None for e in edges)
    # Beyond the measured table the figure does not exist: None, not inf.
    far = talonvireo.measure_frame(raw, member="talonvireoSFR_raw10_HLX6C", freq_divisor=0.2)
    assert all(e["sfr_custom"] is None for e in far)
    assert all(0.0 < e["sfr_quarter_nyquist"] < 1.2 for e in far)


def test_channels_are_named():
    grey = edge_region()
    assert [c["channel"] for c in talonvireo.sfr(grey)["channels"]] == ["grey"]
    bgr = np.dstack([grey, grey, grey])
    assert [c["channel"] for c in talonvireo.sfr(bgr)["channels"]] == ["B", "G", "R"]


def test_module_has_a_version():
    assert isinstance(talonvireo.__version__, str)
    assert [int(p) for p in talonvireo.__version__.split(".")] >= [0, 2, 0]


def edge_levels(sigma=0.8, angle_deg=5.0, size=100, dark=40.0, bright=200.0):
    """The levels of edge_region before rounding."""
    rows, cols = np.mgrid[0:size, 0:size].astype(float)
    c = (size - 1) / 2.0
    t = math.tan(math.radians(angle_deg))
    distance = (cols - c - t * (rows - c)) * math.cos(math.radians(angle_deg))
    erf = np.vectorize(math.erf)
    return dark + (bright - dark) * 0.5 * (1.0 + erf(distance / (sigma * math.sqrt(2.0))))


@pytest.mark.parametrize("tangent", [1 / 5, 1 / 2, 2 / 3])
def test_sfr_precise_reads_the_mtf50_at_simple_fraction_angles(tangent):
    angle = math.degrees(math.atan(tangent))
    region = np.round(edge_levels(sigma=0.8, angle_deg=angle) * 256).astype(np.uint16)
    curve = talonvireo.sfr(region, method="precise", frequencies=[0.25])
    assert curve["method"] == "precise" and curve["normal_frequency_axis"] is True
    (c,) = curve["channels"]
    assert c["mtf50"] == pytest.approx(gaussian_mtf50(0.8), rel=0.003)
    assert c["sfr_at"][0] == pytest.approx(math.exp(-2 * (math.pi * 0.8 * 0.25) ** 2), abs=0.003)
    assert c["kernel_sigma"] >= 0.2 and c["edge_angle"] == pytest.approx(angle, abs=0.02)


def test_sfr_per_channel_raw_measures_each_colour_plane():
    levels = edge_levels(sigma=0.9, angle_deg=7.0)
    gains = np.empty_like(levels)
    gains[0::2, 0::2] = 0.62  # red sites of an R G / G B mosaic
    gains[0::2, 1::2] = 1.0
    gains[1::2, 0::2] = 1.0
    gains[1::2, 1::2] = 0.78
    mosaic = np.round(levels * gains * 256).astype(np.uint16)
    curve = talonvireo.sfr(mosaic, format=0x020 + 1, method="precise", per_channel_raw=True)
    assert [c["channel"] for c in curve["channels"]] == ["R", "Gr", "Gb", "B"]
    for c in curve["channels"]:
        assert c["mtf50"] == pytest.approx(gaussian_mtf50(0.9), rel=0.01), c["channel"]


def test_sfr_refuses_an_unknown_method_and_misused_raw_planes():
    with pytest.raises(talonvireo.InvalidInput, match="method must be"):
        talonvireo.sfr(edge_region(), method="fast")
    with pytest.raises(talonvireo.InvalidInput, match="needs method='precise'"):
        talonvireo.sfr(edge_region(), format=0x011, per_channel_raw=True)
    with pytest.raises(talonvireo.InvalidInput, match="needs a Bayer format"):
        talonvireo.sfr(edge_region(), method="precise", per_channel_raw=True)


HLX6C_RAW10 = "talonvireoSFR_raw10_HLX6C"


def test_measure_files_returns_one_row_per_edge_and_one_per_failed_frame(frame_files):
    table = talonvireo.measure_files(frame_files, HLX6C_RAW10, width=4000, height=3000)
    assert list(table.columns[:5]) == ["file", "error", "warnings", "edge", "state"]
    measured = table[table["error"].isna()]
    assert len(measured) == 3 * 52
    assert set(measured["orientation"]) == {"tangential", "sagittal"}
    assert measured["height_percent"].between(0, 100).all()
    assert str(table["edge"].dtype) == "Int64"
    broken = table[table["file"] == frame_files[3]]
    assert len(broken) == 1 and "1000 bytes" in broken["error"].iloc[0]
    # The same frame twice reads the same figures.
    a = measured[measured["file"] == frame_files[0]].reset_index(drop=True)
    b = measured[measured["file"] == frame_files[1]].reset_index(drop=True)
    assert a.drop(columns="file").equals(b.drop(columns="file"))


def test_measure_files_reads_padded_lines_after_a_header(frame_files, tmp_path):
    words = np.fromfile(frame_files[0], dtype="<u2").reshape(3000, 4000)
    padded = np.zeros((3000, 4000 + 24), dtype="<u2")  # 48 padding bytes per line
    padded[:, :4000] = words
    path = tmp_path / "padded.raw"
    path.write_bytes(b"HDR" * 100 + padded.tobytes())
    table = talonvireo.measure_files([str(path)], HLX6C_RAW10, width=4000, height=3000,
                                     stride=2 * (4000 + 24), offset=300)
    plain = talonvireo.measure_files(frame_files[:1], HLX6C_RAW10, width=4000, height=3000)
    assert table["error"].isna().all() and len(table) == 52
    assert table.drop(columns="file").equals(plain.drop(columns="file"))
    # Without its layout the file is one row with the cause, naming the size it expected.
    wrong = talonvireo.measure_files([str(path)], HLX6C_RAW10, width=4000, height=3000)
    assert len(wrong) == 1 and "bytes" in wrong["error"].iloc[0]
    with pytest.raises(talonvireo.InvalidInput, match="stride"):
        talonvireo.measure_files([str(path)], HLX6C_RAW10, width=4000, height=3000, stride=100)


def test_measure_files_grades_against_limits_and_gives_units(frame_files, tmp_path):
    limits = tmp_path / "limits.toml"
    limits.write_text('[[zone]]\nname = "all"\nmax_height = 100\nmtf50 = 0.999\n')
    table = talonvireo.measure_files(frame_files[:1], HLX6C_RAW10, width=4000, height=3000,
                                     limits=str(limits), pixel_pitch="1.12um")
    assert (~table["pass"]).all()
    assert table["failed_limit"].str.startswith("mtf50 ").all()
    assert (table["mtf50_lp_per_mm"] == table["mtf50"] * 1000 / 1.12).all()
    with pytest.raises(talonvireo.InvalidInput, match="unknown key"):
        limits.write_text('[[zone]]\nname = "all"\nmax_height = 100\nmtf = 0.3\n')
        talonvireo.measure_files(frame_files, HLX6C_RAW10, width=4000, height=3000,
                                 limits=str(limits))


def test_measure_files_over_a_dask_cluster_gives_the_single_process_table(frame_files):
    pd = pytest.importorskip("pandas")
    distributed = pytest.importorskip("distributed")
    single = talonvireo.measure_files(frame_files, HLX6C_RAW10, width=4000, height=3000)
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as cluster, \
            distributed.Client(cluster) as client:
        parts = client.gather(client.map(
            lambda path: talonvireo.measure_files([path], HLX6C_RAW10, width=4000, height=3000),
            frame_files))
    spread = pd.concat(parts, ignore_index=True)
    pd.testing.assert_frame_equal(spread, single)


# ---- measure_files: rows, paths, options and verdicts ----

def test_measure_files_keeps_each_files_figures_on_its_own_rows_after_a_failure(frame_files):
    pd = pytest.importorskip("pandas")
    good, broken = frame_files[0], frame_files[3]
    alone = talonvireo.measure_files([good], HLX6C_RAW10, width=4000, height=3000)
    table = talonvireo.measure_files([broken, good], HLX6C_RAW10, width=4000, height=3000)
    assert len(table) == 1 + 52
    failed = table[table["file"] == broken]
    assert len(failed) == 1
    # The failed frame's row holds its cause and nothing of the frame after it.
    assert failed.drop(columns=["file", "error", "warnings"]).isna().all(axis=None)
    own = table[table["file"] == good].reset_index(drop=True)
    pd.testing.assert_frame_equal(own, alone)


def test_measure_files_takes_one_path_as_one_file(frame_files):
    pd = pytest.importorskip("pandas")
    listed = talonvireo.measure_files([frame_files[0]], HLX6C_RAW10, width=4000, height=3000)
    for one in (frame_files[0], pathlib.Path(frame_files[0]), os.fsencode(frame_files[0])):
        table = talonvireo.measure_files(one, HLX6C_RAW10, width=4000, height=3000)
        pd.testing.assert_frame_equal(table, listed)


@pytest.mark.parametrize("option, value", [
    ("roi_size", 0), ("roi_size", 101), ("mark_search_size", 0), ("mark_search_size", 10**6),
    ("width", -1), ("height", -3000), ("height", 0), ("offset", -1), ("stride", -2),
    ("stride", 100), ("packing", "mipi9"), ("method", "fast"), ("per_channel_raw", True),
    ("pixel_pitch", "1.12"), ("pixel_pitch", "500um")])
def test_measure_files_refuses_bad_options_by_name_before_reading_a_frame(frame_files, option,
                                                                         value):
    taken = []

    def paths():
        taken.append(True)
        yield frame_files[0]

    options = {"width": 4000, "height": 3000, option: value}
    with pytest.raises(talonvireo.InvalidInput, match=rf"^{option} (must|needs) "):
        talonvireo.measure_files(paths(), HLX6C_RAW10, **options)
    assert not taken


def test_measure_files_needs_a_divisor_for_custom_limits_by_name(frame_files, tmp_path):
    limits = tmp_path / "custom.toml"
    limits.write_text('[[zone]]\nname = "all"\nmax_height = 100\nsfr_custom = 0.1\n')
    with pytest.raises(talonvireo.InvalidInput, match="^freq_divisor "):
        talonvireo.measure_files(frame_files, HLX6C_RAW10, width=4000, height=3000,
                                 limits=str(limits))


@pytest.mark.parametrize("shape", [(100000, 100000), (46341, 46341), (1, 2**31), (2**31, 1)])
def test_measure_frame_refuses_a_frame_too_large_before_copying_it(shape):
    # A view of one sample: copying it into a frame would need gigabytes (or cannot be done).
    huge = np.lib.stride_tricks.as_strided(np.zeros(1, np.uint16), shape=shape, strides=(0, 0))
    with pytest.raises(talonvireo.InvalidInput, match="at most 2147483647 pixels"):
        talonvireo.measure_frame(huge, member="talonvireoSFR_raw16")
    wide = np.broadcast_to(np.zeros(1, np.uint16), shape)
    with pytest.raises(talonvireo.InvalidInput, match="at most 2147483647 pixels"):
        talonvireo.measure_frame(wide, member="talonvireoSFR_raw16")


def test_measure_frame_names_the_region_parameters():
    frame = np.zeros((300, 400), np.uint16)
    with pytest.raises(talonvireo.InvalidInput, match="^roi_size must be 1 .. mark_search_size"):
        talonvireo.measure_frame(frame, member="talonvireoSFR_raw16", roi_size=120,
                                 mark_search_size=100)
    with pytest.raises(talonvireo.InvalidInput, match=r"^mark_search_size must be 1 .. 200"):
        talonvireo.measure_frame(frame, member="talonvireoSFR_raw16", mark_search_size=201)


@pytest.mark.parametrize("broken_first", [True, False])
def test_measure_files_fails_a_frame_it_cannot_measure(frame_files, tmp_path, broken_first):
    limits = tmp_path / "lenient.toml"
    limits.write_text('[[zone]]\nname = "all"\nmax_height = 100\nsfr_quarter_nyquist = 0.1\n')
    good, broken = frame_files[0], frame_files[3]
    files = [broken, good] if broken_first else [good, broken]
    table = talonvireo.measure_files(files, HLX6C_RAW10, width=4000, height=3000,
                                     limits=str(limits))
    assert table["pass"].dtype == bool
    assert table.loc[table["file"] == broken, "pass"].tolist() == [False]
    assert table.loc[table["file"] == good, "pass"].all()
    assert len(table) == 53


# ---- verdicts: clipped and dim frames ----

LENIENT = """[[zone]]
name = "everywhere"
max_height = 100
sfr_quarter_nyquist = 0.5
"""


def test_measure_files_fails_a_clipped_frame_and_warns_of_it(rendered_chart, tmp_path):
    # Over-exposed twice: the light side clips, the edges read sharper than they are.
    raw, _ = rendered_chart
    bright = np.minimum(raw.astype(np.uint32) * 5 // 2, 1023).astype("<u2")
    path = tmp_path / "bright.raw"
    bright.tofile(path)
    limits = tmp_path / "lenient.toml"
    limits.write_text(LENIENT)
    with pytest.warns(UserWarning, match="clipped"):
        table = talonvireo.measure_files(str(path), member="talonvireoSFR_raw10_HLX6C",
                                         width=4000, height=3000, limits=str(limits))
    assert len(table) == 52
    assert not table["pass"].any()
    assert (table["flags"] == "clipped").all()
    assert (table["failed_limit"] == "clipped").all()
    assert table["warnings"].str.contains("clipped").all()
    with pytest.warns(UserWarning, match="accepted as asked"):
        accepted = talonvireo.measure_files(str(path), member="talonvireoSFR_raw10_HLX6C",
                                            width=4000, height=3000, limits=str(limits),
                                            accept_clipped=True)
    assert accepted["pass"].all()


def test_a_dim_frames_warning_travels_with_its_failed_row(tmp_path):
    # Never measured (no chart in it), yet what was found before the failure is kept.
    path = tmp_path / "dim.raw"
    np.full((3000, 4000), 20, dtype="<u2").tofile(path)
    with pytest.warns(UserWarning, match="below 1/16"):
        table = talonvireo.measure_files([str(path)], member="talonvireoSFR_raw10_HLX6C",
                                         width=4000, height=3000)
    assert len(table) == 1
    assert table["error"][0].startswith("chart not located")
    assert "below 1/16 of 10-bit full scale" in table["warnings"][0]


def test_a_tracker_gives_measure_frames_figures_and_says_when_it_located(rendered_chart):
    raw, _ = rendered_chart
    member = "talonvireoSFR_raw10_HLX6C"
    tracker = talonvireo.Tracker(member, freq_divisor=4.0)
    whole = talonvireo.measure_frame(raw, member, freq_divisor=4.0)
    first = tracker.measure(raw)
    assert tracker.relocated
    second = tracker.measure(raw.copy())
    assert not tracker.relocated
    assert first == whole and second == whole  # bit for bit, dict for dict


def test_a_tracker_refuses_what_measure_frame_refuses():
    with pytest.raises(talonvireo.InvalidInput, match="unknown member"):
        talonvireo.Tracker("nope")
    tracker = talonvireo.Tracker("talonvireoSFR_raw10_HLX6C")
    with pytest.raises(TypeError, match="uint16"):
        tracker.measure(np.zeros((10, 10), np.uint8))
    with pytest.raises(talonvireo.ChartNotLocated):
        tracker.measure(np.full((600, 800), 300, np.uint16))
