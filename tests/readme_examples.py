"""Runs the README's command-line examples as written, in a scratch folder, with the built
tool standing in for the installed `talonvireo-sfr`: every command must succeed, and the demo
summary shown in the README must be the line the demo prints."""
import os
import re
import shlex
import subprocess
import sys
import tempfile


def command_block(readme, heading="## Command line"):
    section = readme.split(heading, 1)[1]
    block = section.split("```sh", 1)[1].split("```", 1)[0]
    block = block.replace("\\\n", " ")
    commands = []
    for line in block.splitlines():
        line = line.split("#", 1)[0].strip()
        if line.startswith("talonvireo-sfr "):
            commands.append(shlex.split(line))
    return commands


NUMBER = re.compile(r"[-+]?\d+\.\d+")


def printed_alike(shown, output, tolerance=0.02):
    """Whether `output` has a line with the words of `shown` and its figures within
    `tolerance`: the sanitizer build's compiler rounds the last digit its own way."""
    for line in output.splitlines():
        if NUMBER.sub("#", line) != NUMBER.sub("#", shown):
            continue
        pairs = zip(NUMBER.findall(line), NUMBER.findall(shown))
        if all(abs(float(a) - float(b)) <= tolerance for a, b in pairs):
            return True
    return False


def run_block(tool, work, readme, heading, names, expected=lambda argv: 0):
    """Runs the section's command block in `work`, each command with the exit status
    `expected` gives it; the runs, in order."""
    commands = command_block(readme, heading)
    assert [c[1] for c in commands] == names, [c[1] for c in commands]
    runs = []
    for argv in commands:
        run = subprocess.run([tool] + argv[1:], cwd=work, capture_output=True, text=True)
        if run.returncode != expected(argv):
            sys.exit(f"README example under {heading!r} gave {run.returncode}, not "
                     f"{expected(argv)}: {' '.join(argv)}\n{run.stdout}{run.stderr}")
        print(f"ok: {' '.join(argv)}")
        runs.append((argv, run))
    return runs


def main():
    readme_path, tool = sys.argv[1], sys.argv[2]
    with open(readme_path) as f:
        readme = f.read()
    with tempfile.TemporaryDirectory() as work:
        run_block(tool, work, readme, "## Command line", ["demo", "render", "measure", "roi"])
        demo = subprocess.run([tool, "demo"], cwd=work, capture_output=True, text=True)
        shown = re.search(r"^summary: .*$", readme, re.M)
        assert shown, "the README shows no demo summary"
        if shown.group(0) not in demo.stdout:
            sys.exit(f"the README's summary is not what the demo prints:\n{shown.group(0)}\n"
                     f"{demo.stdout[-600:]}")
        # Any chart: the lab chart's description from the repository, then its commands; the
        # lab chart's measure grades three flagged edges: exit status 1 is its.
        charts = os.path.join(work, "docs", "charts")
        os.makedirs(charts)
        lab = os.path.join(os.path.dirname(os.path.abspath(readme_path)), "docs", "charts",
                           "lab-5x9.toml")
        with open(lab) as source, open(os.path.join(charts, "lab-5x9.toml"), "w") as copy:
            copy.write(source.read())
        run_block(tool, work, readme, "## Any chart",
                  ["render", "measure", "measure", "measure", "batch"],
                  lambda argv: 1 if "--min-sfr" in argv else 0)
        # Grading a tray: its commands, with the limits file the README shows.
        section = readme.split("## Grading a tray", 1)[1]
        limits = section.split("```toml", 1)[1].split("```", 1)[0]
        with open(os.path.join(work, "tray.toml"), "w") as f:
            f.write(limits)
        # The batch and the measure grade a failing module: exit status 1 is theirs.
        tray = run_block(tool, work, readme, "## Grading a tray",
                         ["render", "render", "render", "batch", "measure"],
                         lambda argv: 1 if argv[1] in ("batch", "measure") else 0)
        summary = section.split("```\nbatch:", 1)[1].split("```", 1)[0]
        batch = next(run for argv, run in tray if argv[1] == "batch")
        for line in summary.splitlines()[1:]:
            if line.strip() and line not in batch.stdout:
                sys.exit(f"the README's batch summary line is not printed: {line!r}\n"
                         f"{batch.stdout}")
        # Focusing a lens: the rendered stack, its study with the lines the README shows, and
        # a description's study of four of its frames.
        section = readme.split("## Focusing and aligning a lens", 1)[1]
        shown = section.split("```\nzone centre", 1)[1].split("```", 1)[0]
        focus = run_block(tool, work, readme, "## Focusing and aligning a lens",
                          ["render", "focus", "focus"])
        study = next(run for argv, run in focus if "--plot" in argv)
        for line in ("zone centre" + shown).splitlines():
            if line.strip() and not printed_alike(line, study.stdout):
                sys.exit(f"the README's focus line is not printed: {line!r}\n"
                         f"{study.stdout[-800:]}")
    print("every README example ran as written")


if __name__ == "__main__":
    main()
