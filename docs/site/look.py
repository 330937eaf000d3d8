# SPDX-License-Identifier: MIT
"""Looks at the site as readers do: every link must lead somewhere, and in headless Chromium, from the disk, in light and dark,
at 400 and 1400 pixels, nothing may be wider than the window, unreadable, or missing.

python3 look.py DIRECTORY   the directory that holds html/
"""
import html.parser
import http.server
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import urllib.parse

CHROMIUM = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--hide-scrollbars",
            "--disable-background-networking", "--disable-component-update", "--disable-sync", "--allow-file-access-from-files",
            "--disable-backgrounding-occluded-windows", "--disable-renderer-backgrounding"]
SCHEMES = {"dark": 0, "light": 1}
SECONDS = 120


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.places, self.links, self.resources = set(), set(), set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        given = dict(attributes)
        self.places |= {given[each] for each in ("id", "name") if each in given}
        if tag == "a" and given.get("href"):
            self.links.add(given["href"])
        if tag in ("img", "script", "iframe") and given.get("src"):
            self.resources.add(given["src"])
        if tag == "link" and given.get("href"):
            self.resources.add(given["href"])


def broken_links(folder):
    pages = {path.relative_to(folder).as_posix(): Page(path) for path in sorted(folder.rglob("*.html"))}
    for name, page in pages.items():
        for link in sorted(page.links | page.resources):
            where = urllib.parse.urlsplit(link)
            if where.scheme in ("http", "https"):
                if link in page.resources:
                    yield f"{name}: needs the network for {link}"
                continue
            if where.scheme:
                continue
            path = urllib.parse.unquote(where.path)
            target = os.path.normpath(os.path.join(os.path.dirname(name), path)) if path else name
            if not (folder / target).exists():
                yield f"{name}: {link} is not there"
            elif where.fragment and target in pages and urllib.parse.unquote(where.fragment) not in pages[target].places:
                yield f"{name}: {link} has no such place"
    if len(pages) < 50:
        yield f"only {len(pages)} pages"


class Told(http.server.BaseHTTPRequestHandler):
    """Takes what the page found."""

    def do_POST(self):
        self.server.said = self.rfile.read(int(self.headers["Content-Length"])).decode()
        self.send_response(200)
        self.end_headers()
        threading.Thread(target=self.server.shutdown).start()

    def log_message(self, *_):
        pass


def pages_of(directory):
    """All but lists of members and the further letters of an index, of which one is like the other."""
    names = sorted(path.name for path in (directory / "html").glob("*.html"))
    return [name for name in names if not re.match(r"dir_|(functions|globals|namespacemembers)_|.*-members", name)]


def looked_at(directory, scheme):
    """What look.html says of the pages in a scheme."""
    server = http.server.HTTPServer(("127.0.0.1", 0), Told)
    server.said = "Chromium said nothing"
    pages = pages_of(directory)
    query = urllib.parse.urlencode({"scheme": scheme, "port": server.server_port, "pages": ",".join(pages)})
    with tempfile.TemporaryDirectory() as profile, open(directory / f"chromium-{scheme}.log", "w", encoding="utf-8") as log:
        browser = subprocess.Popen([*CHROMIUM, f"--user-data-dir={profile}", f"--blink-settings=preferredColorScheme={SCHEMES[scheme]}",
                                    "--remote-debugging-port=0", f"{(directory / 'look.html').as_uri()}?{query}"],
                                   stdout=log, stderr=log)
        limit = threading.Timer(SECONDS, server.shutdown)
        limit.start()
        server.serve_forever()
        limit.cancel()
        browser.terminate()
        browser.wait()
    lines = server.said.split("\n")
    if f"looked at {len(pages)} pages" != lines[-1]:
        return lines
    return lines[:-1]


def main(directory):
    directory = pathlib.Path(directory).resolve()
    faults = list(broken_links(directory / "html"))
    shutil.copy(pathlib.Path(__file__).parent / "look.html", directory)
    found = {}
    threads = [threading.Thread(target=lambda scheme=scheme: found.update({scheme: looked_at(directory, scheme)})) for scheme in SCHEMES]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for scheme in SCHEMES:
        faults += found.get(scheme, [f"{scheme}: not looked at"])
    print("\n".join(faults))
    print(f"{len(faults)} faults")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main(sys.argv[1])
