"""Frames for the talonvireo tests, rendered by the project's own chart renderer."""
import json
import os
import subprocess

import numpy as np
import pytest


@pytest.fixture(scope="session")
def rendered_chart(tmp_path_factory):
    """The HLX6C chart as a 4000 x 3000 Bayer R G frame of 10-bit words, sigma 0.8, and
    its truth (edge centres for a ring of 100 px, true SFR)."""
    tool = os.environ["TALONVIREO_SFR_TOOL"]
    prefix = str(tmp_path_factory.mktemp("chart") / "hlx6c")
    subprocess.run([tool, "render", "--project", "HLX6C", "--bits", "10", "--bayer",
                    "--sigma", "0.8", "--out", prefix], check=True, capture_output=True)
    raw = np.fromfile(prefix + ".raw", dtype="<u2").reshape(3000, 4000)
    with open(prefix + ".json") as f:
        truth = json.load(f)
    return raw, truth


@pytest.fixture(scope="session")
def frame_files(tmp_path_factory, rendered_chart):
    """Three HLX6C frame files (two the same chart, one shifted by 40 px) and a file that is
    not a frame of that size: paths in that order."""
    raw, _ = rendered_chart
    folder = tmp_path_factory.mktemp("frames")
    paths = []
    for name, frame in (("a.raw", raw), ("b.raw", raw), ("c.raw", np.roll(raw, 40, axis=1))):
        frame.astype("<u2").tofile(folder / name)
        paths.append(str(folder / name))
    broken = folder / "broken.raw"
    broken.write_bytes(b"\0" * 1000)
    paths.append(str(broken))
    return paths
