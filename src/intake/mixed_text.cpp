// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/mixed_text.h"

#include "platform/charset.h"

namespace tarnwick::intake {

void MixedText::AppendText(std::string_view utf8) {
  if (utf8.empty()) return;
  if (!texts_.empty() && texts_.back().end == data_.size()) {
    texts_.back().end += utf8.size();
  } else {
    texts_.push_back({data_.size(), data_.size() + utf8.size()});
  }
  data_ += utf8;
}

void MixedText::Append(const MixedText& other) {
  for (const Stretch& stretch : other.texts_) {
    texts_.push_back({stretch.begin + data_.size(), stretch.end + data_.size()});
  }
  data_ += other.data_;
}

template <typename ToText>
std::string MixedText::Rebuild(ToText toText) const {
  std::string result;
  std::string_view all = data_;
  size_t position = 0;
  for (const Stretch& stretch : texts_) {
    if (stretch.begin > position) {
      result += toText(all.substr(position, stretch.begin - position));
    }
    result += all.substr(stretch.begin, stretch.end - stretch.begin);
    position = stretch.end;
  }
  if (position < all.size()) result += toText(all.substr(position));
  return result;
}

bool MixedText::Convert(std::string_view charset) {
  if (!platform::IsKnownCharset(charset)) return false;
  data_ = Finish(charset);
  texts_.clear();
  if (!data_.empty()) texts_.push_back({0, data_.size()});
  return true;
}

std::string MixedText::Finish(std::string_view charset) const {
  return Rebuild([&](std::string_view bytes) { return platform::BytesToUtf8(bytes, charset); });
}

}  // namespace tarnwick::intake
