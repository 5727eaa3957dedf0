"""Through focus: a rendered stack with a known tilted, curved and astigmatic image surface,
measured by talonvireo.through_focus and `talonvireo-sfr focus`, and the live feed of
`focus --live`, all against the renderer's truth."""
import json
import math
import os
import subprocess

import numpy as np
import pytest

import talonvireo

MEMBER = "talonvireoSFR_raw10_HLX6C"
# The image surface the stack is rendered through: best focus 2 um at the centre, slopes
# 3 and -2 um/mm, field curvature 0.5 um/mm^2, astigmatism (T - S) 4 um at the corners.
SURFACE = {"best": 2.0, "sx": 3.0, "sy": -2.0, "c": 0.5, "astigmatism": 4.0}


def tool():
    return os.environ["TALONVIREO_SFR_TOOL"]


def render(*args):
    subprocess.run([tool(), "render", *map(str, args)], check=True, capture_output=True)


def render_stack(sweep, folder):
    """HLX6C frames (10-bit Bayer R G, read noise 2 and shot noise 8 at full scale) at the
    sweep's positions through SURFACE, and their truth."""
    prefix = str(folder / "sweep")
    render("--chart", "HLX6C", "--bits", 10, "--bayer", "--read-noise", 2, "--shot-noise", 8,
           "--focus-stack", sweep, "--best-focus", SURFACE["best"],
           "--focus-slope-x", SURFACE["sx"], "--focus-slope-y", SURFACE["sy"],
           "--focus-curvature", SURFACE["c"], "--astigmatism", SURFACE["astigmatism"],
           "--defocus-gain", 0.1, "--pixel-pitch", "1.4um", "--out", prefix)
    with open(prefix + ".json") as f:
        truth = json.load(f)
    return prefix, truth


@pytest.fixture(scope="session")
def stack(tmp_path_factory):
    """17 positions from -20 to 20 um."""
    return render_stack("-20:20:2.5", tmp_path_factory.mktemp("stack"))


@pytest.fixture(scope="session", params=["17", "9"])
def any_stack(request, stack, tmp_path_factory):
    """17 positions, and 9 twice as far apart."""
    if request.param == "17":
        return stack
    return render_stack("-20:20:5", tmp_path_factory.mktemp("stack9"))


def exact_surface(truth):
    """The least-squares surface through the true best foci at the true places."""
    edges = truth["edges"]
    x = np.array([e["x_mm"] for e in edges])
    y = np.array([e["y_mm"] for e in edges])
    z = np.array([e["best_focus_z_um"] for e in edges])
    a = np.column_stack([np.ones_like(x), x, y, x * x + y * y])
    z0, sx, sy, c = np.linalg.lstsq(a, z, rcond=None)[0]
    arcmin = lambda s: math.degrees(math.atan(s / 1000.0)) * 60.0
    return {"best_focus_z_um": z0, "tilt_about_y_arcmin": arcmin(sx),
            "tilt_about_x_arcmin": arcmin(sy), "curvature_um_per_mm2": c}


def check_against_truth(result, truth):
    edges = result["edges"].set_index("edge")
    true = {e["edge"]: e["best_focus_z_um"] for e in truth["edges"]}
    assert len(edges) == len(true)
    errors = [abs(edges.loc[k, "best_focus_z_um"] - z) for k, z in true.items()]
    assert max(errors) < 0.5, f"worst best-focus error {max(errors):.3f} um"
    exact = exact_surface(truth)
    surface = result["surface"]
    for key in ("tilt_about_x_arcmin", "tilt_about_y_arcmin"):
        assert abs(surface[key] - exact[key]) < 0.2, (key, surface[key], exact[key])
    assert abs(surface["curvature_um_per_mm2"] - exact["curvature_um_per_mm2"]) < 0.05
    assert abs(surface["best_focus_z_um"] - exact["best_focus_z_um"]) < 0.5
    return max(errors)


