# SPDX-License-Identifier: MIT
"""Looks at the page that the map's program writes, in headless Chromium and from the disk: pans and zooms it with the mouse and the
keys, wide and narrow, light and dark, and compares what is shown with the tiles.

python3 page_test.py PROGRAM MAP [PICTURES]   where the last one is a directory to put screenshots into
"""
import base64
import json
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import urllib.parse
import zlib

CHROMIUM = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--hide-scrollbars",
            "--disable-background-networking", "--disable-component-update", "--disable-sync", "--force-color-profile=srgb",
            "--disable-backgrounding-occluded-windows", "--disable-renderer-backgrounding", "--remote-debugging-pipe"]
PATIENCE = 30  # seconds
ZOOM = 3
KEYS = {"ArrowRight": 39, "ArrowUp": 38, "Tab": 9, "Enter": 13, "+": 187, "-": 189}

# The colours of an element's text and of what lies behind it, as a ratio: 1 is unreadable, 21 is black on white.
CONTRAST = """(selector => {
  const parts = colour => colour.match(/[0-9.]+/g).map(Number);
  const light = colour => parts(colour).slice(0, 3).map(part => part / 255)
    .map(part => part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4)
    .reduce((sum, part, i) => sum + part * [0.2126, 0.7152, 0.0722][i], 0);
  const element = document.querySelector(selector);
  let behind = element;
  while (parts(getComputedStyle(behind).backgroundColor)[3] === 0) behind = behind.parentElement;
  const both = [light(getComputedStyle(element).color), light(getComputedStyle(behind).backgroundColor)].sort((a, b) => b - a);
  return (both[0] + 0.05) / (both[1] + 0.05);
})"""

# Whether every tile that the window needs is there, as it stays, and which they are.
SHOWN = """(() => {
  const bounds = map.getPixelBounds(), last = 2 ** map.getZoom() - 1, side = 256, needed = [];
  const range = (low, high) => [Math.max(Math.floor(low / side), 0), Math.min(Math.ceil(high / side) - 1, last)];
  const [left, right] = range(bounds.min.x, bounds.max.x), [top, bottom] = range(bounds.min.y, bounds.max.y);
  for (let x = left; x <= right; ++x)
    for (let y = top; y <= bottom; ++y) needed.push(`${map.getZoom()}/${x}/${y}`);
  const shown = {};
  for (const tile of document.querySelectorAll("img.leaflet-tile-loaded")) {
    const box = tile.getBoundingClientRect();
    if (tile.naturalWidth === side && box.width === side && getComputedStyle(tile).opacity === "1")
      shown[tile.src.match(/[0-9]+.[0-9]+.[0-9]+(?=.png$)/)[0]] = [box.left, box.top];
  }
  const still = !map._animatingZoom && !(map._panAnim && map._panAnim._inProgress);
  return still && needed.every(name => name in shown) && {needed, shown};
})()"""


def pixels_of(png):
    """The picture's width, and its pixels as bytes of red, green and blue; 8 bits of colours, with transparency or of a palette."""
    at, data, palette = 8, b"", b""
    while at < len(png):
        size, kind = struct.unpack(">I4s", png[at:at + 8])
        chunk = png[at + 8:at + 8 + size]
        at += size + 12
        if kind == b"IHDR":
            width, height, _, colour = struct.unpack(">IIBB", chunk[:10])
        palette = chunk if kind == b"PLTE" else palette
        data += chunk if kind == b"IDAT" else b""
    data = zlib.decompress(data)
    parts = {2: 3, 3: 1, 6: 4}[colour]
    row, rows = bytes(width * parts), []
    for y in range(height):
        start = y * (width * parts + 1)
        row = unfiltered(data[start], bytearray(data[start + 1:start + 1 + width * parts]), row, parts)
        rows.append(row)
    if colour == 3:
        return width, b"".join(palette[3 * index:3 * index + 3] for row in rows for index in row)
    return width, b"".join(bytes(row[i:i + 3]) for row in rows for i in range(0, len(row), parts))


