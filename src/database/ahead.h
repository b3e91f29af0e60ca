// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What writing a row costs beside the engine, for whoever does it elsewhere: a value is
// packed, and the trigrams of a row's texts are gathered, without a connection and on any thread.
// Recordset::SetPacked and SetTrigrams take the results, and the row is the same as without them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::jet {

// Of a long text (valid UTF-8) or bytes: how they lie in a file, "" where that is as they are.
std::string PackAhead(std::string_view plain);

// texts: of the columns that Connection::KeepTextIndex was given, in their order.
std::vector<uint32_t> TrigramsAhead(const std::vector<std::string>& texts);

// Whether a value that somebody else packed can be one of so many bytes, without unpacking it, and
// whether numbers can be trigrams, each once: what is neither would harm the file.
bool MayBePacked(std::string_view packed, size_t plainSize);
bool AreTrigrams(const std::vector<uint32_t>& numbers);

}  // namespace tarnwick::jet
