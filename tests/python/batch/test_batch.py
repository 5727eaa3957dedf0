"""talonvireo-sfr batch: many frames in one process, recorded in SQLite, CSV and JSON Lines,
surviving Ctrl-C and kill."""
import csv
import json
import os
import shutil
import signal
import sqlite3
import struct
import subprocess
import time

import pytest

MEMBER = "talonvireoSFR_raw10_HLX6C"
LIMITS = os.path.join(os.path.dirname(__file__), "..", "..", "data", "limits", "lenient.toml")


def batch_args(*frames, **options):
    args = [os.environ["TALONVIREO_SFR_TOOL"], "batch", *frames, "--member", MEMBER,
            "--width", "4000", "--height", "3000"]
    for key, value in options.items():
        args += ["--" + key.replace("_", "-")] + ([] if value is True else [str(value)])
    return args


def run_batch(*frames, **options):
    return subprocess.run(batch_args(*frames, **options), capture_output=True, text=True)


@pytest.fixture
def tray(tmp_path, frame_files):
    """A folder of the three HLX6C frames and the broken file (hard links: cheap copies)."""
    folder = tmp_path / "tray"
    folder.mkdir()
    for path in frame_files:
        os.link(path, folder / os.path.basename(path))
    return folder


def png_size(path):
    with open(path, "rb") as f:
        head = f.read(24)
    assert head[:8] == b"\x89PNG\r\n\x1a\n"
    return struct.unpack(">II", head[16:24])


def test_batch_records_every_frame_in_sqlite_csv_and_jsonl(tray, tmp_path):
    db, table, lines = tmp_path / "r.sqlite", tmp_path / "r.csv", tmp_path / "r.jsonl"
    plot = tmp_path / "summary.png"
    done = run_batch(str(tray), db=db, csv=table, jsonl=lines, limits=LIMITS, jobs=2,
                     summary_plot=plot)
    # The broken file is recorded with its cause; the batch goes on and reports it.
    assert done.returncode == 1, done.stderr
    assert "batch: 4 frames" in done.stdout and "wrong file size" in done.stdout
    assert "yield     75.0 % (3 of 4)" in done.stdout
    con = sqlite3.connect(db)
    assert con.execute("PRAGMA user_version").fetchone()[0] == 3
    assert con.execute("PRAGMA integrity_check").fetchone()[0] == "ok"
    run = con.execute("SELECT member, finished_at, frames, measured, passed, interrupted, "
                      "limits_hash FROM runs").fetchall()
    assert len(run) == 1
    member, finished, frames, measured, passed, interrupted, limits_hash = run[0]
    assert (member, frames, measured, passed, interrupted) == (MEMBER, 4, 3, 3, 0)
    assert finished is not None and limits_hash.startswith("fnv1a64:")
    rows = dict(con.execute("SELECT path, status FROM frames").fetchall())
    assert sorted(os.path.basename(p) for p in rows) == ["a.raw", "b.raw", "broken.raw", "c.raw"]
    assert rows[str(tray / "broken.raw")] == "wrong file size"
    # A frame that could not be measured fails in every record, never null.
    assert con.execute("SELECT pass FROM frames WHERE path = ?",
                       (str(tray / "broken.raw"),)).fetchone()[0] == 0
    assert con.execute("SELECT count(*) FROM frames WHERE pass IS NULL OR warnings IS NULL"
                       ).fetchone()[0] == 0
    for fid, edges in con.execute("SELECT id, edges FROM frames WHERE status = 'measured'"):
        assert edges == 52
        assert con.execute("SELECT count(*) FROM edges WHERE frame_id = ?", (fid,)).fetchone()[0] == 52
    # CSV: a row per edge plus one for the broken frame, the same figures as the database.
    with open(table) as f:
        records = list(csv.DictReader(f))
    assert len(records) == 3 * 52 + 1
    broken = [r for r in records if r["status"] != "measured"]
    assert len(broken) == 1 and broken[0]["edge"] == "" and "bytes, not" in broken[0]["message"]
    assert broken[0]["pass"] == "0" and "warnings" in broken[0]
    stored = {(p, s): q for p, s, q in con.execute(
        "SELECT f.path, e.edge, e.sfr_quarter_nyquist FROM edges e JOIN frames f ON f.id = e.frame_id")}
    for r in records:
        if r["status"] == "measured":
            assert float(r["sfr_quarter_nyquist"]) == pytest.approx(
                stored[(r["file"], int(r["edge"]))], abs=1e-6)
    # JSON Lines: one document per frame.
    with open(lines) as f:
        docs = [json.loads(line) for line in f]
    assert sorted(d["status"] for d in docs) == ["measured"] * 3 + ["wrong file size"]
    assert all(len(d["edges"]) == 52 for d in docs if d["status"] == "measured")
    assert [d["pass"] for d in docs if d["status"] != "measured"] == [False]
    assert all(isinstance(d["warnings"], list) for d in docs)
    # A panel per figure the limits set: SFR at Nyquist/4 and /2, MTF50.
    assert png_size(plot) == (1000, 3 * 600)


