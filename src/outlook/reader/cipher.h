// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How the blocks of a .pst file are made unreadable to a casual eye ([MS-PST] 5.1 and 5.2). Neither
// way has a key that anyone would have to know.
#pragma once

#include <cstdint>
#include <string>

namespace tarnwick::outlook::reader {

bool IsKnownCipher(uint8_t cipher);
// Undoes it. block: the low half of the block's number.
void Decipher(uint8_t cipher, uint32_t block, std::string& bytes);

}  // namespace tarnwick::outlook::reader
