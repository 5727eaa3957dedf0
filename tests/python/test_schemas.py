"""Every JSON document talonvireo-sfr writes, from real runs on rendered frames, against the
schemas in schema/ (draft 2020-12, python3-jsonschema)."""
import copy
import json
import os
import sqlite3
import subprocess
import sys

import numpy as np
import pytest

import jsonschema  # python3-jsonschema (scripts/setup.sh)

MEMBER = "talonvireoSFR_raw10_HLX6C"
HERE = os.path.dirname(os.path.abspath(__file__))
SCHEMA_DIR = os.environ.get("TALONVIREO_SCHEMA_DIR", os.path.join(HERE, "..", "..", "schema"))
LENIENT = os.path.join(HERE, "..", "data", "limits", "lenient.toml")
SCHEMAS = ["frame", "region", "chart-truth", "batch-row", "batch-run-options", "failure",
           "chart-description", "description-truth", "focus"]


def tool():
    return os.environ["TALONVIREO_SFR_TOOL"]


def strict_json(text):
    """The document, refusing what strict JSON has not: NaN and the infinities."""
    def refuse(name):
        raise ValueError(f"not strict JSON: {name}")
    return json.loads(text, parse_constant=refuse)


def load_schema(name):
    with open(os.path.join(SCHEMA_DIR, name + ".schema.json")) as f:
        return json.load(f)


def validator(name):
    """A validator for one schema, with every schema of the folder at hand for its $refs."""
    schema = load_schema(name)
    everything = [load_schema(n) for n in SCHEMAS]
    cls = jsonschema.validators.validator_for(schema)
    try:
        from referencing import Registry, Resource
    except ImportError:  # jsonschema before 4.18 (Debian 12 has 4.10)
        resolver = jsonschema.RefResolver.from_schema(
            schema, store={s["$id"]: s for s in everything})
        return cls(schema, resolver=resolver)
    registry = Registry().with_resources(
        (s["$id"], Resource.from_contents(s)) for s in everything)
    return cls(schema, registry=registry)


def check(name, document):
    errors = sorted(validator(name).iter_errors(document), key=lambda e: list(e.path))
    assert not errors, "\n".join(
        f"{'/'.join(map(str, e.absolute_path))}: {e.message}" for e in errors[:10])


def refused(name, document):
    return not validator(name).is_valid(document)


def run(*args, status=(0,)):
    done = subprocess.run([tool(), *map(str, args)], capture_output=True, text=True)
    assert done.returncode in status, done.stderr
    return done


def render(folder, name, *args):
    prefix = str(folder / name)
    run("render", *args, "--out", prefix)
    return prefix


@pytest.fixture(scope="module")
def scratch(tmp_path_factory):
    return tmp_path_factory.mktemp("schemas")


@pytest.fixture(scope="module")
def crop(scratch):
    """HLX6C rendered 3490 px wide: the member fails on the two right-hand edges."""
    return render(scratch, "crop", "--project", "HLX6C", "--bits", "10", "--bayer", "--sigma",
                  "0.8", "--width", "3490") + ".raw"


@pytest.fixture(scope="module")
def regions(scratch):
    """One edge region as 8-bit grey (raw and PNG) and as a 16-bit Bayer R G mosaic."""
    place = ["--width", "80", "--height", "80", "--shift-x", "-1841", "--shift-y", "-1576"]
    grey = render(scratch, "reg", "--project", "HLX6C", "--bits", "8", "--sigma", "0.8", *place)
    mosaic = render(scratch, "breg", "--project", "HLX6C", "--bits", "16", "--bayer",
                    "--sigma", "0.8", *place)
    # The grey region as a colour image (binary PPM), which OpenCV reads as B, G, R.
    pixels = np.fromfile(grey + ".raw", dtype=np.uint8).reshape(80, 80)
    colour = scratch / "reg.ppm"
    colour.write_bytes(b"P6\n80 80\n255\n" + np.dstack([pixels] * 3).tobytes())
    return {"grey_raw": grey + ".raw", "grey_png": grey + ".png", "bayer": mosaic + ".raw",
            "colour": str(colour)}


def test_every_schema_is_a_draft_2020_12_schema_with_its_own_id():
    names = sorted(f[:-len(".schema.json")] for f in os.listdir(SCHEMA_DIR)
                   if f.endswith(".schema.json"))
    assert names == sorted(SCHEMAS)
    for name in SCHEMAS:
        schema = load_schema(name)
        assert schema["$schema"] == "https://json-schema.org/draft/2020-12/schema"
        assert schema["$id"].endswith("/" + name + ".schema.json")
        jsonschema.Draft202012Validator.check_schema(schema)


# ---- measure --json: the frame report ----

