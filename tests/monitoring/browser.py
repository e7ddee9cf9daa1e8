"""Shows pages in a browser without a screen, and tells what is to be seen."""

import struct
import subprocess
import tempfile
import zlib

BROWSER = "/usr/bin/chromium"


def photograph(page, picture, width=1000, height=1100):
    """Writes a picture of the page, and returns what the page wrote to the console."""
    with tempfile.TemporaryDirectory() as profile:
        command = [BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                   "--disable-dev-shm-usage", "--no-first-run", f"--user-data-dir={profile}",
                   f"--window-size={width},{height}", f"--screenshot={picture}",
                   "--enable-logging=stderr", page.absolute().as_uri()]
        result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                timeout=60, check=True)
    return [line for line in result.stderr.splitlines() if ":CONSOLE" in line]


def _chunks(data):
    position = 8
    while position < len(data):
        length, kind = struct.unpack_from(">I4s", data, position)
        yield kind, data[position + 8:position + 8 + length]
        position += 12 + length


def _paeth(left, above, corner):
    guess = left + above - corner
    return min((left, above, corner), key=lambda value: abs(guess - value))


def _restore(kind, row, above, size):
    """Undoes the filter of one row in place."""
    if kind == 2:
        row[:] = bytes((now + up) & 255 for now, up in zip(row, above))
    elif kind:
        for index, byte in enumerate(row):
            left, corner = (row[index - size], above[index - size]) if index >= size else (0, 0)
            up = above[index]
            added = {1: left, 3: (left + up) // 2, 4: _paeth(left, up, corner)}[kind]
            row[index] = (byte + added) & 255


def colours(picture):
    """The set of colours in a picture of 8 bits a channel, as the browser writes it."""
    chunks = list(_chunks(picture.read_bytes()))
    width, height, depth, layout, _, _, interlaced = struct.unpack(">IIBBBBB", chunks[0][1])
    size = {2: 3, 6: 4}[layout]
    assert depth == 8 and not interlaced, f"{picture} is no plain picture of 8 bits a channel"
    data = zlib.decompress(b"".join(content for kind, content in chunks if kind == b"IDAT"))
    found = set()
    above = bytearray(width * size)
    for start in range(0, height * (1 + width * size), 1 + width * size):
        row = bytearray(data[start + 1:start + 1 + width * size])
        _restore(data[start], row, above, size)
        found.update(zip(*(row[channel::size] for channel in range(3))))
        above = row
    return found
