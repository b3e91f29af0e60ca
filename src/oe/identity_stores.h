// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where the registry says that an identity of Outlook Express keeps its store, and where that may
// lie on a disk that was copied.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace tarnwick::oe {

inline constexpr const char* kIdentitiesKey = "Identities";
inline constexpr const char* kStoreRoot = "Store Root";
inline constexpr size_t kMaxValueLength = 1024;
// The key of the settings that hold an identity's store root.
std::string StoreKeyOf(const std::string& identity);

// The folders that a store root may mean, each with the separator and the likeliest first; they
// need not be there. profile: the folder that the registry is that of, with the separator.
std::vector<std::string> StorePlaces(platform::Registry& registry, const std::string& root,
                                     const std::string& profile);

// "C" or "C:", as the folder of a copied drive is called.
bool IsDriveName(std::string_view name);
// "" above the machine's root.
std::string ParentOf(const std::string& folder);
// The profile's folder and those above it that may be a copied drive's, the machine's root left
// out.
std::vector<std::string> Surroundings(const std::string& profile);

}  // namespace tarnwick::oe
