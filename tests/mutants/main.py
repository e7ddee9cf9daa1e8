"""Changes the code of a folder in one place at a time, and sees for each change that a test fails.

Works on a copy of the tree, in build/mutants/FOLDER. All changes are built in at once, and switched on one by one."""

from __future__ import annotations

import argparse
import filecmp
import json
import os
import random
import shlex
import shutil
import subprocess
import sys
from collections.abc import Iterator
from pathlib import Path

from equivalents import read_equivalents, unmatched
from folders import FOLDERS, Folder
from mutant import Mutant
from switching import Switching
from testing import Plan, survivors

ROOT = Path(__file__).resolve().parent.parent.parent
MOST_EQUIVALENTS = 0.05
# Warnings of a switched source say nothing, and its numbers in braces are no longer constants.
FLAGS = "-O1 -w -Wno-c++11-narrowing -D_GLIBCXX_ASSERTIONS"


class Copy:
    """A copy of the tree, with its build."""

    def __init__(self, name: str, folder: Folder) -> None:
        self.folder = folder
        self.base = ROOT / "build" / "mutants" / name
        self.tree, self.build, self.log = self.base / "tree", self.base / "build", self.base / "log"
        self.switch = self.tree / "tests/mutants/Switch.h"

    def make(self) -> None:
        self.base.mkdir(parents=True, exist_ok=True)
        self._copy_what_differs()
        # Tests that read sources read them as they are.
        flags = f"-DCMAKE_CXX_FLAGS={FLAGS} -include {self.switch} -DSOURCE_DIRECTORY='\"{ROOT}\"'"
        # Compiled headers would come with the unit tests, whatever is built.
        options = ["-G", "Ninja", "-DCMAKE_CXX_COMPILER=clang++", "-DCMAKE_BUILD_TYPE=", flags, *self.folder.settings]
        options.append("-DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON")
        self._run(["cmake", "-S", str(self.tree), "-B", str(self.build), *options])

    def _copy_what_differs(self) -> None:
        """Switched sources stay, so that they are built again only when what becomes of them differs."""
        originals = {path.relative_to(ROOT) for path in ROOT.rglob("*") if path.is_file()}
        originals = {path for path in originals if path.parts[0] not in ("build", ".git")}
        for path in [path for path in self.tree.rglob("*") if path.is_file()]:
            if path.relative_to(self.tree) not in originals:
                path.unlink()
        sources = self.sources()
        for path in originals:
            copy = self.tree / path
            is_switched = copy.exists() and str(path) in sources
            if not is_switched and not (copy.exists() and filecmp.cmp(ROOT / path, copy, shallow=False)):
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(ROOT / path, copy)

    def build_tests(self, jobs: int) -> None:
        programs = [*self.folder.quick, *self.folder.slow]
        targets = [program.split()[0].rsplit("/", 1)[1] for program in programs]
        self._run(["cmake", "--build", str(self.build), "--parallel", str(jobs), "--target", *targets])

    def sources(self) -> list[str]:
        files = (ROOT / self.folder.sources).rglob("*")
        return sorted(str(file.relative_to(ROOT)) for file in files if file.suffix in (".h", ".cpp"))

    def arguments(self, source: str) -> list[str]:
        """What the compiler is given for a source, but for where the results go."""
        commands = json.loads((self.build / "compile_commands.json").read_text())
        mine = [each["command"] for each in commands if each["file"] == str(self.tree / source)]
        if not mine:
            raise RuntimeError(f"{source} is not a part of what is built")
        words = shlex.split(mine[0])
        first = next(index for index, word in enumerate(words) if word.startswith("-"))
        return words[first : words.index("-o")]

    def _run(self, command: list[str]) -> None:
        with self.log.open("w") as log:
            if subprocess.run(command, stdout=log, stderr=log, check=False).returncode != 0:
                raise RuntimeError(f"{command[0]} failed; see {self.log}")


def choose(numbers: list[int], count: int | None, seed: int) -> list[int]:
    if count is None or count >= len(numbers):
        return numbers
    return sorted(random.Random(seed).sample(numbers, count))


def test(copy: Copy, numbers: list[int], highest: int, jobs: int) -> Iterator[int]:
    """The mutants that survive, as soon as they have."""
    alive = iter(numbers)
    for programs in filter(None, (copy.folder.quick, copy.folder.slow)):
        candidates = list(alive)
        paths = [str(copy.build / program) for program in programs]
        alive = survivors(Plan(paths, candidates, highest, jobs)) if candidates else iter(())
    return alive


def run(name: str, only: str, seed: int, count: int | None, jobs: int) -> int:
    folder = FOLDERS[name]
    copy = Copy(name, folder)
    copy.make()
    switching = Switching(ROOT, copy.tree, copy.sources(), copy.arguments, copy.switch)
    switching.find()
    switching.drop_what_does_not_compile()
    mutants = switching.mutants
    equivalents = read_equivalents(ROOT / "tests/mutants/equivalents")
    stale = unmatched(equivalents, list(mutants.values()), name)
    for key in stale:
        print("tests/mutants/equivalents: no mutant is like this one:", *key, sep="\n  ")
    switching.write()
    copy.build_tests(jobs)
    known = sum(mutant.key in equivalents for mutant in mutants.values())
    eligible = [number for number, each in mutants.items() if each.key not in equivalents and only in each.path]
    numbers = choose(eligible, folder.sample if count is None else count, seed)
    print(f"{name}: {len(mutants)} mutants, {known} of them equivalent; {switching.dropped} do not compile")
    print(f"trying {len(numbers)}" + (f", seed {seed}" if len(numbers) < len(eligible) else ""), flush=True)
    alive = 0
    for number in test(copy, numbers, max(mutants, default=0), jobs):
        alive += 1
        print(f"SURVIVED: {mutants[number]}", flush=True)
    print(f"{len(numbers)} mutants, {len(numbers) - alive} killed, {alive} not")
    if known > MOST_EQUIVALENTS * len(mutants):
        print(f"more than {MOST_EQUIVALENTS:.0%} of the mutants count as equivalent")
        return 1
    return 1 if alive or stale or not numbers else 0


def main() -> int:
    parser = argparse.ArgumentParser(prog="scripts/mutants", description=__doc__)
    parser.add_argument("folder", metavar="FOLDER", choices=FOLDERS, help=", ".join(FOLDERS))
    parser.add_argument("--only", default="", metavar="TEXT", help="pick among those in files whose paths hold this")
    parser.add_argument("--seed", type=int, default=random.randrange(2**31), help="which ones to pick")
    parser.add_argument("--count", type=int, help="how many to pick")
    parser.add_argument("--jobs", type=int, default=len(os.sched_getaffinity(0)), help="how many to try at once")
    options = parser.parse_args()
    if shutil.which("unshare") is None:
        parser.error("unshare is missing, which keeps mutants from doing harm")
    try:
        return run(options.folder, options.only, options.seed, options.count, options.jobs)
    except (RuntimeError, ValueError) as error:
        print(f"scripts/mutants: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
