"""Which sources each folder's mutants are made of, and which test programs are to notice them."""

from __future__ import annotations

from dataclasses import dataclass


@dataclass(frozen=True)
class Folder:
    """Programs stand below the build folder, and are built as the targets that their names end with; behind a blank may
    stand which of their tests are run. What survives the quick ones meets the slow ones. Without a sample, every mutant is tried."""

    sources: str
    quick: tuple[str, ...]
    slow: tuple[str, ...] = ()
    sample: int | None = 200
    settings: tuple[str, ...] = ()


_PLATFORM_TESTS = tuple(
    f"tests/platform/{name}"
    for name in ("client_time_tests", "ipmi_client_tests", "platform_tests", "smminfo_tests", "host_address_tests")
)
_PLATFORM_ON_THE_WIRE = (
    "tests/wire/wire_tests",
    "tests/wire/address_tests",
    "tests/faults/fault_tests OpeningAnswers.*",
    "tests/platform/fork_tests",
    "tests/faults/memory_tests",
)

_REPORT_TEST = "tests/report/report_test"
_WITH_SCHEMA = "JsonFormatTest.*:JsonSchema.*"  # each process of these starts a validator, which takes most of the time

FOLDERS = {
    "module": Folder(
        "module", ("tests/unit/unit_tests",), sample=None, settings=("-DPOVEIXME_BUILD_TOOLS=OFF",)
    ),
    "platform": Folder("platform", _PLATFORM_TESTS, _PLATFORM_ON_THE_WIRE),
    "reading": Folder("reading", ("tests/reading/reading_test",), ("tests/secrets/wiping_test",)),
    "report": Folder("report", (f"{_REPORT_TEST} *-{_WITH_SCHEMA}",), (f"{_REPORT_TEST} {_WITH_SCHEMA}",)),
    "simulator": Folder(
        "simulator",
        ("tests/simulator/simulator_test", "tests/simulator/simulator_module_test"),
        ("tests/simulator/simulator_process_test",),
    ),
}
