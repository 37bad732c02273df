"""decoders_page_test.py <build folder> <source folder>

Follows docs/decoders.md as its reader does: runs each command, which must print what the page shows
(… stands for anything in a line), and saves each decoder where the page says."""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

SAVED = ".config/plotterra/decoders/trader.lua"


def blocks(page):
    """The page's indented blocks, without the indent."""
    for block in re.findall(r"(?:^    .*\n)+", page, re.MULTILINE):
        yield [line[4:] for line in block.splitlines()]


def runs(lines):
    """The commands of a block, each with what it must print."""
    for part in "".join(f"{line}\n" for line in lines).split("$ ")[1:]:
        yield part.split("\n", 1)


def main():
    build, source = (Path(argument).resolve() for argument in sys.argv[1:])
    page = (source / "docs/decoders.md").read_text("utf-8")
    result = (source / "decoders/trader.lua").read_text("utf-8")
    assert f"`~/{SAVED}`" in page, "the page saves its decoder elsewhere"
    checked = 0
    with tempfile.TemporaryDirectory() as home:
        environment = {"HOME": home, "PATH": f"{build}:{os.environ['PATH']}", "LC_ALL": "C"}
        saved = Path(home) / SAVED
        saved.parent.mkdir(parents=True)
        for lines in blocks(page):
            if lines[0].startswith("return"):
                saved.write_text("\n".join(lines))
            elif not lines[0].startswith("$ "):
                part = "\n".join("  " + line for line in lines)
                assert part in result, f"decoders/trader.lua does not have\n{part}"
                saved.write_text(result)
            else:
                for command, expected in runs(lines):
                    run = subprocess.run(["bash", "-c", command], cwd=home, env=environment,
                                         capture_output=True, encoding="utf-8")
                    pattern = re.escape(expected).replace("…", ".*")
                    assert re.fullmatch(pattern, run.stdout), (
                        f"$ {command}\n{run.stdout}{run.stderr}\nand not\n{expected}")
                    assert run.stderr == "", run.stderr
                    checked += 1
    assert checked > 5, "hardly any commands in the page"


main()