def test_a_member_stack_finds_every_edges_best_focus_and_the_surface(any_stack):
    prefix, truth = any_stack
    result = talonvireo.through_focus(prefix + ".csv", MEMBER, pixel_pitch="1.4um",
                                      width=4000, height=3000)
    check_against_truth(result, truth)
    frames = result["frames"]
    assert list(frames["relocated"]) == [True] + [False] * (len(frames) - 1)
    assert frames["error"].isna().all()
    # Astigmatism per zone: the tangential edges' mean best focus less the sagittal ones', as
    # the truth gives it for the same edges.
    edges = result["edges"].set_index("edge")
    edges["true_z"] = [next(e["best_focus_z_um"] for e in truth["edges"] if e["edge"] == k)
                       for k in edges.index]
    zones = result["zones"].set_index("zone")
    for zone in ("centre", "middle"):
        mine = edges[edges["zone"] == zone]
        t = mine[mine["orientation"] == "tangential"]["true_z"].mean()
        s = mine[mine["orientation"] == "sagittal"]["true_z"].mean()
        assert abs(zones.loc[zone, "astigmatism_um"] - (t - s)) < 0.3, zone
    assert zones.loc["middle", "astigmatism_um"] > 0.4


def test_a_chart_description_stack_reads_the_same_surface(any_stack):
    prefix, truth = any_stack
    result = talonvireo.through_focus(prefix + ".csv", chart="HLX6C", pixel_pitch="1.4um",
                                      width=4000, height=3000, bits=10)
    check_against_truth(result, truth)


def test_the_command_line_gives_what_python_gives(stack):
    prefix, _ = stack
    done = subprocess.run([tool(), "focus", "--member", MEMBER, "--width", "4000", "--height",
                           "3000", "--pixel-pitch", "1.4um", "--z-list", prefix + ".csv",
                           "--json"], check=True, capture_output=True, text=True)
    doc = json.loads(done.stdout)
    result = talonvireo.through_focus(prefix + ".csv", MEMBER, pixel_pitch="1.4um",
                                      width=4000, height=3000)
    assert doc["surface"] == pytest.approx(result["surface"])
    assert [e["best_focus_z_um"] for e in doc["edges"]] == list(
        result["edges"]["best_focus_z_um"])
    assert len(result["curves"]) == sum(len(e["curve"]) for e in doc["edges"])


def test_through_focus_refuses_what_it_cannot_study(stack):
    prefix, _ = stack
    with pytest.raises(talonvireo.InvalidInput, match="one of them"):
        talonvireo.through_focus(prefix + ".csv", pixel_pitch="1.4um")
    with pytest.raises(talonvireo.InvalidInput, match="not chart='auto'"):
        talonvireo.through_focus(prefix + ".csv", chart="auto", pixel_pitch="1.4um")
    with pytest.raises(talonvireo.InvalidInput, match="three frames"):
        talonvireo.through_focus([(prefix + "-00.raw", 0.0)], MEMBER, pixel_pitch="1.4um",
                                 width=4000, height=3000)
    with pytest.raises(talonvireo.InvalidInput, match="pairs"):
        talonvireo.through_focus([prefix + "-00.raw"], MEMBER, pixel_pitch="1.4um",
                                 width=4000, height=3000)


def live(frames, *extra):
    """Pipes raw bytes into `focus --live` and returns its status and JSON lines."""
    done = subprocess.run([tool(), "focus", "--live", "--member", MEMBER, "--width", "4000",
                           "--height", "3000", *extra], input=frames, capture_output=True)
    lines = [json.loads(line) for line in done.stdout.decode().splitlines()]
    return done.returncode, lines, done.stderr.decode()


