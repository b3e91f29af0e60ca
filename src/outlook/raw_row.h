// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The properties of an object as a store holds them, and what is made of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "outlook/mapi.h"

namespace tarnwick::outlook {

// A value as it came: MAPI number and type, and the store's bytes.
struct RawProperty {
  uint16_t number = 0;
  uint16_t type = 0;
  std::string bytes;
};
using RawRow = std::vector<RawProperty>;

// The properties of a raw row, with its texts made UTF-8 by the code page that the row names, or
// else by charset.
PropertySet Decode(const RawRow& row, const std::string& charset);

// Whether it takes a code page to read the row's texts.
bool HasByteTexts(const RawRow& row);
// The charset of the byte texts of a message and its rows; "" when nothing tells.
std::string CharsetOfMessage(const RawRow& properties);
// The charset of the machine that wrote a message; "" when nothing tells.
std::string CharsetOfWriter(const RawRow& properties);

}  // namespace tarnwick::outlook
