#!/usr/bin/env python3
"""check_install.py BUILD_DIR: `cmake --install` into a scratch prefix, then
checks what a desktop needs from it. Prints every fault found and exits 1
when there is one."""

import configparser
import os
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

APP_ID = "org.velloran.Velloran"
MIME_TYPE = "application/x-velloran-composition-info"
PNG_SIZES = [16, 22, 24, 32, 48, 64, 128, 256, 512]

faults = []


def fault(message):
    faults.append(message)


def run(command, **kwargs):
    return subprocess.run(command, capture_output=True, text=True, **kwargs)


def png_size(path):
    with open(path, "rb") as f:
        head = f.read(24)
    if len(head) < 24 or head[:8] != b"\x89PNG\r\n\x1a\n" or head[12:16] != b"IHDR":
        return None
    return struct.unpack(">II", head[16:24])


def check_programs(prefix):
    for name in ("velloran", "velloran-cli"):
        path = os.path.join(prefix, "bin", name)
        if not os.access(path, os.X_OK):
            fault(f"{path} is not an installed program")
    components = os.path.join(prefix, "share", "velloran", "standard-components")
    if not os.path.isfile(os.path.join(components, "ToolbarComponents.plist")):
        fault(f"{components} lacks the standard components")
    version = run([os.path.join(prefix, "bin", "velloran-cli"), "--help"])
    if version.returncode != 0:
        fault(f"the installed velloran-cli does not run: {version.stderr.strip()}")


def check_desktop_entry(prefix):
    path = os.path.join(prefix, "share", "applications", APP_ID + ".desktop")
    if not os.path.isfile(path):
        fault(f"no desktop entry at {path}")
        return
    checked = run(["desktop-file-validate", path])
    if checked.returncode != 0 or checked.stdout.strip():
        fault(f"desktop-file-validate: {checked.stdout.strip()} {checked.stderr.strip()}")
    entry = configparser.ConfigParser(interpolation=None)
    entry.optionxform = str
    entry.read(path, encoding="utf-8")
    fields = entry["Desktop Entry"]
    program = fields.get("Exec", "").split()[0] if fields.get("Exec") else ""
    if not os.access(os.path.join(prefix, "bin", program), os.X_OK):
        fault(f"Exec names {program!r}, which is not installed")
    if fields.get("Icon") != APP_ID:
        fault(f"Icon is {fields.get('Icon')!r}, not the installed {APP_ID}")
    if MIME_TYPE not in fields.get("MimeType", "").split(";"):
        fault(f"the entry does not offer to open {MIME_TYPE}")


def check_metainfo(prefix):
    path = os.path.join(prefix, "share", "metainfo", APP_ID + ".metainfo.xml")
    if not os.path.isfile(path):
        fault(f"no AppStream file at {path}")
        return
    checked = run(["appstreamcli", "validate", "--no-net", "--strict", path])
    if checked.returncode != 0:
        fault(f"appstreamcli validate: {checked.stdout.strip()} {checked.stderr.strip()}")
    launchable = ET.parse(path).getroot().find("launchable")
    if launchable is None or launchable.text != APP_ID + ".desktop":
        fault("the AppStream file does not launch the installed desktop entry")


def check_icons(prefix):
    hicolor = os.path.join(prefix, "share", "icons", "hicolor")
    for side in PNG_SIZES:
        path = os.path.join(hicolor, f"{side}x{side}", "apps", APP_ID + ".png")
        if not os.path.isfile(path):
            fault(f"no {side}x{side} icon")
            continue
        size = png_size(path)
        if size != (side, side):
            fault(f"{path} is {size}, not {side}x{side}")
    svg = os.path.join(hicolor, "scalable", "apps", APP_ID + ".svg")
    try:
        root = ET.parse(svg).getroot()
        if not root.tag.endswith("svg") or "viewBox" not in root.attrib:
            fault(f"{svg} is not a scalable SVG picture")
        if len(list(root.iter())) < 5:
            fault(f"{svg} holds no drawing")
    except (OSError, ET.ParseError) as error:
        fault(f"{svg}: {error}")


def check_mime(prefix):
    packages = os.path.join(prefix, "share", "mime")
    source = os.path.join(packages, "packages", APP_ID + ".xml")
    if not os.path.isfile(source):
        fault(f"no shared-mime-info entry at {source}")
        return
    # The database tool rejects a malformed entry; its glob table then says
    # which type a package's info file gets.
    built = run(["update-mime-database", "-V", packages])
    if built.returncode != 0:
        fault(f"update-mime-database: {built.stderr.strip()}")
        return
    with open(os.path.join(packages, "globs2"), encoding="utf-8") as f:
        globs = [line.strip().split(":") for line in f if not line.startswith("#")]
    if not any(g[1] == MIME_TYPE and g[2] == "CompositionInfo.xml" for g in globs if len(g) >= 3):
        fault("the MIME database does not give CompositionInfo.xml our type")


def main():
    if len(sys.argv) != 2:
        print("usage: check_install.py BUILD_DIR", file=sys.stderr)
        return 2
    with tempfile.TemporaryDirectory(prefix="velloran-install-") as prefix:
        installed = run(["cmake", "--install", sys.argv[1], "--prefix", prefix])
        if installed.returncode != 0:
            print(f"cmake --install failed (are velloran, velloran-cli and velloran-icons built?):\n"
                  f"{installed.stderr}", file=sys.stderr)
            return 1
        check_programs(prefix)
        check_desktop_entry(prefix)
        check_metainfo(prefix)
        check_icons(prefix)
        check_mime(prefix)
    for message in faults:
        print("install:", message, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
