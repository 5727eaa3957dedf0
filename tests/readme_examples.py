"""Runs the README's command-line examples as written, in a scratch folder, with the built
tool standing in for the installed `talonvireo-sfr`: every command must succeed, and the demo
summary shown in the README must be the line the demo prints."""
import os
import re
import shlex
import subprocess
import sys
import tempfile


def command_block(readme):
    section = readme.split("## Command line", 1)[1]
    block = section.split("```sh", 1)[1].split("```", 1)[0]
    block = block.replace("\\\n", " ")
    commands = []
    for line in block.splitlines():
        line = line.split("#", 1)[0].strip()
        if line.startswith("talonvireo-sfr "):
            commands.append(shlex.split(line))
    return commands


def main():
    readme_path, tool = sys.argv[1], sys.argv[2]
    with open(readme_path) as f:
        readme = f.read()
    commands = command_block(readme)
    names = [c[1] for c in commands]
    assert names == ["demo", "render", "measure", "roi"], names
    with tempfile.TemporaryDirectory() as work:
        for argv in commands:
            run = subprocess.run([tool] + argv[1:], cwd=work, capture_output=True, text=True)
            if run.returncode != 0:
                sys.exit(f"README example failed ({run.returncode}): {' '.join(argv)}\n"
                         f"{run.stdout}{run.stderr}")
            print(f"ok: {' '.join(argv)}")
        demo = subprocess.run([tool, "demo"], cwd=work, capture_output=True, text=True)
        shown = re.search(r"^summary: .*$", readme, re.M)
        assert shown, "the README shows no demo summary"
        if shown.group(0) not in demo.stdout:
            sys.exit(f"the README's summary is not what the demo prints:\n{shown.group(0)}\n"
                     f"{demo.stdout[-600:]}")
    print("every README example ran as written")


if __name__ == "__main__":
    main()