def unfiltered(kind, row, above, parts):
    for i in range(len(row)):
        left, up, corner = (row[i - parts], above[i], above[i - parts]) if i >= parts else (0, above[i], 0)
        nearest = min((abs(up - corner), 0, left), (abs(left - corner), 1, up), (abs(left + up - 2 * corner), 2, corner))[2]
        row[i] = (row[i] + (0, left, up, (left + up) // 2, nearest)[kind]) & 255
    return row


class Browser:
    """A window that is told what to do by Chromium's debugging protocol, through pipes."""

    def __init__(self, profile):
        reads, self.tell = os.pipe()
        self.hear, writes = os.pipe()

        def connect():
            # Chromium reads from 3 and writes to 4; either may be in the other's place now.
            fresh = os.dup(writes), os.dup(reads)
            os.dup2(fresh[1], 3)
            os.dup2(fresh[0], 4)

        self.process = subprocess.Popen([*CHROMIUM, f"--user-data-dir={profile}", "about:blank"], preexec_fn=connect,
                                        close_fds=False, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(reads)
        os.close(writes)
        self.number, self.session, self.buffer, self.requests, self.faults = 0, None, b"", [], []
        target = next(each for each in self.ask("Target.getTargets")["targetInfos"] if each["type"] == "page")
        self.session = self.ask("Target.attachToTarget", targetId=target["targetId"], flatten=True)["sessionId"]
        for domain in ("Page", "Network", "Runtime", "Log"):
            self.ask(domain + ".enable")

    def ask(self, method, **parameters):
        self.number += 1
        order = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            order["sessionId"] = self.session
        os.write(self.tell, json.dumps(order).encode() + b"\0")
        while True:
            answer = self.next_message()
            if answer.get("id") == self.number:
                assert "error" not in answer, (method, answer)
                return answer["result"]
            self.note(answer.get("method"), answer.get("params"))

    def next_message(self):
        while b"\0" not in self.buffer:
            more = os.read(self.hear, 1 << 20)
            assert more, "Chromium has gone"
            self.buffer += more
        message, _, self.buffer = self.buffer.partition(b"\0")
        return json.loads(message)

    def note(self, method, said):
        if method == "Network.requestWillBeSent":
            self.requests.append(said["request"]["url"])
        elif method == "Network.loadingFailed":
            self.faults.append(said["errorText"])
        elif method == "Runtime.exceptionThrown":
            self.faults.append(said["exceptionDetails"]["text"])
        elif method == "Log.entryAdded" and said["entry"]["level"] == "error":
            self.faults.append(said["entry"]["text"])

    def value_of(self, expression):
        result = self.ask("Runtime.evaluate", expression=expression, returnByValue=True)
        assert "exceptionDetails" not in result, (expression, result)
        return result["result"].get("value")

    def wait_for(self, expression):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            value = self.value_of(expression)
            if value:
                return value
            time.sleep(0.05)
        raise AssertionError(f"waited in vain for {expression}: {self.faults}")

    def resize(self, width, height, scheme):
        self.ask("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.ask("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def mouse(self, kind, x, y, **more):
        self.ask("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def click(self, selector):
        box = self.value_of(f"(box => [box.x + box.width / 2, box.y + box.height / 2])"
                            f"(document.querySelector('{selector}').getBoundingClientRect())")
        for kind in ("mousePressed", "mouseReleased"):
            self.mouse(kind, *box, button="left", clickCount=1)

    def drag(self, start, end):
        self.mouse("mousePressed", *start, button="left", clickCount=1)
        for part in range(1, 11):
            self.mouse("mouseMoved", *(a + (b - a) * part / 10 for a, b in zip(start, end)), button="left", buttons=1)
        time.sleep(0.3)  # at rest, it does not go on by itself
        self.mouse("mouseReleased", *end, button="left", clickCount=1)

    def press(self, key):
        text = {"text": key} if len(key) == 1 else {"text": "\r"} if key == "Enter" else {}
        self.ask("Input.dispatchKeyEvent", type="keyDown", key=key, windowsVirtualKeyCode=KEYS[key], **text)
        self.ask("Input.dispatchKeyEvent", type="keyUp", key=key, windowsVirtualKeyCode=KEYS[key])

    def screenshot(self, clip=None):
        more = {"clip": {**dict(zip(("x", "y", "width", "height"), clip)), "scale": 1}} if clip else {}
        return base64.b64decode(self.ask("Page.captureScreenshot", format="png", **more)["data"])

    def close(self):
        self.ask("Browser.close")
        self.process.wait(PATIENCE)


class Test:
    def __init__(self, browser, directory, pictures):
        self.browser, self.directory, self.pictures, self.seen = browser, directory, pictures, []

    def look(self, name, zoom):
        """All that the window needs is shown, and nothing failed; a tile in the middle looks as its file does. Returns which."""
        shown = self.browser.wait_for(f"map.getZoom() === {zoom} && {SHOWN}")
        assert not self.browser.faults, (name, self.browser.faults)
        picture = self.browser.screenshot()
        if self.pictures:
            (self.pictures / f"{name}.png").write_bytes(picture)
        assert not self.seen or picture != self.seen[-1], f"{name} looks as what was before it"
        self.seen.append(picture)
        width, height = self.browser.value_of("[innerWidth, innerHeight]")
        whole = [(tile, box) for tile, box in shown["shown"].items()
                 if 60 <= box[0] <= width - 256 and self.browser.value_of("map.getContainer().offsetTop") <= box[1] <= height - 290]
        for tile, (left, top) in whole[:1]:
            expected = pixels_of((self.directory / f"tiles/{tile}.png").read_bytes())
            assert expected == pixels_of(self.browser.screenshot((left, top, 256, 256))), f"{name}: {tile} looks different"
        return set(shown["needed"]), len(whole)

    def open(self, width, height, scheme):
        self.browser.resize(width, height, scheme)
        self.browser.ask("Page.navigate", url=(self.directory / "index.html").as_uri())
        self.browser.wait_for("document.readyState === 'complete' && typeof map === 'object'")
        for selector in ("h1", "p", "kbd", ".leaflet-control-zoom-in", ".leaflet-control-attribution"):
            contrast = self.browser.value_of(f"{CONTRAST}('{selector}')")
            assert contrast >= 4.5, (selector, scheme, contrast)
        overflow = self.browser.value_of("document.documentElement.scrollWidth - innerWidth")
        assert overflow <= 0, f"{overflow} pixels too wide at {width}"
        assert self.browser.value_of("map.getContainer().offsetHeight") > height * 2 / 3
        assert self.browser.value_of("document.querySelector('.leaflet-control-attribution').innerText") == "Leaflet | <Origin> & more"

    def wide(self):
        self.open(1400, 900, "light")
        first, whole = self.look("opened", 2)
        assert whole > 0
        self.browser.click(".leaflet-control-zoom-in")
        larger, whole = self.look("zoomed in", ZOOM)
        assert whole > 0 and len(larger) < 4 ** ZOOM and larger.isdisjoint(first)
        assert self.browser.value_of("document.querySelector('.leaflet-control-zoom-in').classList.contains('leaflet-disabled')")
        before = self.browser.value_of("map.getCenter()")
        self.browser.drag((900, 500), (650, 350))  # it is wider than the window by 648 pixels alone
        panned, whole = self.look("panned", ZOOM)
        assert whole > 0 and panned - larger and larger - panned, (panned, larger)
        moved = self.browser.value_of(f"(a => [a.x, a.y])(map.project(map.getCenter(), {ZOOM}).subtract(map.project({json.dumps(before)}, {ZOOM})))")
        assert all(abs(a - b) <= 2 for a, b in zip(moved, (250, 150))), moved
        self.browser.mouse("mouseWheel", 700, 450, deltaX=0, deltaY=30)
        self.look("wheeled out", 2)

    def narrow(self):
        self.open(400, 800, "dark")
        self.look("opened, narrow", 1)
        assert self.browser.value_of("document.activeElement === map.getContainer()")
        self.browser.press("+")
        self.look("zoomed in by keys", 2)
        place = self.browser.value_of("map.getCenter()")
        self.browser.press("ArrowRight")
        self.look("moved right by keys", 2)
        right = self.browser.value_of("map.getCenter()")
        assert right["lng"] > place["lng"] and abs(right["lat"] - place["lat"]) < 0.1, (place, right)
        self.browser.press("ArrowUp")
        self.look("moved up by keys", 2)
        assert self.browser.value_of("map.getCenter()")["lat"] > place["lat"]
        self.browser.press("Tab")
        assert self.browser.value_of("document.activeElement.className") == "leaflet-control-zoom-in"
        self.browser.press("Enter")
        self.look("zoomed in by its button's key", 3)
        self.browser.value_of("map.getContainer().focus()")
        self.browser.press("-")
        self.look("zoomed out by keys", 2)

    def files(self):
        """Nothing was asked for that does not lie beside the page."""
        inside = self.directory.as_uri() + "/"
        asked = {url for url in self.browser.requests if not url.startswith("data:")}
        outside = {url for url in asked if not url.startswith(inside)}
        assert not outside, outside
        assert {inside + name for name in ("index.html", "leaflet/leaflet.js", "leaflet/leaflet.css")} < asked
        for url in asked:
            assert pathlib.Path(urllib.parse.unquote(urllib.parse.urlsplit(url).path)).exists(), url

    def missing_tile(self):
        """One that is not there is noticed."""
        (self.directory / "tiles/1/0/0.png").unlink()
        self.browser.resize(400, 800, "light")
        self.browser.ask("Network.setCacheDisabled", cacheDisabled=True)
        self.browser.ask("Page.navigate", url=(self.directory / "index.html").as_uri())
        end = time.monotonic() + PATIENCE
        while not self.browser.faults and time.monotonic() < end:
            self.browser.value_of("1")
        assert any("FILE_NOT_FOUND" in each for each in self.browser.faults), self.browser.faults


def main(program, world, pictures=None):
    scratch = pathlib.Path(tempfile.mkdtemp())
    directory = scratch / "map of the world"
    subprocess.run([program, world, "--page", directory, "--zoom", str(ZOOM), "--attribution", "<Origin> & more"], check=True)
    browser = Browser(scratch / "profile")
    try:
        test = Test(browser, directory, pictures and pathlib.Path(pictures))
        for part in (test.wide, test.narrow, test.files, test.missing_tile):
            part()
        browser.close()
        print(f"{len(test.seen)} views, {len(set(browser.requests))} files")
    finally:
        browser.process.kill()
        browser.process.wait()
        shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    main(*sys.argv[1:])
