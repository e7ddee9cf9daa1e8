#!/usr/bin/python3 -B
"""Tests of the generator on a small program: which mutants it makes of it, and that each does something when it is on.

usage: mutants_test.py COMPILER, the clang to build the program with"""

from __future__ import annotations

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from equivalents import read_equivalents, unmatched
from mutant import Mutant
from switching import Switching
from testing import names_of_tests, parts_for, timeout_for

HERE = Path(__file__).resolve().parent
SAMPLE = HERE / "sample"
ARGUMENTS = ["-std=c++17", "-Wno-c++11-narrowing"]
COMPILER = "clang++"


def switching_of(folder: Path, source: str) -> Switching:
    return Switching(folder, folder, [source], lambda _: ARGUMENTS, HERE / "Switch.h")


class SampleTest(unittest.TestCase):
    folder: tempfile.TemporaryDirectory[str]
    mutants: dict[int, Mutant]

    @classmethod
    def setUpClass(cls) -> None:
        cls.folder = tempfile.TemporaryDirectory()
        copy = Path(cls.folder.name) / "Sample.cpp"
        copy.write_bytes((SAMPLE / "Sample.cpp").read_bytes())
        switching = switching_of(copy.parent, "Sample.cpp")
        switching.find()
        switching.drop_what_does_not_compile()
        switching.write()
        cls.mutants, cls.switched = switching.mutants, copy.read_text()
        cls.program = copy.with_suffix("")
        cls.environment = copy.with_suffix(".environment")
        own = ["-w", f'-DMUTANTS_ENVIRONMENT_OF_THE_TEST="{cls.environment}"', "-include", str(HERE / "Switch.h")]
        subprocess.run([COMPILER, *ARGUMENTS, *own, str(copy), "-o", str(cls.program)], check=True)

    @classmethod
    def tearDownClass(cls) -> None:
        cls.folder.cleanup()

    def outcome(self, number: int) -> tuple[int, bytes] | None:
        environment = {**os.environ, "MUTANT": str(number)}
        try:
            result = subprocess.run([self.program], env=environment, capture_output=True, timeout=5, check=False)
        except subprocess.TimeoutExpired:
            return None
        return result.returncode, result.stdout

    def test_mutants_are_the_expected_ones(self) -> None:
        made = [f"{each.operator}: {each.before} => {each.after}".strip() for each in self.mutants.values()]
        self.assertEqual((SAMPLE / "expected").read_text().splitlines(), made)

    def test_program_without_a_mutant_does_what_it_did(self) -> None:
        original = self.program.with_suffix(".original")
        subprocess.run([COMPILER, *ARGUMENTS, SAMPLE / "Sample.cpp", "-o", original], check=True)
        expected = subprocess.run([original], capture_output=True, check=True)
        self.assertEqual(self.outcome(0), (0, expected.stdout))

    def test_each_mutant_changes_what_the_program_does(self) -> None:
        unchanged = self.outcome(0)
        for number, mutant in self.mutants.items():
            with self.subTest(str(mutant)):
                self.assertNotEqual(self.outcome(number), unchanged)

    def test_program_tells_which_mutants_it_reaches(self) -> None:
        with tempfile.NamedTemporaryFile() as reached:
            reached.truncate(max(self.mutants) + 1)
            variables = {"MUTANT": "0", "MUTANTS_REACHED": reached.name}
            subprocess.run([self.program], env={**os.environ, **variables}, capture_output=True, check=True)
            bytes_of_numbers = reached.read()
        self.assertEqual([number for number in self.mutants if not bytes_of_numbers[number]], [])

    def test_programs_that_a_test_starts_without_its_environment_have_the_mutant_too(self) -> None:
        number = next(number for number in self.mutants if self.outcome(number) not in (None, self.outcome(0)))
        self.environment.write_bytes(b"PATH=/usr/bin\0MUTANT=%d\0" % number)
        started = subprocess.run([self.program], env={}, capture_output=True, check=False)
        self.environment.unlink()
        self.assertEqual((started.returncode, started.stdout), self.outcome(number))

    def test_statements_stay_on_their_lines(self) -> None:
        lines = (SAMPLE / "Sample.cpp").read_text().splitlines()
        switched = self.switched.splitlines()
        self.assertEqual(len(switched), len(lines))
        for before, after in zip(lines, switched):
            for word in ("SAMPLE_LOG", "steps += ", "switch", "printf"):
                self.assertLessEqual(before.count(word), after.count(word))


class DroppingTest(unittest.TestCase):
    def test_mutants_that_do_not_compile_are_left_out_and_others_stay(self) -> None:
        with tempfile.TemporaryDirectory() as name:
            text = "int f(int* p, int* q) { return *p < 1 ? int(p - q) : sizeof(char[8]); }\n"
            (Path(name) / "a.cpp").write_text(text)
            switching = switching_of(Path(name), "a.cpp")
            switching.find()
            found = {mutant.operator for mutant in switching.mutants.values()}
            switching.drop_what_does_not_compile()
            kept = {mutant.operator for mutant in switching.mutants.values()}
        self.assertIn("arithmetic", found)
        self.assertNotIn("arithmetic", kept)
        self.assertLessEqual({"comparison", "boundary", "sibling", "constant", "return"}, kept)


