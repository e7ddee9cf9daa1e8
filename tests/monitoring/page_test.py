#!/usr/bin/env python3
"""Shows the tool's pages in a browser: they are not blank, and nothing is wrong in the console.

usage: page_test.py TOOL SIMULATOR SCENARIOS FLEET_PAGE [PICTURES]

FLEET_PAGE is the program that prints the page of a fleet. With PICTURES, an existing folder, it keeps the pictures that
the documentation shows there.
"""

import concurrent.futures
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from browser import BROWSER, colours, photograph
from enclosure import SimulatedEnclosure

TOOL, SIMULATOR, SCENARIOS, FLEET_PAGE = map(os.path.abspath, sys.argv[1:5])
PICTURES = sys.argv[5] if len(sys.argv) > 5 else None
ENCLOSURES = {"first": ["--generation", "1"], "second": ["--generation", "2", "--platform", "253"]}
KEPT = {"second-healthy": "page-healthy", "second-node-fault": "page-node-fault",
        "fleet": "page-fleet"}

# Smooth letters alone have some hundred shades of grey, and a healthy page has no other colours.
FEWEST_COLOURS = 100
GREATEST_PICTURE_BYTES = 150_000


def page_of_scenario(folder, name, options, scenario):
    """What the tool makes of an enclosure with the scenario."""
    own = pathlib.Path(folder, name)
    own.mkdir()
    with SimulatedEnclosure(SIMULATOR, own, scenario, *options) as enclosure:
        command = [TOOL, "--format", "html", *enclosure.options()]
        result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True,
                                timeout=200, check=False)
    page = own / "page.html"
    page.write_bytes(result.stdout)
    return page


def all_pages(folder):
    """The file of each page by the page's name. Readings mostly wait, so all run at once."""
    pages = {}
    scenarios = sorted(pathlib.Path(SCENARIOS).glob("*.json"))
    with concurrent.futures.ThreadPoolExecutor(len(ENCLOSURES) * len(scenarios)) as pool:
        for kind, options in ENCLOSURES.items():
            for scenario in scenarios:
                name = f"{kind}-{scenario.stem}"
                pages[name] = pool.submit(page_of_scenario, folder, name, options, scenario)
    pages = {name: page.result() for name, page in pages.items()}
    pages["fleet"] = pathlib.Path(folder, "fleet.html")
    pages["fleet"].write_bytes(subprocess.run([FLEET_PAGE], capture_output=True, check=True).stdout)
    return pages


def coloured(found):
    """The colours that are no shades of grey."""
    return {colour for colour in found if max(colour) - min(colour) > 40}


class PageTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def photograph_text(self, text):
        page = self.folder / "page.html"
        page.write_text("<!DOCTYPE html><title>page</title>" + text)
        console = photograph(page, self.folder / "page.png", 400, 300)
        return console, colours(self.folder / "page.png")

    def test_blank_page_has_one_colour(self):
        self.assertEqual(([], {(255, 255, 255)}), self.photograph_text(""))

    def test_colours_are_told_from_shades_of_grey(self):
        self.assertEqual(set(), coloured(self.photograph_text("<p>words and nothing else</p>")[1]))
        self.assertIn((255, 0, 0), coloured(self.photograph_text("<body bgcolor='red'>")[1]))

    def test_error_in_the_console_is_noticed(self):
        console, _ = self.photograph_text("<script>console.error('wrong');</script>")
        self.assertIn("wrong", "".join(console))

    def test_page_is_not_blank_has_colour_for_faults_alone_and_leaves_the_console_empty(self):
        for name, page in all_pages(self.folder).items():
            with self.subTest(page=name):
                picture = self.folder / f"{name}.png"
                self.assertEqual([], photograph(page, picture))
                found = colours(picture)
                self.assertGreaterEqual(len(found), FEWEST_COLOURS)
                if name.endswith(("healthy", "node-fault", "fleet")):
                    self.assertNotEqual(name.endswith("healthy"), bool(coloured(found)))
                if name in KEPT:
                    self.assertLess(picture.stat().st_size, GREATEST_PICTURE_BYTES)
                if name in KEPT and PICTURES:
                    shutil.copyfile(picture, pathlib.Path(PICTURES, KEPT[name] + ".png"))


if __name__ == "__main__":
    if not os.access(BROWSER, os.X_OK):
        sys.exit(f"the program {BROWSER} cannot be run; expected package chromium, "
                 "which scripts/setup thorough installs")
    unittest.main(argv=sys.argv[:1], verbosity=2)