FRAME_OPTIONS = {
    "plain": ([], (0,)),
    "custom": (["--freq-divisor", "3"], (0,)),
    "precise": (["--method", "precise", "--per-channel-raw", "--freq-divisor", "6",
                 "--pixel-pitch", "1.12um"], (0,)),
    "pitch": (["--pixel-pitch", "0.00112mm"], (0,)),
    "min-sfr": (["--min-sfr", "0.99"], (1,)),
    "limits": (["--limits", LENIENT, "--pixel-pitch", "1.4um"], (0,)),
}


@pytest.mark.parametrize("case", sorted(FRAME_OPTIONS))
def test_measure_json_is_a_frame_document(frame_files, case):
    options, status = FRAME_OPTIONS[case]
    done = run("measure", frame_files[0], "--width", 4000, "--height", 3000, "--member", MEMBER,
               "--json", *options, status=status)
    doc = strict_json(done.stdout)
    check("frame", doc)
    assert doc["kind"] == "frame" and len(doc["edges"]) == 52
    assert "partial" not in doc


def test_measure_json_graded_against_failing_limits_names_each_failed_limit(frame_files,
                                                                             tmp_path):
    limits = tmp_path / "strict.toml"
    limits.write_text('[[zone]]\nname = "centre"\nmax_height = 30\nsfr_quarter_nyquist = 0.99\n'
                      '[[zone]]\nname = "rest"\nmax_height = 100\nmtf50 = 0.01\n')
    done = run("measure", frame_files[2], "--width", 4000, "--height", 3000, "--member", MEMBER,
               "--json", "--limits", limits, status=(1,))
    doc = strict_json(done.stdout)
    check("frame", doc)
    verdicts = {e["pass"] for e in doc["edges"]}
    assert verdicts == {True, False} and doc["failures"] > 0


@pytest.mark.parametrize("options", [
    [],
    ["--method", "precise", "--per-channel-raw", "--freq-divisor", "4", "--pixel-pitch",
     "1.12um", "--limits", LENIENT],
    ["--min-sfr", "0.5"],
])
def test_measure_partial_json_is_a_frame_document_with_each_edges_state(crop, options):
    done = run("measure", crop, "--width", 3490, "--height", 3000, "--member", MEMBER,
               "--partial", "--json", *options, status=(6,))
    doc = strict_json(done.stdout)
    check("frame", doc)
    assert doc["partial"]["member_exit_status"] == 6
    states = {e["state"] for e in doc["edges"]}
    assert "off the frame" in states and "measured" in states


def test_demo_json_is_a_frame_document_with_the_truth(tmp_path):
    prefix = tmp_path / "demo"
    run("demo", "--project", "HLX6C", "--out", prefix)
    with open(str(prefix) + ".json") as f:
        doc = strict_json(f.read())
    check("frame", doc)
    assert doc["input"] is None and all("true_x" in e for e in doc["edges"])


# ---- roi --json: the region report ----

def test_roi_json_is_a_region_document(regions, frame_files):
    runs = [
        [regions["grey_png"]],
        [regions["grey_raw"], "--format", "0x100", "--width", 80, "--height", 80,
         "--freq-divisor", 3, "--normal-axis"],
        [regions["colour"], "--method", "precise"],
        [regions["bayer"], "--format", "0x021", "--width", 80, "--height", 80,
         "--method", "precise", "--per-channel-raw", "--freq-divisor", 5],
        [frame_files[0], "--width", 4000, "--height", 3000, "--format", "0x021", "--bits", 10,
         "--road", "malvar", "--rect", "1841,1576,80,80"],
    ]
    channels = []
    for args in runs:
        doc = strict_json(run("roi", *args, "--json").stdout)
        check("region", doc)
        channels.append([c["channel"] for c in doc["channels"]])
    assert channels == [["grey"], ["grey"], ["B", "G", "R"], ["R", "Gr", "Gb", "B"], ["grey"]]


# ---- render: the chart truth ----

def test_chart_truth_json_is_a_chart_truth_document(rendered_chart):
    _, truth = rendered_chart
    check("chart-truth", truth)


@pytest.mark.parametrize("project", ["K74T16BX", "K83P09BQ", "K31R22BX"])
def test_every_projects_chart_truth_is_a_chart_truth_document(tmp_path, project):
    prefix = render(tmp_path, "chart", "--project", project, "--bits", "14", "--width", "640",
                    "--height", "480", "--sigma", "1.3")
    with open(prefix + ".json") as f:
        check("chart-truth", strict_json(f.read()))


# ---- batch: JSON Lines rows and the run's options ----

