#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
"""Prints what the olefile module finds in a *.msg file, which must be without a defect."""
import datetime
import struct
import sys

import olefile


def main(path):
    with olefile.OleFileIO(path, raise_defects=olefile.DEFECT_INCORRECT) as file:
        assert not file.parsing_issues, file.parsing_issues
        assert file.exists("__nameid_version1.0/__substg1.0_00020102")

        def text(number, storage=""):
            name = f"{storage}__substg1.0_{number:04X}001F"
            return file.openstream(name).read().decode("utf-16-le") if file.exists(name) else ""

        def fixed(storage, head):
            properties = file.openstream(storage + "__properties_version1.0").read()[head:]
            return {number: value for _, number, _, value in struct.iter_unpack("<HHIQ", properties)}

        print("|".join(text(number) for number in (0x1A, 0x37, 0xC1A, 0xC1F, 0x1000)).strip())
        seconds = fixed("", 32)[0x39] // 10_000_000 - 11_644_473_600
        print(datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc).strftime("%F %T"))
        storages = sorted({entry[0] for entry in file.listdir() if len(entry) > 1})
        for storage in storages:
            if storage.startswith("__recip"):
                row = fixed(storage + "/", 8)
                print(row[0xC15], text(0x3001, storage + "/"), text(0x39FE, storage + "/"))
        for storage in storages:
            if storage.startswith("__attach"):
                size = len(file.openstream(storage + "/__substg1.0_37010102").read())
                assert size == fixed(storage + "/", 8)[0xE20]
                print(text(0x3707, storage + "/"), size)


if __name__ == "__main__":
    main(sys.argv[1])
