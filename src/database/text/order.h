// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The order of texts in the database: what its columns, indexes, ORDER BY and DISTINCT go by.
// Internal to the database.
//
// Texts are compared by their folded forms (platform/utf8.h), first as the root collation of
// Unicode orders them (accents count, case does not), then by code point. So two texts are equal
// exactly when their folded code points are, and the order is a total one: indexes live on that.
#pragma once

#include <cstdint>
#include <string_view>

namespace tarnwick::jet {

// Below, at or above 0 as a stands before, with or after b.
int CompareText(std::string_view a, std::string_view b);

// The same without the short cut for plain ASCII, for tests.
int CompareTextFully(std::string_view a, std::string_view b);

// Changes when the order does (another ICU, another rule of ours): indexes made under another
// version must be built anew. Kept in the files.
int32_t TextOrderVersion();

}  // namespace tarnwick::jet
