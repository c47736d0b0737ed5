#!/usr/bin/env python3
"""Remakes the hostile ZIP inputs next to this script.

zip-overlapping-records.zip: 100 central records sharing one local record of a megabyte of
zeros, 6 KB that would unpack to 100 MiB. zip-with-links.zip: links to /etc and out of the
folder, between regular files.
"""
import os
import struct
import zipfile
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))


def overlapping_records(path, count=100):
    data = bytes(1 << 20)
    packed = zlib.compress(data, 9)[2:-4]  # raw deflate, without the zlib wrapper
    crc = zlib.crc32(data)
    local = struct.pack("<IHHHHHIIIHH", 0x04034B50, 20, 0, 8, 0, 0x21, crc, len(packed), len(data),
                        9, 0) + b"zeros.bin" + packed
    central = b"".join(struct.pack("<IHHHHHHIIIHHHHHII", 0x02014B50, 0x031E, 20, 0, 8, 0, 0x21, crc,
                                   len(packed), len(data), 3, 0, 0, 0, 0, 0o100644 << 16, 0)
                       + b"%03d" % index for index in range(count))
    end = struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, count, count, len(central), len(local), 0)
    with open(path, "wb") as out:
        out.write(local + central + end)


def with_links(path):
    with zipfile.ZipFile(path, "w") as archive:
        for name, mode, contents in (("Tree/", 0o40755, ""), ("Tree/readme.txt", 0o100644, "read me first"),
                                     ("Tree/etc", 0o120777, "/etc"), ("Tree/up", 0o120777, "../../.."),
                                     ("Tree/after.txt", 0o100644, "written after the links")):
            info = zipfile.ZipInfo(name, date_time=(2020, 1, 1, 0, 0, 0))
            info.create_system = 3  # Unix, where the mode's type bits mean something
            info.external_attr = mode << 16
            archive.writestr(info, contents)


if __name__ == "__main__":
    overlapping_records(os.path.join(HERE, "zip-overlapping-records.zip"))
    with_links(os.path.join(HERE, "zip-with-links.zip"))
