"""Runs tests with one mutant after the other switched on, each mutant with the tests that come by its place. Everything
that mutants do happens in a sandbox."""

from __future__ import annotations

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor
from dataclasses import asdict, dataclass, replace
from pathlib import Path

_HERE = Path(__file__).resolve().parent
_NO_MUTANT = 0  # their numbers begin with 1
_SHORTEST_TIMEOUT = 10.0
_LONGEST_WITHOUT_MUTANT = 120.0
_MOST_AT_ONCE = 8  # tests that last mostly sleep
# Processes of its own for each program, so that none outlives it.
_ALONE = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]


@dataclass
class Plan:
    """Programs of GoogleTest in the order in which they are tried, each with a filter of its tests behind a blank unless
    it is all of them; which mutants are switched on, up to which number there are any, how many are tried at once."""

    programs: list[str]
    numbers: list[int]
    highest: int
    jobs: int


@dataclass(frozen=True)
class Test:
    """One test without any mutant: how long it takes, and which mutants it would notice at all."""

    program: str
    name: str
    seconds: float
    reached: frozenset[int]


def _start(program: str, variables: dict[str, str]) -> subprocess.Popen[bytes]:
    return subprocess.Popen(
        [*_ALONE, program],
        env={**os.environ, "GTEST_FAIL_FAST": "1", **variables},
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
        start_new_session=True,
    )


def _all_succeed(processes: list[subprocess.Popen[bytes]], timeout: float) -> bool:
    """Ends all of them as soon as one does not, or the time is over."""
    deadline = time.monotonic() + timeout
    try:
        while time.monotonic() < deadline:
            results = [process.poll() for process in processes]
            if any(result not in (None, 0) for result in results):
                return False
            if None not in results:
                return True
            time.sleep(0.01)
        return False
    finally:
        for process in processes:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()


def names_of_tests(listing: str) -> list[str]:
    """The tests in what --gtest_list_tests prints."""
    suite, names = "", []
    for line in listing.splitlines():
        name = line.split("#")[0].rstrip()
        if line.startswith("  "):
            names.append(suite + name.strip())
        elif name.endswith("."):
            suite = name
    return names


def _trace(program: str, name: str, highest: int) -> Test:
    with tempfile.NamedTemporaryFile() as reached:
        reached.truncate(highest + 1)
        start = time.monotonic()
        variables = {"GTEST_FILTER": name, "MUTANTS_REACHED": reached.name, "MUTANT": str(_NO_MUTANT)}
        if not _all_succeed([_start(program, variables)], _LONGEST_WITHOUT_MUTANT):
            raise RuntimeError(f"without any mutant {name} of {program} fails")
        seconds = time.monotonic() - start
        return Test(program, name, seconds, frozenset(at for at, byte in enumerate(reached.read()) if byte))


def _list(program: str, chosen: str = "*") -> str:
    return subprocess.check_output([program, "--gtest_list_tests", f"--gtest_filter={chosen}"], text=True)


def trace(plan: Plan) -> list[Test]:
    """Every test of the plan, run alone."""
    listings = [(program.split()[0], _list(*program.split())) for program in plan.programs]
    with ThreadPoolExecutor(_MOST_AT_ONCE) as pool:
        runs = [
            pool.submit(_trace, program, name, plan.highest)
            for program, listing in listings
            for name in names_of_tests(listing)
        ]
        return [run.result() for run in runs]


def parts_for(seconds: float) -> int:
    return max(1, min(_MOST_AT_ONCE, int(seconds)))


def timeout_for(seconds: float) -> float:
    return max(_SHORTEST_TIMEOUT, 10 * seconds)


def _passes(program: str, tests: list[Test], number: int) -> bool:
    seconds = sum(test.seconds for test in tests)
    parts = min(parts_for(seconds), len(tests))
    variables = {"MUTANT": str(number), "GTEST_FILTER": ":".join(test.name for test in tests)}
    sharing = [{"GTEST_TOTAL_SHARDS": str(parts), "GTEST_SHARD_INDEX": str(index)} for index in range(parts)]
    longest = max([seconds / parts, *(test.seconds for test in tests)])
    return _all_succeed([_start(program, {**variables, **share}) for share in sharing], timeout_for(longest))


def survives(programs: list[str], tests: list[Test], number: int) -> bool:
    chosen = [test for test in tests if number in test.reached or number == _NO_MUTANT]
    mine = {program: [test for test in chosen if test.program == program.split()[0]] for program in programs}
    return all(_passes(program.split()[0], tests, number) for program, tests in mine.items() if tests)


def survivors(plan: Plan) -> Iterator[int]:
    """The mutants that all programs of the plan pass with. Raises an exception when a test does not pass without any,
    before or after: then nothing says that tests killed the others."""
    command = [str(_HERE / "in_sandbox"), sys.executable, "-B", str(Path(__file__).resolve())]
    is_sound = False
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as process:
        assert process.stdin is not None and process.stdout is not None
        process.stdin.write(json.dumps(asdict(replace(plan, numbers=[*plan.numbers, _NO_MUTANT]))))
        process.stdin.close()
        for line in process.stdout:
            number, has_survived = json.loads(line)
            if number == _NO_MUTANT:
                is_sound = has_survived
            elif has_survived:
                yield number
    if not is_sound:
        raise RuntimeError(f"without any mutant one of these fails: {' '.join(plan.programs)}")


def main() -> None:
    plan = Plan(**json.load(sys.stdin))
    tests = trace(plan)
    with ThreadPoolExecutor(plan.jobs) as pool:
        results = pool.map(lambda number: survives(plan.programs, tests, number), plan.numbers)
        for number, has_survived in zip(plan.numbers, results):
            print(json.dumps([number, has_survived]), flush=True)


if __name__ == "__main__":
    main()
