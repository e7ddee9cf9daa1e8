"""A simulated enclosure on loopback, for tests in Python."""

import pathlib
import signal
import subprocess

PASSWORD = "sesame"


class SimulatedEnclosure:
    """Runs the simulator with a scenario for as long as the object is used as a context."""

    def __init__(self, simulator, folder, scenario, *options):
        self.password_file = pathlib.Path(folder, "password")
        self.password_file.write_text(PASSWORD + "\n")
        self.password_file.chmod(0o600)
        self._command = [simulator, "--user", "admin", "--password-file", self.password_file,
                         "--scenario", scenario, *options]
        self.address = None

    def __enter__(self):
        self._process = subprocess.Popen(self._command, stdin=subprocess.DEVNULL, text=True,
                                         stdout=subprocess.PIPE)
        line = self._process.stdout.readline()
        if not line:
            self._process.wait()
            raise RuntimeError("the simulator did not start")
        self.address = line.split()[-1]
        return self

    def __exit__(self, *_):
        end(self._process)

    def options(self):
        """What the tool needs to open a session."""
        return ["-H", self.address, "-U", "admin", "-W", "open-session-privilege",
                "--password-file", str(self.password_file)]


def end(process):
    """Ends a child of ours, and waits until it is gone."""
    process.send_signal(signal.SIGTERM)
    try:
        process.wait(timeout=20)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
    if process.stdout:
        process.stdout.close()
