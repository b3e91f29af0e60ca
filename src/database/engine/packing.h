// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Long texts and bytes as they lie in a file: packed where that saves room. Internal to the
// database; statements and recordsets only ever see the plain value.
//
// A packed value is a format number (one byte) and a zstd frame that tells its content's size;
// skippable frames may follow it. In format 1 the content is the value, and the frame is made with
// the dictionary of packing_text.h. In format 2 the value's size (32 bits, the lowest byte first)
// stands before the frame, which is made without a dictionary, and its content is the value as
// base64_folding.h folds it: no longer than the value. In a column of long texts a packed value is
// of the engine's type blob, in one of bytes it is of the type text: a type that no plain value of
// the column has. All this is embedded in the files.
//
// A file may be damaged or made to harm: a value tells its size before memory is taken for it, and
// no size is believed beyond kLargestPacked, or beyond what so few bytes can honestly hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::jet {

inline constexpr size_t kLargestPacked = 64 * 1024 * 1024;

// The packed value; "" where packing saves nothing or the value is longer than kLargestPacked.
// Valid until the thread's next call.
std::string_view Pack(std::string_view plain);

// True for what begins as a packed value does.
bool IsPacked(std::string_view stored);

// How long the plain value is, as far as the packed one tells; nullopt where that is not believed.
// REQUIRES: IsPacked(stored).
std::optional<size_t> ToldSize(std::string_view stored);

// The plain value. Throws Error 11 for a packed value that is damaged. REQUIRES: IsPacked(stored).
std::string Unpack(std::string_view stored);
// The same, valid until the thread's next call of it.
std::string_view UnpackScratch(std::string_view stored);

// Values unpacked by this thread so far: what a statement really read, for the tests.
uint64_t UnpackCount();

}  // namespace tarnwick::jet
