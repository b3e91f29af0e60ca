// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Values as bytes, from one process to another of the same build, as they lie in memory. What a
// type holds is listed once, in its Pass(archive, value), which both directions go through.
//
// RecordWriter appends. RecordReader believes nothing: every length is compared with the bytes that
// are there before memory is taken for it, texts are UTF-8, dates are dates, and a value beyond its
// range throws Error 75, as bytes that are left over do at Finish.
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/date_time.h"
#include "platform/error.h"
#include "platform/utf8.h"

namespace tarnwick::intake {

// A text that is bytes.
struct RawBytes {
  std::string& bytes;
};
// A number that is at most so large.
template <typename T>
struct AtMost {
  T& value;
  std::type_identity_t<T> most;
};
template <typename T, typename Most>
AtMost(T&, Most) -> AtMost<T>;
// An enumeration of so many.
template <typename T>
struct OneOf {
  T& value;
  size_t count;
};
template <typename T>
OneOf(T&, size_t) -> OneOf<T>;

[[noreturn]] inline void RefuseRecord() {
  throw Error(ErrorNumber::kPathAccess, "the reader's answer makes no sense");
}

class RecordWriter {
 public:
  static constexpr bool kReads = false;

  explicit RecordWriter(std::string& bytes) : bytes_(bytes) {}

  template <typename... T>
  void operator()(T&&... values) {
    (Put(values), ...);
  }

 private:
  template <typename T>
  requires std::integral<T>
  void Put(T value) { bytes_.append(reinterpret_cast<const char*>(&value), sizeof value); }
  template <typename T>
  void Put(const OneOf<T>& value) {
    Put(static_cast<uint8_t>(value.value));
  }
  template <typename T>
  void Put(const AtMost<T>& value) {
    Put(value.value);
  }
  void Put(const DateTime& value) { Put(value.Seconds()); }
  void Put(const std::string& text) {
    Put(static_cast<uint32_t>(text.size()));
    bytes_ += text;
  }
  void Put(const RawBytes& raw) { Put(raw.bytes); }
  template <typename T>
  void Put(const std::optional<T>& value) {
    Put(value.has_value());
    if (value) Put(const_cast<T&>(*value));
  }
  template <typename T>
  void Put(const std::unique_ptr<T>& value) {
    Put(value != nullptr);
    if (value) Put(*value);
  }
  template <typename T>
  void Put(const std::vector<T>& list) {
    Put(static_cast<uint32_t>(list.size()));
    for (const T& each : list) Put(const_cast<T&>(each));
  }
  void Put(const std::vector<uint32_t>& numbers) {
    Put(static_cast<uint32_t>(numbers.size()));
    bytes_.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(uint32_t));
  }
  template <typename T, size_t count>
  void Put(const std::array<T, count>& list) {
    for (const T& each : list) Put(const_cast<T&>(each));
  }
  template <typename T>
  requires requires(RecordWriter& writer, T& value) { Pass(writer, value); }
  void Put(T& value) { Pass(*this, value); }

  std::string& bytes_;
};

class RecordReader {
 public:
  static constexpr bool kReads = true;

  explicit RecordReader(std::string_view bytes) : bytes_(bytes) {}

  template <typename... T>
  void operator()(T&&... values) {
    (Take(values), ...);
  }
  void Finish() const {
    if (!bytes_.empty()) RefuseRecord();
  }

 private:
  std::string_view Cut(size_t count) {
    if (count > bytes_.size()) RefuseRecord();
    std::string_view cut = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return cut;
  }
  // Of a list whose entries take at least so many bytes each.
  size_t Count(size_t least) {
    uint32_t count = 0;
    Take(count);
    if (count > bytes_.size() / least) RefuseRecord();
    return count;
  }
  template <typename T>
  requires std::integral<T>
  void Take(T& value) {
    std::string_view cut = Cut(sizeof value);
    if constexpr (std::is_same_v<T, bool>) {
      if (static_cast<unsigned char>(cut[0]) > 1) RefuseRecord();
      value = cut[0] == 1;
    } else {
      std::memcpy(&value, cut.data(), sizeof value);
    }
  }
  template <typename T>
  void Take(const OneOf<T>& value) {
    uint8_t number = 0;
    Take(number);
    if (number >= value.count) RefuseRecord();
    value.value = static_cast<T>(number);
  }
  template <typename T>
  void Take(const AtMost<T>& value) {
    Take(value.value);
    if (value.value < 0 || value.value > value.most) RefuseRecord();
  }
  void Take(DateTime& value) {
    static const DateTime kFirst = DateTime::FromDate(100, 1, 1);
    static const DateTime kEnd = DateTime::FromDate(9999, 12, 31).AddDays(1);
    int64_t seconds = 0;
    Take(seconds);
    value = DateTime::FromSeconds(seconds);
    if (value < kFirst || value >= kEnd) RefuseRecord();
  }
  void Take(std::string& text) {
    Take(RawBytes{text});
    if (!platform::IsValidUtf8(text)) RefuseRecord();
  }
  void Take(const RawBytes& raw) { raw.bytes = Cut(Count(1)); }
  template <typename T>
  void Take(std::optional<T>& value) {
    bool isThere = false;
    Take(isThere);
    value.reset();
    if (isThere) Take(value.emplace());
  }
  template <typename T>
  void Take(std::unique_ptr<T>& value) {
    bool isThere = false;
    Take(isThere);
    value = isThere ? std::make_unique<T>() : nullptr;
    if (value) Take(*value);
  }
  template <typename T>
  void Take(std::vector<T>& list) {
    // No entry takes less than a length.
    size_t count = Count(sizeof(uint32_t));
    list.clear();
    for (size_t i = 0; i < count; ++i) Take(list.emplace_back());
  }
  void Take(std::vector<uint32_t>& numbers) {
    numbers.resize(Count(sizeof(uint32_t)));
    std::string_view cut = Cut(numbers.size() * sizeof(uint32_t));
    if (!cut.empty()) std::memcpy(numbers.data(), cut.data(), cut.size());
  }
  template <typename T, size_t count>
  void Take(std::array<T, count>& list) {
    for (T& each : list) Take(each);
  }
  template <typename T>
  requires requires(RecordReader& reader, T& value) { Pass(reader, value); }
  void Take(T& value) { Pass(*this, value); }

  std::string_view bytes_;
};

}  // namespace tarnwick::intake
