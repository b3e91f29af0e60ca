// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/address_resolver.h"

#include "core/text.h"
#include "intake/encoded_word.h"
#include "outlook/transport_headers.h"
#include "platform/charset.h"

namespace tarnwick::outlook {

namespace {

constexpr std::string_view kAddressHeaders[] = {"from", "to", "cc", "sender", "reply-to"};
constexpr size_t kMaxLearned = 10'000;

std::string Folded(std::string_view text) {
  return platform::FoldCase(platform::EnsureUtf8(core::Trim(text)));
}

// 'Ann' and "Ann" are Ann; a single apostrophe is part of the name.
std::string WithoutQuotes(std::string_view text) {
  text = core::Trim(text);
  while (text.size() >= 2 && text.front() == text.back() &&
         (text.front() == '\'' || text.front() == '"')) {
    text = core::Trim(text.substr(1, text.size() - 2));
  }
  return std::string(text);
}

// Calls visit with each item of an address list; a comma inside quotation marks is none between.
template <typename Visit>
void ForEachAddress(std::string_view list, Visit visit) {
  bool quoted = false;
  size_t start = 0;
  for (size_t i = 0; i <= list.size(); ++i) {
    if (i < list.size() && list[i] == '"') quoted = !quoted;
    if (i < list.size() && (quoted || list[i] != ',')) continue;
    visit(list.substr(start, i - start));
    start = i + 1;
  }
}

}  // namespace

bool IsInternetAddress(std::string_view address) {
  size_t at = address.find('@');
  return at != std::string_view::npos && at > 0 && at + 1 < address.size() && address[0] != '/' &&
         address.find_first_of(" \t\r\n<>") == std::string_view::npos;
}

void AddressResolver::Learn(const std::string& entry, const std::string& smtpAddress) {
  if (entry.empty() || !IsInternetAddress(smtpAddress) || byEntry_.size() >= kMaxLearned) return;
  byEntry_.emplace(Folded(entry), smtpAddress);
}

void AddressResolver::LearnHeaders(std::string_view headers) {
  for (const HeaderField& field : ReadTransportHeaders(headers)) {
    bool holdsAddresses = false;
    for (std::string_view name : kAddressHeaders) holdsAddresses |= field.lowerName == name;
    if (!holdsAddresses) continue;
    ForEachAddress(field.Value(), [&](std::string_view item) {
      size_t open = item.rfind('<');
      size_t close = item.rfind('>');
      if (open == std::string_view::npos || close == std::string_view::npos || close < open) return;
      std::string address(core::Trim(item.substr(open + 1, close - open - 1)));
      intake::MixedText decoded;
      intake::Decode(item.substr(0, open), decoded);
      std::string name = Folded(WithoutQuotes(decoded.Finish("utf-8")));
      if (name.empty() || !IsInternetAddress(address) || byName_.size() >= kMaxLearned) return;
      byName_.emplace(name, address);
    });
  }
}

intake::AddressPair AddressResolver::Resolve(const std::string& name, const std::string& address,
                                             const std::string& smtpAddress) const {
  intake::AddressPair pair{WithoutQuotes(name), WithoutQuotes(address)};
  if (IsInternetAddress(smtpAddress)) {
    pair.Address = smtpAddress;
  } else if (!IsInternetAddress(pair.Address)) {
    auto entry = byEntry_.find(Folded(pair.Address));
    auto named = byName_.find(Folded(pair.Name));
    if (!pair.Address.empty() && entry != byEntry_.end()) {
      pair.Address = entry->second;
    } else if (!pair.Name.empty() && named != byName_.end()) {
      pair.Address = named->second;
    } else if (pair.Address.empty() && IsInternetAddress(pair.Name)) {
      pair.Address = pair.Name;
    }
  }
  if (pair.Name.empty() || pair.Name == "-") pair.Name = pair.Address;
  if (pair.Name.empty()) pair.Name = intake::kNoName;
  if (pair.Address.empty()) pair.Address = intake::kNoAddress;
  return pair;
}

}  // namespace tarnwick::outlook