@pytest.mark.parametrize("options", [
    ["--limits", LENIENT],
    ["--method", "precise", "--per-channel-raw", "--freq-divisor", "4", "--pixel-pitch", "1.12um"],
])
def test_batch_rows_and_run_options_follow_their_schemas(frame_files, tmp_path, options):
    lines, db = tmp_path / "tray.jsonl", tmp_path / "tray.sqlite"
    run("batch", *frame_files, "--member", MEMBER, "--width", 4000, "--height", 3000,
        "--jobs", 2, "--jsonl", lines, "--db", db, "--quiet", *options, status=(1,))
    with open(lines) as f:
        rows = [strict_json(line) for line in f]
    assert len(rows) == 4
    for row in rows:
        check("batch-row", row)
    failed = [r for r in rows if r["status"] != "measured"]
    assert len(failed) == 1 and failed[0]["exit_status"] == 4 and "edges" not in failed[0]
    con = sqlite3.connect(db)
    (recorded,) = con.execute("SELECT options FROM runs").fetchone()
    con.close()
    check("batch-run-options", strict_json(recorded))


# ---- failing runs with --json ----

@pytest.mark.parametrize("chart", ["grid", "HLX6C"])
def test_a_rendered_descriptions_truth_is_a_description_truth_document(tmp_path, chart):
    prefix = str(tmp_path / "described")
    subprocess.run([tool(), "render", "--chart", chart, "--k1", "-0.05", "--bits", "8",
                    "--width", "1000", "--height", "750", "--out", prefix], check=True,
                   capture_output=True)
    with open(prefix + ".json") as f:
        truth = strict_json(f.read())
    check("description-truth", truth)
    assert len(truth["edges"]) == (432 if chart == "grid" else 52)


@pytest.mark.parametrize("focus", [["--focus-z", "7.5"], ["--focus-stack", "-4:4:4"]])
def test_a_defocused_descriptions_truth_is_a_description_truth_document(tmp_path, focus):
    prefix = str(tmp_path / "defocused")
    subprocess.run([tool(), "render", "--chart", "HLX6C", "--bits", "8", "--width", "1000",
                    "--height", "750", *focus, "--astigmatism", "3", "--focus-slope-x", "2",
                    "--out", prefix], check=True, capture_output=True)
    with open(prefix + ".json") as f:
        truth = strict_json(f.read())
    check("description-truth", truth)
    stack = focus[0] == "--focus-stack"
    assert ("positions_um" in truth["focus"]) == stack
    assert ("lens_z_um" in truth["focus"]) != stack
    assert all("best_focus_z_um" in e and "x_mm" in e for e in truth["edges"])
    # The schema tells a document with the model from one without it.
    del truth["focus"]
    assert list(validator("description-truth").iter_errors(truth))


def test_focus_json_and_live_lines_follow_the_focus_schema(tmp_path):
    prefix = str(tmp_path / "sweep")
    subprocess.run([tool(), "render", "--chart", "HLX6C", "--bits", "10", "--bayer",
                    "--focus-stack", "-10:10:5", "--focus-slope-x", "2", "--out", prefix],
                   check=True, capture_output=True)
    head = ["--member", "talonvireoSFR_raw10_HLX6C", "--width", "4000", "--height", "3000"]
    study = subprocess.run([tool(), "focus", *head, "--pixel-pitch", "1.4um", "--z-list",
                            prefix + ".csv", "--json"], capture_output=True, text=True)
    assert study.returncode == 0, study.stderr
    check("focus", strict_json(study.stdout))
    with open(prefix + "-02.raw", "rb") as f:
        frame = f.read()
    blank = bytes(len(frame))
    feed = subprocess.run([tool(), "focus", "--live", *head], input=frame + blank + frame[:10],
                          capture_output=True)
    lines = [strict_json(line) for line in feed.stdout.decode().splitlines()]
    assert len(lines) == 3 and "edges" in lines[0] and "error" in lines[1] and "error" in lines[2]
    for line in lines:
        check("focus", line)
    assert refused("focus", {**lines[0], "error": "both"})