def test_batch_figures_are_those_of_measure(tray, tmp_path):
    db = tmp_path / "r.sqlite"
    run_batch(str(tray / "a.raw"), db=db)
    one = subprocess.run([os.environ["TALONVIREO_SFR_TOOL"], "measure", str(tray / "a.raw"),
                          "--member", MEMBER, "--width", "4000", "--height", "3000", "--json"],
                         capture_output=True, text=True, check=True)
    expected = {e["edge"]: e["sfr_quarter_nyquist"] for e in json.loads(one.stdout)["edges"]}
    con = sqlite3.connect(db)
    got = dict(con.execute("SELECT edge, sfr_quarter_nyquist FROM edges"))
    assert got.keys() == expected.keys()
    for slot, value in expected.items():
        assert got[slot] == pytest.approx(value, abs=1e-6)


def test_two_jobs_record_the_same_figures_as_one(tray, tmp_path):
    def figures(jobs):
        db = tmp_path / f"j{jobs}.sqlite"
        run_batch(str(tray), db=db, jobs=jobs)
        con = sqlite3.connect(db)
        return sorted(con.execute(
            "SELECT f.path, e.edge, e.sfr_quarter_nyquist, e.sfr_half_nyquist FROM edges e "
            "JOIN frames f ON f.id = e.frame_id"))
    assert figures(1) == figures(2)


def test_a_batch_run_again_skips_the_frames_it_recorded(tray, tmp_path):
    db = tmp_path / "r.sqlite"
    first = run_batch(str(tray), db=db)
    assert "4 done now" in first.stdout
    again = run_batch(str(tray), db=db)
    assert "4 already recorded (skipped), 0 done now" in again.stdout
    # The whole tray is still summarised, and still fails on the broken file.
    assert again.returncode == 1 and "yield     75.0 % (3 of 4)" in again.stdout
    # A frame written anew (another modification time) is measured again; so is every frame
    # under other options.
    os.utime(tray / "a.raw", ns=(time.time_ns(), time.time_ns() + 10**9))
    third = run_batch(str(tray), db=db)
    assert "3 already recorded (skipped), 1 done now" in third.stdout
    other = run_batch(str(tray), db=db, roi=60)
    assert "4 done now" in other.stdout
    con = sqlite3.connect(db)
    assert con.execute("SELECT count(*) FROM runs").fetchone()[0] == 4
    assert con.execute("SELECT count(*) FROM frames").fetchone()[0] == 4 + 0 + 1 + 4


def test_the_summary_plot_of_a_batch_run_again_covers_the_frames_recorded_before(tray, tmp_path):
    db = tmp_path / "r.sqlite"
    whole, resumed = tmp_path / "whole.png", tmp_path / "resumed.png"
    first = run_batch(str(tray), db=db, limits=LIMITS, summary_plot=whole)
    assert "4 done now" in first.stdout
    again = run_batch(str(tray), db=db, limits=LIMITS, summary_plot=resumed)
    assert "4 already recorded (skipped), 0 done now" in again.stdout
    # Drawn from the database's edges, the plot is the very picture the first run drew.
    assert resumed.read_bytes() == whole.read_bytes()


def many_frames(tray, count):
    for k in range(count):
        os.link(tray / "a.raw", tray / f"copy{k:02d}.raw")
    os.remove(tray / "broken.raw")
    return count + 3


def wait_for_frames(db, count, timeout=120):
    deadline = time.time() + timeout
    while time.time() < deadline:
        try:
            con = sqlite3.connect(db)
            n = con.execute("SELECT count(*) FROM frames").fetchone()[0]
            con.close()
            if n >= count:
                return n
        except sqlite3.OperationalError:
            pass  # not created yet
        time.sleep(0.05)
    raise AssertionError(f"fewer than {count} frames recorded in {timeout} s")


def check_consistent(db):
    con = sqlite3.connect(db)
    assert con.execute("PRAGMA integrity_check").fetchone()[0] == "ok"
    # Every frame has all its edges: a frame and its edges go in together or not at all.
    for fid, edges in con.execute("SELECT id, edges FROM frames"):
        assert con.execute("SELECT count(*) FROM edges WHERE frame_id = ?", (fid,)).fetchone()[0] == edges
    return con


