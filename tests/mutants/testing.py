"""Runs test programs with one mutant after the other switched on. Everything that mutants do happens in a sandbox."""

from __future__ import annotations

import json
import os
import signal
import subprocess
import sys
import time
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor
from dataclasses import asdict, dataclass, replace
from pathlib import Path

_HERE = Path(__file__).resolve().parent
_NO_MUTANT = 0  # their numbers begin with 1
_SHORTEST_TIMEOUT = 10.0
_LONGEST_WITHOUT_MUTANT = 600.0
# Processes of its own for each program, so that none outlives it.
_ALONE = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]


@dataclass
class Plan:
    """Programs in the order in which they are tried, each in so many parts at once, and after how many seconds each
    counts as hanging."""

    programs: list[str]
    timeouts: list[float]
    numbers: list[int]
    jobs: int
    parts: int = 1


def _start(program: str, variables: dict[str, int]) -> subprocess.Popen[bytes]:
    return subprocess.Popen(
        [*_ALONE, program],
        env={**os.environ, "GTEST_FAIL_FAST": "1", **{name: str(value) for name, value in variables.items()}},
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
        start_new_session=True,
    )


def _passes(program: str, timeout: float, number: int, parts: int) -> bool:
    sharing = {"MUTANT": number, "GTEST_TOTAL_SHARDS": parts}
    processes = [_start(program, {**sharing, "GTEST_SHARD_INDEX": index}) for index in range(parts)]
    deadline = time.monotonic() + timeout
    try:
        return all(process.wait(max(0.0, deadline - time.monotonic())) == 0 for process in processes)
    except subprocess.TimeoutExpired:
        return False
    finally:
        for process in processes:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()


def survives(plan: Plan, number: int) -> bool:
    return all(_passes(program, timeout, number, plan.parts) for program, timeout in zip(plan.programs, plan.timeouts))


def survivors(plan: Plan) -> Iterator[int]:
    """The mutants that all programs of the plan pass with. Raises an exception when, at the end, one does not pass
    without any: then nothing says that tests killed the others."""
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


def seconds_without_mutant(program: str, parts: int) -> float:
    """Raises an exception when the program does not pass."""
    start = time.monotonic()
    list(survivors(Plan([program], [_LONGEST_WITHOUT_MUTANT], [], 1, parts)))
    return time.monotonic() - start


def timeout_for(seconds: float) -> float:
    return max(_SHORTEST_TIMEOUT, 10 * seconds)


def main() -> None:
    plan = Plan(**json.load(sys.stdin))
    with ThreadPoolExecutor(plan.jobs) as pool:
        for number, has_survived in zip(plan.numbers, pool.map(lambda each: survives(plan, each), plan.numbers)):
            print(json.dumps([number, has_survived]), flush=True)


if __name__ == "__main__":
    main()