def test_measure_chart_json_is_a_frame_document(frame_files):
    run = subprocess.run([tool(), "measure", frame_files[0], "--width", "4000", "--height",
                          "3000", "--bits", "10", "--chart", "HLX6C", "--json"],
                         capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    doc = strict_json(run.stdout)
    check("frame", doc)
    assert [e["name"] for e in doc["edges"]][:2] == ["L1-01", "L1-02"]


def test_a_failing_measure_writes_a_failure_document(frame_files):
    done = run("measure", frame_files[3], "--width", 4000, "--height", 3000, "--member", MEMBER,
               "--json", status=(4,))
    doc = strict_json(done.stdout)
    check("failure", doc)
    assert doc["exit_status"] == 4 and doc["input"] == frame_files[3]


def test_a_failing_roi_writes_a_failure_document(tmp_path):
    flat = tmp_path / "flat.raw"
    flat.write_bytes(bytes([120]) * 80 * 80)
    done = run("roi", flat, "--format", "0x100", "--width", 80, "--height", 80, "--json",
               status=(7,))
    doc = strict_json(done.stdout)
    check("failure", doc)
    assert doc["kind"] == "region" and doc["exit_status"] == 7


# ---- the schemas refuse what the tool must never write ----

@pytest.fixture(scope="module")
def partial_report(crop):
    done = run("measure", crop, "--width", 3490, "--height", 3000, "--member", MEMBER,
               "--partial", "--json", "--method", "precise", "--freq-divisor", "4",
               "--limits", LENIENT, status=(6,))
    return strict_json(done.stdout)


def mutated(doc, change):
    doc = copy.deepcopy(doc)
    change(doc)
    return doc


def test_the_frame_schema_refuses_what_the_tool_never_writes(partial_report):
    check("frame", partial_report)
    edge = next(i for i, e in enumerate(partial_report["edges"]) if e["state"] == "measured")
    off = next(i for i, e in enumerate(partial_report["edges"]) if e["state"] == "off the frame")
    changes = {
        "an unknown key": lambda d: d.update(colour="blue"),
        "an unknown edge key": lambda d: d["edges"][edge].update(sfr=0.5),
        "a figure as text": lambda d: d["edges"][edge].update(sfr_quarter_nyquist="0.5"),
        "a missing head key": lambda d: d.pop("tool_version"),
        "another schema version": lambda d: d.update(schema_version=1),
        "an edge without its state": lambda d: d["edges"][edge].pop("state"),
        "a custom figure missing": lambda d: d["edges"][edge].pop("sfr_custom"),
        "a custom figure without a divisor": lambda d: d.pop("freq_divisor"),
        "a located edge without a centre": lambda d: d["edges"][off].update(x=None),
        "a refused edge without its reason": lambda d: d["edges"][edge].update(
            state="refused by the SFR"),
        "a failed edge without its limit": lambda d: d["edges"][edge].update(
            {"pass": False, "failed_limit": None}),
        "limits without a verdict": lambda d: d["edges"][edge].pop("pass"),
        "an error without its exit status": lambda d: (d.pop("exit_status", None),
                                                       d.update(error="failed")),
        "an unknown orientation": lambda d: d["edges"][edge].update(orientation="x"),
        "flags that are not text": lambda d: d["edges"][edge].update(flags=3),
        "warnings that are not a list": lambda d: d.update(warnings="clipped"),
    }
    accepted = [what for what, change in changes.items()
                if not refused("frame", mutated(partial_report, change))]
    assert not accepted


def test_the_batch_row_and_failure_schemas_refuse_mixed_documents(partial_report):
    head = {k: partial_report[k] for k in ("schema_version", "tool_version", "kind", "input")}
    failure = dict(head, error="cannot read x.raw", exit_status=3, warnings=[])
    check("failure", failure)
    assert refused("failure", dict(failure, exit_status=0))
    assert refused("failure", dict(failure, edges=[]))
    assert refused("failure", {k: v for k, v in failure.items() if k != "error"})
    record = {"status": "unreadable file", "exit_status": 3, "message": "cannot read x.raw",
              "duration_ms": 1.5, "file_size_bytes": 0, "modified_ns": 1, "pass": False,
              "warnings": []}
    check("batch-row", dict(head, input="x.raw", **record))
    assert refused("batch-row", dict(head, input="x.raw", **dict(record, status="measured")))
    # A frame that could not be measured never passes, and its verdict is never left out.
    assert refused("batch-row", dict(head, input="x.raw", **dict(record, **{"pass": True})))
    assert refused("batch-row", dict(head, input="x.raw",
                                     **{k: v for k, v in record.items() if k != "pass"}))
    # A measured row is a whole frame report with its record and verdict.
    measured = {k: v for k, v in partial_report.items()
                if k not in ("error", "exit_status", "pass")}
    measured.update({k: v for k, v in record.items() if k != "pass"}, status="measured",
                    exit_status=0, message="ok")
    assert refused("batch-row", measured)  # no verdict
    measured["pass"] = False
    check("batch-row", measured)


# ---- the edge columns: one table behind the schema ----

def test_the_frame_schemas_edges_are_the_tools_table_of_columns():
    # The edge part of frame.schema.json is written from `talonvireo-sfr columns --json`;
    # a column added, renamed or retyped without the schema fails here.
    script = os.path.join(HERE, "..", "..", "scripts", "frame_schema.py")
    done = subprocess.run([sys.executable, script, tool(), "--check"], capture_output=True,
                          text=True)
    assert done.returncode == 0, done.stderr
    names = [c["name"] for c in strict_json(run("columns", "--json").stdout)["columns"]]
    with open(os.path.join(SCHEMA_DIR, "frame.schema.json")) as f:
        edge = json.load(f)["$defs"]["edge"]
    assert list(edge["properties"]) == names
