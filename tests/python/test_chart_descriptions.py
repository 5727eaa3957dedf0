"""The chart description files (charts/*.toml, and the README's example) against
schema/chart-description.schema.json, read with tomllib as any script would; and malformed
descriptions that the schema must refuse."""
import copy
import glob
import json
import os
import tomllib

import pytest

import jsonschema  # python3-jsonschema (scripts/setup.sh)

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.join(HERE, "..", "..")
SCHEMA_DIR = os.environ.get("TALONVIREO_SCHEMA_DIR", os.path.join(ROOT, "schema"))
CHARTS = sorted(glob.glob(os.path.join(ROOT, "charts", "*.toml")))


@pytest.fixture(scope="module")
def validator():
    with open(os.path.join(SCHEMA_DIR, "chart-description.schema.json")) as f:
        schema = json.load(f)
    cls = jsonschema.validators.validator_for(schema)
    cls.check_schema(schema)
    return cls(schema)


def errors(validator, document):
    return [f"{'/'.join(map(str, e.absolute_path))}: {e.message}"
            for e in validator.iter_errors(document)]


def test_the_four_built_in_charts_are_there():
    names = sorted(os.path.basename(p) for p in CHARTS)
    assert names == ["HLX6C.toml", "K31R22BX.toml", "K74T16BX.toml", "K83P09BQ.toml"]


@pytest.mark.parametrize("path", CHARTS, ids=os.path.basename)
def test_built_in_chart_is_valid(validator, path):
    with open(path, "rb") as f:
        chart = tomllib.load(f)
    assert errors(validator, chart) == []
    slots = [s["slot"] for s in chart["slot"]]
    assert slots == list(range(68 if chart["name"] == "K31R22BX" else 52))


def readme_example():
    with open(os.path.join(ROOT, "README.md")) as f:
        section = f.read().split("## Chart description files", 1)[1]
    return tomllib.loads(section.split("```toml", 1)[1].split("```", 1)[0])


def test_readme_example_is_valid(validator):
    chart = readme_example()
    assert errors(validator, chart) == []
    assert len(chart["slot"]) == 4


def test_a_shape_with_three_corners_is_refused(validator):
    chart = readme_example()
    chart["shape"][1]["corners"] = chart["shape"][1]["corners"][:3]
    assert any(e.startswith("shape/1") for e in errors(validator, chart))


def test_an_unknown_key_is_refused(validator):
    chart = readme_example()
    chart["slot"][2]["sid"] = chart["slot"][2].pop("side")
    found = errors(validator, chart)
    assert any(e.startswith("slot/2") for e in found), found
    top = copy.deepcopy(readme_example())
    top["slots"] = top.pop("slot")
    assert errors(validator, top)


def test_a_bad_polarity_is_refused(validator):
    chart = readme_example()
    chart["edge"][0]["polarity"] = "grey"
    assert any(e.startswith("edge/0/polarity") for e in errors(validator, chart))


def test_a_slot_on_a_shape_and_an_edge_is_refused(validator):
    chart = readme_example()
    chart["slot"][0]["edge"] = 0
    assert any(e.startswith("slot/0") for e in errors(validator, chart))


def test_corners_and_centre_together_are_refused(validator):
    chart = readme_example()
    chart["shape"][1]["centre"] = [700, 500]
    assert any(e.startswith("shape/1") for e in errors(validator, chart))