class UnnoticeableTest(unittest.TestCase):
    def mutants(self, text: str) -> list[Mutant]:
        with tempfile.TemporaryDirectory() as name:
            (Path(name) / "a.cpp").write_text(text)
            switching = switching_of(Path(name), "a.cpp")
            switching.find()
        return list(switching.mutants.values())

    def operators(self, text: str) -> set[str]:
        return {mutant.operator for mutant in self.mutants(text)}

    def test_lower_of_two_numbers_is_not_taken_the_other_way_round(self) -> None:
        code = "#include <algorithm>\nint g(int, int); int f(int a, int b) { return %s(a, b); }\n"
        self.assertIn("arguments", self.operators(code % "g"))
        self.assertNotIn("arguments", self.operators(code % "std::min"))

    def test_value_that_is_returned_anyway_is_not_returned_early(self) -> None:
        code = "enum class E { First, Second }; E f() { return E::%s; }\n"
        self.assertIn("return", self.operators(code % "Second"))
        self.assertNotIn("return", self.operators(code % "First"))

    def test_boolean_constant_becomes_the_other_value_rather_than_more_than_it(self) -> None:
        code = "constexpr %s kOne = 1; int g(int); int f() { return g(kOne); }\n"
        changed = {kind: {each.after.split("return ")[-1] for each in self.mutants(code % kind)} for kind in ("int", "bool")}
        self.assertIn("g(increased(kOne)); }", changed["int"])
        self.assertIn("g(!kOne); }", changed["bool"])
        self.assertNotIn("g(increased(kOne)); }", changed["bool"])

    def test_break_with_nothing_behind_it_is_not_deleted(self) -> None:
        code = "void f(int& a) { switch (a) { case 1: ++a; %s case 2: --a; %s case 3: case 4: %s } }"
        breaks = ("break;  //1\n", "break;  //2\n", "break;  //3\n")
        text = code % breaks
        places = {mutant.edits[0].start for mutant in self.mutants(text)}
        self.assertEqual([text.index(each) in places for each in breaks], [True, False, False])


class IncludedTest(unittest.TestCase):
    def test_what_is_included_within_a_declaration_is_left_alone(self) -> None:
        with tempfile.TemporaryDirectory() as name:
            (Path(name) / "a.h").write_text("\n" * 99 + "inline int g() { return 8; }\n")
            (Path(name) / "a.cpp").write_text('extern "C" {\n#include "a.h"\n}\nint f() { return 7; }\n')
            switching = switching_of(Path(name), "a.cpp")
            switching.find()
        self.assertEqual({mutant.function for mutant in switching.mutants.values()}, {"f"})


class EncodingTest(unittest.TestCase):
    def test_places_are_right_behind_characters_of_several_bytes(self) -> None:
        with tempfile.TemporaryDirectory() as name:
            (Path(name) / "a.cpp").write_text("// äöü\nint f() { return 7; }\n", encoding="utf-8")
            switching = switching_of(Path(name), "a.cpp")
            switching.find()
        self.assertIn("int f() { return 8; }", [mutant.after for mutant in switching.mutants.values()])


class EquivalentsTest(unittest.TestCase):
    ENTRY = "# why\n\n@ a/b.cpp f boundary\n- x < 1\n+ x <= 1\n= because\n"

    def entries(self, text: str) -> dict[tuple[str, str, str, str, str], str]:
        with tempfile.NamedTemporaryFile("w") as file:
            file.write(text)
            file.flush()
            return read_equivalents(Path(file.name))

    def test_entry_names_its_mutant_wherever_the_line_stands(self) -> None:
        mutants = [Mutant("a/b.cpp", line, "f", "boundary", "x < 1", "x <= 1", ()) for line in (3, 7)]
        entries = self.entries(self.ENTRY)
        self.assertEqual([entries.get(mutant.key) for mutant in mutants], ["because", "because"])
        self.assertEqual(unmatched(entries, mutants, "a"), [])

    def test_entry_without_a_mutant_is_found_out_in_its_own_folder(self) -> None:
        self.assertEqual(len(unmatched(self.entries(self.ENTRY), [], "a")), 1)
        self.assertEqual(unmatched(self.entries(self.ENTRY), [], "b"), [])

    def test_incomplete_entry_is_refused(self) -> None:
        with self.assertRaises(ValueError):
            self.entries("@ a/b.cpp f boundary\n+ x <= 1\n")
        with self.assertRaises(ValueError):
            self.entries("@ a/b.cpp f boundary\n- x < 1\n")

    def test_recorded_entries_can_be_read(self) -> None:
        read_equivalents(HERE / "equivalents")


class ListingTest(unittest.TestCase):
    def test_tests_are_named_with_their_suites(self) -> None:
        listing = "Running main() from here\nOne.\n  First\nAll/Two/Typed.  # TypeParam = int\n  Second/0  # GetParam() = 1\n"
        self.assertEqual(names_of_tests(listing), ["One.First", "All/Two/Typed.Second/0"])


class TimeoutTest(unittest.TestCase):
    def test_what_takes_seconds_runs_in_parts(self) -> None:
        self.assertEqual([parts_for(0.1), parts_for(3.5), parts_for(100.0)], [1, 3, 8])

    def test_quick_programs_get_some_seconds_and_slow_ones_ten_times_what_they_take(self) -> None:
        self.assertEqual([timeout_for(0.1), timeout_for(3.0)], [10.0, 30.0])


if __name__ == "__main__":
    if len(sys.argv) > 1:
        COMPILER = sys.argv.pop(1)
    unittest.main()