def test_a_killed_batch_leaves_a_consistent_database_and_finishes_when_run_again(tray, tmp_path):
    total = many_frames(tray, 17)
    db = tmp_path / "r.sqlite"
    proc = subprocess.Popen(batch_args(str(tray), db=db, jobs=1), stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL)
    try:
        wait_for_frames(db, 3)
        proc.send_signal(signal.SIGKILL)
    finally:
        proc.wait()
    con = check_consistent(db)
    recorded = con.execute("SELECT count(*) FROM frames").fetchone()[0]
    assert 3 <= recorded < total
    assert con.execute("SELECT finished_at FROM runs").fetchone()[0] is None  # killed
    con.close()
    again = run_batch(str(tray), db=db, jobs=2)
    assert again.returncode == 0, again.stdout + again.stderr
    assert f"{recorded} already recorded (skipped), {total - recorded} done now" in again.stdout
    con = check_consistent(db)
    paths = [p for (p,) in con.execute("SELECT path FROM frames")]
    assert len(paths) == total and len(set(paths)) == total


def test_ctrl_c_lets_the_frames_in_flight_finish_and_exits_130(tray, tmp_path):
    total = many_frames(tray, 17)
    db = tmp_path / "r.sqlite"
    proc = subprocess.Popen(batch_args(str(tray), db=db, jobs=2), stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True)
    wait_for_frames(db, 2)
    proc.send_signal(signal.SIGINT)
    out, err = proc.communicate(timeout=60)
    assert proc.returncode == 130, out + err
    assert "INTERRUPTED" in out and "stopping" in err
    con = check_consistent(db)
    done, interrupted, finished = con.execute(
        "SELECT frames, interrupted, finished_at FROM runs").fetchone()
    assert interrupted == 1 and finished is not None
    assert done == con.execute("SELECT count(*) FROM frames").fetchone()[0] < total


def test_the_csv_is_completed_when_an_interrupted_batch_is_run_again(tray, tmp_path):
    total = many_frames(tray, 9)
    db, table = tmp_path / "r.sqlite", tmp_path / "r.csv"
    proc = subprocess.Popen(batch_args(str(tray), db=db, csv=table, jobs=1),
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wait_for_frames(db, 2)
    proc.send_signal(signal.SIGINT)
    proc.wait(timeout=60)
    run_batch(str(tray), db=db, csv=table)
    with open(table) as f:
        text = f.read()
    assert text.count("file,status,message,edge") == 1  # one header
    frames = {r["file"] for r in csv.DictReader(text.splitlines())}
    assert len(frames) == total


def test_a_progress_line_is_drawn_only_on_a_terminal(tray, tmp_path):
    quiet = run_batch(str(tray / "a.raw"))
    assert quiet.stderr == ""
    # A pseudo-terminal as stderr: the progress line appears there.
    import pty
    parent, child = pty.openpty()
    proc = subprocess.Popen(batch_args(str(tray / "a.raw"), str(tray / "b.raw")),
                            stdout=subprocess.DEVNULL, stderr=child)
    os.close(child)
    seen = b""
    while True:
        try:
            chunk = os.read(parent, 4096)
        except OSError:
            break
        if not chunk:
            break
        seen += chunk
    proc.wait()
    os.close(parent)
    assert b"2/2 frames" in seen and b"frames/s" in seen


def test_a_database_of_something_else_is_refused(tray, tmp_path):
    other = tmp_path / "other.sqlite"
    con = sqlite3.connect(other)
    con.execute("CREATE TABLE notes (text TEXT)")
    con.commit()
    con.close()
    done = run_batch(str(tray / "a.raw"), db=other)
    assert done.returncode == 2 and "database of something else" in done.stderr
    newer = tmp_path / "newer.sqlite"
    con = sqlite3.connect(newer)
    con.execute("PRAGMA user_version = 7")
    con.execute("CREATE TABLE runs (id INTEGER)")
    con.commit()
    con.close()
    done = run_batch(str(tray / "a.raw"), db=newer)
    assert done.returncode == 2 and "schema version 7" in done.stderr


def test_a_csv_of_other_columns_is_refused_before_measuring(tray, tmp_path):
    table = tmp_path / "r.csv"
    table.write_text("something,else\n")
    done = run_batch(str(tray / "a.raw"), csv=table)
    assert done.returncode == 2 and "already holds other columns" in done.stderr
    assert table.read_text() == "something,else\n"


def test_a_glob_and_a_folder_name_the_same_frames(tray, tmp_path):
    by_glob = run_batch(str(tray / "*.raw"), quiet=True, jsonl=tmp_path / "g.jsonl")
    by_folder = run_batch(str(tray), quiet=True, jsonl=tmp_path / "f.jsonl")
    assert by_glob.stdout == by_folder.stdout == ""
    def inputs(path):
        with open(path) as f:
            return sorted(json.loads(line)["input"] for line in f)
    assert inputs(tmp_path / "g.jsonl") == inputs(tmp_path / "f.jsonl")
    assert len(inputs(tmp_path / "g.jsonl")) == 4
