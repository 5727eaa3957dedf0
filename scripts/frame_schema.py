#!/usr/bin/env python3
"""Writes the edge part of schema/frame.schema.json from the tool's table of edge columns.

    scripts/frame_schema.py TOOL [--check]

TOOL is the talonvireo-sfr executable; its `columns --json` is the one table every output's
edge columns come from. With --check nothing is written and the exit status says whether the
schema file already holds what the table gives (the test suite runs it that way).
"""
import json
import pathlib
import subprocess
import sys

SCHEMA = pathlib.Path(__file__).resolve().parent.parent / "schema" / "frame.schema.json"

# When a column is present, as conditions on the frame document's own keys.
PRESENCE = {
    "custom": {"required": ["freq_divisor"]},
    "pitch": {"required": ["pixel_pitch_um"]},
    "precise": {"required": ["method"]},
    "precise+custom": {"required": ["method", "freq_divisor"]},
    "precise+pitch": {"required": ["method", "pixel_pitch_um"]},
    "planes": {"required": ["method"], "properties": {"method": {"const": "precise, per channel raw"}}},
    "limits": {"required": ["limits"]},
    "graded": {"required": ["failures"]},
    "chart": {"required": ["chart_method"]},
}

VALUE = {
    "integer": {"type": ["integer", "null"]},
    "real": {"$ref": "#/$defs/figure"},
    "text": {"type": "string"},
    "boolean": {"type": "boolean"},
}


def edge_schema(columns):
    properties = {}
    for c in columns:
        p = dict(VALUE[c["type"]])
        p["description"] = c["description"] + (f" ({c['unit']})" if c["unit"] else "")
        properties[c["name"]] = p
    properties["edge"] = {"type": "integer", "minimum": 0, "description": properties["edge"]["description"]}
    properties["side"] = {"type": "integer", "minimum": 1, "description": properties["side"]["description"]}
    properties["state"]["pattern"] = "^(measured|not located|off the frame|refused by the SFR: .+)$"
    properties["orientation"]["enum"] = ["tangential", "sagittal", "none"]
    return {
        "type": "object",
        "required": [c["name"] for c in columns if c["when"] == "always"],
        "properties": properties,
        "additionalProperties": False,
        "if": {"properties": {"state": {"const": "not located"}}},
        "then": {"properties": {"x": {"type": "null"}, "y": {"type": "null"}}},
        "else": {"properties": {"x": {"type": "integer"}, "y": {"type": "integer"}}},
    }


def presence_rules(columns):
    rules = []
    for when, condition in PRESENCE.items():
        names = [c["name"] for c in columns if c["when"] == when]
        if not names:
            continue
        rules.append({
            "description": f"The '{when}' columns on every edge when the report has them, on none otherwise.",
            "if": condition,
            "then": {"properties": {"edges": {"items": {"required": names}}}},
            "else": {"properties": {"edges": {"items": {"properties": {n: False for n in names}}}}},
        })
    truth = [c["name"] for c in columns if c["when"] == "truth"]
    rules.append({
        "description": "The truth on every edge of a rendered frame, or on none.",
        "properties": {"edges": {"anyOf": [
            {"items": {"required": truth}},
            {"items": {"properties": {n: False for n in truth}}},
        ]}},
    })
    return rules


def build(tool):
    table = json.loads(subprocess.run([tool, "columns", "--json"], check=True,
                                      capture_output=True, text=True).stdout)
    columns = table["columns"]
    schema = json.loads(SCHEMA.read_text())
    schema["$defs"]["edge"] = edge_schema(columns)
    schema["$defs"].pop("curveFigures", None)
    schema["$defs"]["frameBody"]["allOf"] = presence_rules(columns)
    return schema


def main():
    tool = sys.argv[1]
    schema = build(tool)
    text = json.dumps(schema, indent=2, ensure_ascii=False) + "\n"
    if "--check" in sys.argv[2:]:
        if SCHEMA.read_text() != text:
            print(f"{SCHEMA} does not hold the edge columns of `{tool} columns`: "
                  f"run scripts/frame_schema.py {tool}", file=sys.stderr)
            return 1
        return 0
    SCHEMA.write_text(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