def test_live_mode_writes_a_line_per_piped_frame_as_the_member_measures_it(stack):
    prefix, _ = stack
    frames = [np.fromfile(f"{prefix}-{i:02d}.raw", dtype="<u2").reshape(3000, 4000)
              for i in (4, 8, 12)]
    status, lines, err = live(b"".join(f.tobytes() for f in frames))
    assert status == 0, err
    assert [line["frame"] for line in lines] == [0, 1, 2]
    assert [line["relocated"] for line in lines] == [True, False, False]
    # Each line is what a tracker fed the same frames gives; the first, located afresh, is the
    # member's own figures.
    tracker = talonvireo.Tracker(MEMBER)
    for frame, line in zip(frames, lines):
        tracked = tracker.measure(frame)
        assert [e["sfr"] for e in line["edges"]] == [e["sfr_quarter_nyquist"] for e in tracked]
        middle = next(z for z in line["zones"] if z["zone"] == "middle")
        assert middle["tangential_edges"] > 0 and middle["sagittal_edges"] > 0
    whole = talonvireo.measure_frame(frames[0], MEMBER)
    assert [e["sfr"] for e in lines[0]["edges"]] == [e["sfr_quarter_nyquist"] for e in whole]
    # Frame 8 (z 0) lies nearest the centre's best focus (2 um): the centre reads more there
    # than 10 um either side.
    centre = [line["zones"][0] for line in lines]
    assert centre[1]["sagittal_sfr"] > max(centre[0]["sagittal_sfr"], centre[2]["sagittal_sfr"])


def test_live_mode_ends_a_short_last_frame_with_an_error_line(stack):
    prefix, _ = stack
    frame = open(f"{prefix}-08.raw", "rb").read()
    status, lines, _ = live(frame + frame[:1000])
    assert status == 4
    assert len(lines) == 2 and "error" not in lines[0]
    assert lines[1] == {"kind": "focus-frame", "frame": 1,
                        "error": "the input ended 1000 bytes into a 24000000-byte frame"}


def test_live_mode_goes_on_past_a_frame_it_cannot_measure(stack):
    prefix, _ = stack
    frame = open(f"{prefix}-08.raw", "rb").read()
    blank = np.full((3000, 4000), 300, "<u2").tobytes()
    status, lines, _ = live(frame + blank + frame)
    assert status == 0
    assert "error" in lines[1] and "error" not in lines[2]
    assert lines[2]["relocated"]


def test_live_mode_with_nothing_piped_writes_nothing():
    status, lines, _ = live(b"")
    assert status == 0 and lines == []


def test_live_mode_refuses_frame_files_beside_the_feed(stack):
    prefix, _ = stack
    done = subprocess.run([tool(), "focus", "--live", "--member", MEMBER, "--width", "4000",
                           "--height", "3000", prefix + "-00.raw@0"], capture_output=True,
                          text=True, input="")
    assert done.returncode == 2 and "--live reads its frames from standard input" in done.stderr


def test_live_mode_measures_a_chart_description_frame_by_frame(stack):
    prefix, truth = stack
    frame = open(f"{prefix}-08.raw", "rb").read()
    done = subprocess.run([tool(), "focus", "--live", "--chart", "HLX6C", "--bits", "10",
                           "--width", "4000", "--height", "3000"], input=frame * 2,
                          capture_output=True)
    assert done.returncode == 0, done.stderr.decode()
    lines = [json.loads(line) for line in done.stdout.decode().splitlines()]
    assert [line["relocated"] for line in lines] == [True, True]
    names = {e["name"] for e in truth["edges"]}
    for line in lines:
        assert {e["name"] for e in line["edges"]} == names
        assert all(e["state"] == "measured" and e["sfr"] > 0.3 for e in line["edges"])
    assert lines[0]["edges"] == lines[1]["edges"]


def test_a_frame_that_cannot_be_read_is_reported_and_the_rest_still_studied(stack, tmp_path):
    prefix, truth = stack
    frames = [(f"{prefix}-{i:02d}.raw", -20.0 + 2.5 * i) for i in range(17)]
    frames[5] = (str(tmp_path / "missing.raw"), frames[5][1])
    short = tmp_path / "short.raw"
    short.write_bytes(b"\0" * 1000)
    frames[11] = (str(short), frames[11][1])
    result = talonvireo.through_focus(frames, MEMBER, pixel_pitch="1.4um", width=4000,
                                      height=3000)
    errors = result["frames"]["error"]
    assert errors.notna().tolist() == [i in (5, 11) for i in range(17)]
    assert "cannot read" in errors[5] and "holds 1000 bytes, not 24000000" in errors[11]
    assert len(result["edges"]) == 52
    assert result["curves"].groupby("edge").size().eq(15).all()
    check_against_truth(result, truth)
