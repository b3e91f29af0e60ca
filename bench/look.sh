#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# Measures a look over a large disk:
#
#   bench/look.sh [FILES] [STORES] [RUNS]
#
# Makes a tree of FILES small files (default 200000) in folders of 200, with STORES mailboxes of 200
# letters among them (default 300: by turns mbox, a folder of *.eml and a copied Outlook Express store),
# looks over it once to warm it, and RUNS times more (default 5). Printed are medians: seconds, seconds
# of processor time, peak memory. TARNWICK_BENCH_BIN names a folder of programs built already.
set -euo pipefail
files=${1:-200000}
stores=${2:-300}
runs=${3:-5}
cd "$(dirname "$0")/.."
. bench/timing.sh
prepare look tarnwick-cli tarnwick-make-sample
"$bin/tarnwick-make-sample" "$work/sample" >/dev/null
store=$(dirname "$(find "$work/sample" -name 'Inbox.dbx' | head -n 1)")
python3 - "$work/disk" "$files" "$stores" "$store" <<'PYTHON'
import os, shutil, sys
root, files, stores, dbx = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), sys.argv[4]
kinds = ["jpg", "txt", "doc", "exe", "dll", "html", "", "ini", "xml", "zip"]
for folder in range((files + 199) // 200):
    path = f"{root}/{folder // 100}/{folder // 10 % 10}/{folder}"
    os.makedirs(path)
    for i in range(200):
        with open(f"{path}/file{i}.{kinds[i % 10]}".rstrip("."), "wb") as file:
            file.write(b"x" * 100)
letter = "From: bob@example.org\nSubject: letter {0}\nDate: Tue, 5 Mar 2002 13:07:00 +0000\n\n" + 20 * "words and more words\n"
for i in range(stores):
    path = f"{root}/{i % 10}/store {i}"
    if i % 3 == 2:
        shutil.copytree(dbx, path)
        continue
    os.makedirs(path)
    for k in range(200):
        text = letter.format(i * 1000 + k)
        if i % 3 == 0:
            with open(f"{path}/Inbox", "a") as file:
                file.write("From - Tue Mar  5 13:07:00 2002\n" + text + "\n")
        else:
            with open(f"{path}/{k}.eml", "w") as file:
                file.write(text)
PYTHON
look() { timed "$1" "$bin/tarnwick-cli" --home "$work/home" find "$work/disk"; }
look warm
for ((run = 1; run <= runs; run++)); do look find; done
echo "$(find "$work/disk" -type f | wc -l) files, $(wc -l <"$work/find.out") places with mail:" \
  "$(median "$work/find.times") s, $(median "$work/find.cpu") s of processor, $(median "$work/find.memory") kB"
