// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What writing a row costs beside the engine, for whoever has a second thread for it: a value is
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

}  // namespace tarnwick::jet
