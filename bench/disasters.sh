#!/bin/sh
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# bench/disasters.sh TRIALS [OPERATION]: kills load, merge, restore, backup, delete, mark, move HTML
# to body, protect, change (of the password), unprotect and the settings at so many writes each, and
# lets as many calls of the disk fail in each of five ways. The tests do the same at a few places.
set -eu
cd "$(dirname "$0")/.."
ninja -C build/debug test_board >/dev/null
[ $# -lt 2 ] || export TARNWICK_OPERATION="$2"
TARNWICK_TRIALS=${1:?TRIALS} build/debug/tests/test_board --gtest_filter='Disaster.*'
