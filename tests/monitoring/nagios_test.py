#!/usr/bin/env python3
"""Lets Nagios run the tool's check on a simulated enclosure, and reads what it made of the result.

usage: nagios_test.py TOOL SIMULATOR SCENARIOS
"""

import getpass
import grp
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import time
import unittest

from enclosure import PASSWORD, SimulatedEnclosure, end

# Where Debian has it, which is not on every user's path.
NAGIOS = "/usr/sbin/nagios4"
TOOL, SIMULATOR, SCENARIOS = map(os.path.abspath, sys.argv[1:4])

# More than the time that the check is given, and that Nagios gives it.
PATIENCE_SECONDS = 100

# Services are checked at once, and not a second time while the test ends what it started.
SETTINGS = """\
cfg_file={folder}/objects.cfg
log_file={folder}/nagios.log
object_cache_file={folder}/objects.cache
status_file={folder}/status.dat
temp_file={folder}/nagios.tmp
temp_path={folder}
check_result_path={folder}/results
lock_file={folder}/nagios.lock
command_file={folder}/nagios.cmd
query_socket={folder}/nagios.qh
nagios_user={user}
nagios_group={group}
status_update_interval=1
interval_length=1
service_inter_check_delay_method=n
service_check_timeout=70
check_workers=1
use_syslog=0
check_for_updates=0
check_external_commands=0
enable_notifications=0
retain_state_information=0
"""

OBJECTS = """\
define timeperiod {{
  timeperiod_name  always
  alias            always
  sunday           00:00-24:00
  monday           00:00-24:00
  tuesday          00:00-24:00
  wednesday        00:00-24:00
  thursday         00:00-24:00
  friday           00:00-24:00
  saturday         00:00-24:00
}}
define contact {{
  contact_name                   nobody
  host_notifications_enabled     0
  service_notifications_enabled  0
  host_notification_period       always
  service_notification_period    always
  host_notification_commands     check_smm
  service_notification_commands  check_smm
}}
define command {{
  command_name  check_smm
  command_line  {command}
}}
define host {{
  host_name              enclosure
  address                {address}
  max_check_attempts     1
  check_period           always
  notification_period    always
  active_checks_enabled  0
  contacts               nobody
}}
define service {{
  host_name            enclosure
  service_description  SMM
  check_command        check_smm
  max_check_attempts   1
  check_interval       600
  retry_interval       600
  check_period         always
  notification_period  always
  contacts             nobody
}}
"""


def write_configuration(folder, enclosure):
    options = enclosure.options()
    options[options.index("-H") + 1] = "$HOSTADDRESS$"
    command = [TOOL, "--nagios", *options, "--timeout", "50"]
    quoted = " ".join(word if word == "$HOSTADDRESS$" else shlex.quote(word) for word in command)
    pathlib.Path(folder, "results").mkdir()
    pathlib.Path(folder, "objects.cfg").write_text(
        OBJECTS.format(command=quoted, address=enclosure.address))
    settings = pathlib.Path(folder, "nagios.cfg")
    settings.write_text(SETTINGS.format(folder=folder, user=getpass.getuser(),
                                        group=grp.getgrgid(os.getgid()).gr_name))
    return settings


def service_status(folder):
    """What Nagios states of the service; nothing before its first check has ended."""
    try:
        text = pathlib.Path(folder, "status.dat").read_text()
    except FileNotFoundError:
        return {}
    block = re.search(r"^servicestatus \{\n(.*?)^\t\}", text, re.MULTILINE | re.DOTALL)
    if not block:
        return {}
    status = dict(line.strip().split("=", 1) for line in block[1].splitlines() if "=" in line)
    return status if status.get("has_been_checked") == "1" else {}


def status_after_a_check(folder, settings):
    """Runs Nagios until a check has ended. Nagios' own words are shown when none does."""
    with open(pathlib.Path(folder, "output"), "w+") as output:
        nagios = subprocess.Popen([NAGIOS, settings], stdin=subprocess.DEVNULL, stdout=output,
                                  stderr=subprocess.STDOUT)
        try:
            deadline = time.monotonic() + PATIENCE_SECONDS
            while time.monotonic() < deadline and nagios.poll() is None:
                status = service_status(folder)
                if status:
                    return status
                time.sleep(0.5)
        finally:
            end(nagios)
        output.seek(0)
        raise AssertionError("Nagios ended no check:\n" + output.read())


def judged(scenario):
    """The service's status for an enclosure with the scenario, and what Nagios wrote."""
    with tempfile.TemporaryDirectory() as folder:
        with SimulatedEnclosure(SIMULATOR, folder, pathlib.Path(SCENARIOS, scenario),
                                "--generation", "2", "--platform", "254") as enclosure:
            status = status_after_a_check(folder, write_configuration(folder, enclosure))
        written = "".join(pathlib.Path(folder, name).read_text()
                          for name in ("nagios.log", "output", "objects.cache"))
    return status, written + "".join(status.values())


class NagiosTest(unittest.TestCase):
    maxDiff = None

    def test_node_with_a_fault_is_critical_with_our_line_and_numbers(self):
        status, written = judged("node-fault.json")
        self.assertEqual("2", status["current_state"], status)
        self.assertEqual("SMM CRITICAL - node 2 power fault", status["plugin_output"])
        self.assertRegex(status["performance_data"], r"^'chassis_\w+'=\d+")
        self.assertNotIn(PASSWORD, written)

    def test_healthy_enclosure_is_ok(self):
        status, _ = judged("healthy.json")
        self.assertEqual("0", status["current_state"], status)
        self.assertRegex(status["plugin_output"], r"^SMM OK")


if __name__ == "__main__":
    if not os.access(NAGIOS, os.X_OK):
        sys.exit(f"the program {NAGIOS} cannot be run; expected package nagios4-core, "
                 "which scripts/setup thorough installs")
    unittest.main(argv=sys.argv[:1], verbosity=2)
