#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
"""Compares attachments with what Python's email package makes of the same messages.

    attachments_reference.py DIR

DIR/list has a line for each message, "M" and its path, followed by one for each of its attachments:
"A", the file with its bytes, the name, the type. Fields are separated by tabs. Prints the figures
and every difference; the exit status is 1 when one has no explanation.
"""
import binascii
import email
import email.errors
import email.header
import re
import sys


def is_text(kind):
    return kind in ("text/plain", "text/html", "") or (
        kind.startswith("text/")
        and not any(word in kind for word in ("calendar", "card", "directory", "css", "xml")))


def name_of(part):
    name = part.get_filename()
    try:
        return name and str(email.header.make_header(email.header.decode_header(name)))
    except (email.errors.HeaderParseError, LookupError, UnicodeError):
        return name


def plain(name):
    """A name without what files can't be called, and without the number that tells it from others."""
    name = "".join(c if c.isprintable() and c not in '/\\:*?"<>|' else "_" for c in name)
    return re.sub(r" \(\d+\)(?=\.\w+$|$)", "", name).strip(". ")


def inline_files(text):
    """Uuencoded files, found and decoded by the rules of binascii."""
    lines = text.split(b"\n")
    for start, line in enumerate(lines):
        if not re.match(rb"begin [0-7]{3,4} ", line):
            continue
        data = b""
        for row in lines[start + 1:]:
            row = row.rstrip(b"\r")
            if row == b"end":
                yield data
                break
            try:
                data += binascii.a2b_uu(row + b"\n")
            except binascii.Error:
                break


def reference(raw):
    """The message and its attachments: bytes (or None), name (or None), part."""
    message = email.message_from_bytes(raw)
    result = []

    def walk(part):
        if part.get_content_maintype() == "multipart":
            if part.is_multipart():
                for inner in part.get_payload():
                    walk(inner)
            return
        if part.is_multipart():
            # An attached message's own leaves are compared; the rest of message/* is headers only.
            result.append((None, None, part))
            if part.get_content_type() == "message/rfc822":
                walk(part.get_payload()[0])
            return
        declared = part.get_content_type() if part.get("content-type") else ""
        if "content-transfer-encoding" in part:
            part.replace_header("content-transfer-encoding",
                                str(part["content-transfer-encoding"]).strip())
        data = part.get_payload(decode=True) or b""
        name = name_of(part)
        if name or part.get_content_disposition() == "attachment" or not is_text(declared):
            result.append((data, name, part))
        elif declared != "text/html":
            result.extend((file, None, part) for file in inline_files(data))

    walk(message)
    return message, result


def why_more(message):
    """Why more may be found in a message than Python finds, or nothing."""
    def boundaries(part, outer):
        own = part.get_boundary()
        if own and own in outer:
            return True
        return part.is_multipart() and any(boundaries(inner, outer | {own})
                                           for inner in part.get_payload())
    for part in message.walk():
        defects = {type(defect).__name__ for defect in part.defects}
        if defects & {"NoBoundaryInMultipartDefect", "StartBoundaryNotFoundDefect"}:
            return "a container without its boundary"
        own = part.get_boundary()
        if own and ("--" + own) in (part.epilogue or ""):
            return "parts behind the closing line"
        if part.get_content_type() == "message/rfc822" and "content-transfer-encoding" in part and \
                str(part["content-transfer-encoding"]).strip().lower() == "base64":
            return "an attached message that is encoded"
    return "one boundary for two containers" if boundaries(message, set()) else None


def why_other(part, ours, theirs):
    """Why the bytes of an attachment may be others, or nothing."""
    encoding = str(part.get("content-transfer-encoding", "")).lower()
    if encoding == "quoted-printable":
        blanks = re.compile(rb"[ \t]+(?=\r?\n|$)")
        if blanks.sub(b"", ours) == blanks.sub(b"", theirs):
            return "blanks at the ends of quoted-printable lines"
    if any("Base64" in type(defect).__name__ for defect in part.defects):
        return "broken base64"
    return None


def why_other_name(ours, theirs):
    """Why a name may be another, or nothing."""
    ascii_only = re.compile(r"[^ -~]+")
    if "\ufffd" in theirs and ascii_only.sub("", ours) == ascii_only.sub("", theirs.replace("_", "")):
        return "bytes whose charset Python does not guess"
    if "=_" in theirs:
        return "encoded words inside other words, which Python leaves"
    if len(ours) > 90 and theirs.startswith(ours):
        return "too long for a file"
    return None


def main(folder):
    messages = []
    with open(folder + "/list", "rb") as lines:
        for line in lines:
            fields = line.rstrip(b"\n").split(b"\t")
            if fields[0] == b"M":
                messages.append((fields[1], []))
            elif fields[2] != b"whole message.eml":
                with open(folder + "/" + fields[1].decode(), "rb") as data:
                    messages[-1][1].append((fields[2].decode(), data.read()))
    counts = dict.fromkeys(("attachments", "equal", "explained", "unexplained"), 0)

    def differ(path, what, reason):
        counts["explained" if reason else "unexplained"] += 1
        print(f"{path.decode(errors='replace')}: {what}: {reason or 'UNEXPLAINED'}")

    for path, ours in messages:
        with open(path, "rb") as file:
            message, theirs = reference(file.read())
        counts["attachments"] += len(theirs)
        if len(ours) != len(theirs):
            reason = why_more(message) if len(ours) > len(theirs) else None
            differ(path, f"{len(ours)} attachments, Python has {len(theirs)}", reason)
            continue
        for (name, data), (expected, expected_name, part) in zip(ours, theirs):
            if expected is not None and data != expected:
                differ(path, f"{name}: {len(data)} bytes, Python has {len(expected)}",
                       why_other(part, data, expected))
            elif expected_name and plain(expected_name) != plain(name):
                differ(path, f"{name}: Python says {expected_name!r}",
                       why_other_name(plain(name), plain(expected_name)))
            else:
                counts["equal"] += 1
    print(f"messages {len(messages)}, " +
          ", ".join(f"{name} {count}" for name, count in counts.items()))
    return 1 if counts["unexplained"] else 0


sys.exit(main(sys.argv[1]))
