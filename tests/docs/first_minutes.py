# SPDX-License-Identifier: MIT
"""Goes the way of somebody new, in a Debian of its own that has nothing yet: from the archive to the picture, to the packages,
and to a program through pkg-config and through CMake. The commands are those that stand in the README and in docs/install.md.

python3 first_minutes.py SOURCE.tar.gz DIRECTORY   as root; SOURCE unpacks into the directory `mova`
"""
import pathlib
import re
import shutil
import subprocess
import sys
import time

SOURCE = pathlib.Path(__file__).resolve().parents[2]
DEBIAN = "bookworm"


def blocks(name, language):
    """What stands between fences, in the document's order."""
    return re.findall(rf"^```{language}\n(.*?)^```$", (SOURCE / name).read_text(encoding="utf-8"), re.M | re.S)


def make_root(root, packages):
    """The packages that were fetched once serve again."""
    shutil.rmtree(root, ignore_errors=True)
    packages.mkdir(parents=True, exist_ok=True)
    subprocess.run(["debootstrap", "--variant=minbase", f"--cache-dir={packages.resolve()}", DEBIAN, root], check=True)


def run_in(root, folder, commands):
    """With a process table and mounts of its own, which end with it."""
    print(f"--- in {folder}\n{commands}", end="", flush=True)
    start = time.monotonic()
    subprocess.run(["unshare", "--mount", "--pid", "--fork", f"--mount-proc={root}/proc", "chroot", root, "/usr/bin/env", "-i",
                    "HOME=/root", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C.UTF-8", "DEBIAN_FRONTEND=noninteractive",
                    "sh", "-euc", f"mkdir -p {folder}; cd {folder}\n{commands}"], check=True, stdin=subprocess.DEVNULL)
    print(f"--- {time.monotonic() - start:.0f} s", flush=True)


def expect(condition, text):
    if not condition:
        sys.exit(f"first minutes: {text}")


def main(archive, directory):
    directory = pathlib.Path(directory)
    root = (directory / "root").resolve()
    make_root(root, directory / "fetched")
    shutil.copy("/etc/resolv.conf", root / "etc/resolv.conf")
    subprocess.run(["tar", "-xzf", archive, "-C", root / "root"], check=True)

    first, build = blocks("README.md", "sh")
    run_in(root, "/root/mova", first)
    picture = root / "root/mova/build/demo/atlas.png"
    expect(picture.exists() and picture.read_bytes().startswith(b"\x89PNG"), "no picture")

    # A program of one's own, by each way of installing: from the packages first.
    package, install, where, cmake = blocks("docs/install.md", "sh")
    work = root / "root/work"
    work.mkdir()
    (work / "ten_lines.c").write_text(blocks("README.md", "c")[0], encoding="utf-8")
    (work / "ten_lines.cpp").write_text(blocks("README.md", "cpp")[0], encoding="utf-8")
    (work / "CMakeLists.txt").write_text(blocks("docs/install.md", "cmake")[0], encoding="utf-8")
    run_in(root, "/root/mova", package)
    run_in(root, "/root/work", build + "./ten_lines\n./ten_lines_cpp\n")
    run_in(root, "/root/work", cmake)
    run_in(root, "/root/mova", "dpkg --purge libmova-checked libmova-dev libmova-container1 libmova-host1 libmova-host-system1\n")
    run_in(root, "/root/mova", install)
    run_in(root, "/root/work", f"rm -rf build ten_lines ten_lines_cpp\n{where}{build}./ten_lines\n./ten_lines_cpp\n{cmake}")
    print("first minutes: all commands did what they say")


if __name__ == "__main__":
    main(*sys.argv[1:3])
