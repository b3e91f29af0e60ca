#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
"""Reads saved mail back with Python's mailbox module.

    read_mailboxes.py mbox|maildir DIR RAW

RAW holds each message that must be there, one a file. The exit status is 0 when the mail in DIR is
these messages, byte for byte, and nothing else. Headers that tell the state of a message may
stand before those of one in an mbox file.
"""
import mailbox
import os
import re
import sys


def mbox_messages(folder):
    for place, _, names in os.walk(folder):
        for name in names:
            assert name.endswith(".mbox"), name
            box = mailbox.mbox(os.path.join(place, name), create=False)
            for key in box.keys():
                text = re.sub(rb"\A((X-|X-Mozilla-)?Status: [^\r\n]*\r?\n)+", b"", box.get_bytes(key))
                yield re.sub(rb"^>(>*From )", rb"\1", text, flags=re.MULTILINE)


def maildir_messages(folder):
    boxes = [mailbox.Maildir(folder, create=False)]
    boxes += [boxes[0].get_folder(name) for name in boxes[0].list_folders()]
    for box in boxes:
        for key in box.keys():
            message = box.get_message(key)
            assert set(message.get_flags()) <= set("DFPRS") and message.get_subdir() == "cur", key
            yield box.get_bytes(key)


def main(kind, folder, raw):
    expected = []
    for name in os.listdir(raw):
        with open(os.path.join(raw, name), "rb") as file:
            data = file.read()
        # A mailbox file ends a message's last line where it has no end.
        expected.append(data + b"\n" if kind == "mbox" and not data.endswith(b"\n") else data)
    found = list(mbox_messages(folder) if kind == "mbox" else maildir_messages(folder))
    print(f"{len(found)} messages, {len(expected)} expected")
    return 0 if sorted(found) == sorted(expected) else 1


sys.exit(main(*sys.argv[1:]))
