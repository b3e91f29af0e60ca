// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What mail is commonly made of: the dictionary that packed values (packing.h) refer to. Internal
// to the database.
#pragma once

namespace tarnwick::jet {

// How often which byte and which length is met in mail, in the form of the head of a zstd
// dictionary: it spares each value a table of its own.
extern const unsigned char kPackingStatistics[157];

// Lines end with LF here and are taken to end with CR LF.
extern const char kPackingText[];
extern const unsigned int kPackingTextSize;

}  // namespace tarnwick::jet
