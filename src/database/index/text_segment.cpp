// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/index/text_segment.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>
#include <span>
#include <utility>

#include "platform/error.h"

namespace tarnwick::jet {

namespace {

// Memory while a segment is built: four to eight bytes each.
constexpr size_t kMostPostings = 6'000'000;
// Up to so many documents are written as they are.
constexpr size_t kFixedList = 3;
// What more than every second document holds tells a search next to nothing.
constexpr size_t kTellingShare = 2;

constexpr uint32_t kDocumentMask = (1u << kDocumentBits) - 1;

[[noreturn]] void Damaged() {
  throw Error(11, "The text index is damaged");
}

// Bits into memory that is used again by each part.
class BitWriter {
 public:
  static constexpr int kMostAtOnce = 56;

  void Clear() {
    place_ = 0;
    window_ = 0;
    filled_ = 0;
  }
  // Before Put: room for so many bits more.
  void Reserve(uint64_t bits) {
    size_t needed = place_ + bits / 8 + 2 * sizeof window_;
    if (needed > bytes_.size()) bytes_.resize(std::max(needed, 2 * bytes_.size()));
  }

  // count: at most kMostAtOnce. What is not a whole byte yet is written again by the next call.
  void Put(uint64_t bits, int count) {
    window_ |= bits << filled_;
    filled_ += count;
    uint64_t stored = LittleEndian(window_);
    std::memcpy(bytes_.data() + place_, &stored, sizeof stored);
    int whole = filled_ / 8;
    place_ += static_cast<size_t>(whole);
    window_ >>= 8 * whole;
    filled_ %= 8;
  }
  // number: below 2^28.
  void Gamma(uint32_t number) {
    int bits = static_cast<int>(std::bit_width(number)) - 1;
    uint64_t behind = number & ((1u << bits) - 1);
    Put((behind << 1 | 1) << bits, 2 * bits + 1);
  }
  void Rice(uint32_t number, int parameter) {
    uint32_t quotient = number >> parameter;
    for (; quotient >= 32; quotient -= 32) Put(0xFFFFFFFF, 32);
    // Together at most 43 bits: a parameter has fewer than a document's number.
    uint64_t ones = (uint64_t{1} << quotient) - 1;
    uint64_t rest = number & ((1u << parameter) - 1);
    int length = static_cast<int>(quotient) + 1;
    Put(ones | rest << length, length + parameter);
  }
  void Append(const BitWriter& other) {
    Reserve(other.Position());
    constexpr size_t kBytes = kMostAtOnce / 8;
    std::string_view left = other.Bytes().substr(0, other.place_);
    for (; left.size() > sizeof window_; left.remove_prefix(kBytes)) {
      uint64_t bits = 0;
      std::memcpy(&bits, left.data(), sizeof bits);
      Put(LittleEndian(bits) & ((uint64_t{1} << kMostAtOnce) - 1), kMostAtOnce);
    }
    for (char byte : left) Put(static_cast<unsigned char>(byte), 8);
    Put(other.window_, other.filled_);
  }

  uint64_t Position() const { return place_ * 8 + static_cast<uint64_t>(filled_); }
  std::string_view Bytes() const { return {bytes_.data(), place_ + (filled_ > 0 ? 1 : 0)}; }

 private:
  static uint64_t LittleEndian(uint64_t number) {
    return std::endian::native == std::endian::little ? number : __builtin_bswap64(number);
  }

  std::vector<char> bytes_;
  size_t place_ = 0;  // of the window's first byte
  uint64_t window_ = 0;
  int filled_ = 0;
};

class BitReader {
 public:
  explicit BitReader(std::string_view data) : data_(data) {}

  uint64_t Position() const { return position_ * 8 - static_cast<uint64_t>(filled_); }
  void Seek(uint64_t bit) {
    if (bit > data_.size() * 8) Damaged();
    position_ = bit / 8;
    window_ = 0;
    filled_ = 0;
    Get(static_cast<int>(bit % 8));
  }
  uint32_t Get(int count) {
    if (count == 0) return 0;
    Fill(count);
    auto bits = static_cast<uint32_t>(window_ & ((uint64_t{1} << count) - 1));
    Drop(count);
    return bits;
  }
  uint32_t Gamma() {
    int bits = Run(false);
    if (bits > 30) Damaged();
    return (1u << bits) | Get(bits);
  }
  uint32_t Rice(int parameter) {
    auto quotient = static_cast<uint32_t>(Run(true));
    return (quotient << parameter) | Get(parameter);
  }

 private:
  void Fill(int count) {
    while (filled_ < count) {
      if (position_ >= data_.size()) Damaged();
      window_ |= static_cast<uint64_t>(static_cast<unsigned char>(data_[position_++])) << filled_;
      filled_ += 8;
    }
  }
  void Drop(int count) {
    window_ >>= count;
    filled_ -= count;
  }
  // The number of bits of a kind up to one of the other, which is passed.
  int Run(bool ones) {
    int run = 0;
    while (true) {
      Fill(1);
      uint64_t looked = ones ? ~window_ : window_;
      int length = std::min(std::countr_zero(looked), filled_);
      run += length;
      // A list's distances are below the number of documents.
      if (run > static_cast<int>(kMostDocuments)) Damaged();
      if (length < filled_) {
        Drop(length + 1);
        return run;
      }
      Drop(length);
    }
  }

  std::string_view data_;
  size_t position_ = 0;
  uint64_t window_ = 0;
  int filled_ = 0;
};

int RiceParameter(size_t documents, size_t length) {
  // Of the mean distance the part that halves a geometric distribution.
  size_t half = documents * 7 / (length * 10);
  return half < 2 ? 0 : static_cast<int>(std::bit_width(half)) - 1;
}

void PutVarint(std::string& data, uint64_t number) {
  for (; number >= 0x80; number >>= 7) data += static_cast<char>(number | 0x80);
  data += static_cast<char>(number);
}

uint64_t TakeVarint(std::string_view& data) {
  uint64_t number = 0;
  for (int shift = 0; shift < 64; shift += 7) {
    if (data.empty()) Damaged();
    auto byte = static_cast<unsigned char>(data.front());
    data.remove_prefix(1);
    number |= static_cast<uint64_t>(byte & 0x7F) << shift;
    if (byte < 0x80) return number;
  }
  Damaged();
}

size_t TakeSize(std::string_view& head) {
  uint64_t documents = TakeVarint(head);
  if (documents == 0 || documents > kMostDocuments) Damaged();
  return documents;
}

// A list's entry in a part's table.
struct Entry {
  uint32_t trigram;  // within the part
  size_t length;     // 0: left out
  uint64_t start;    // in bits, from the first list
  uint64_t size;
};

// Longer lists are left out.
size_t LongestList(size_t documents) {
  return std::max(documents / kTellingShare, kFixedList);
}

// The reader then stands at the first list.
std::vector<Entry> ReadTable(BitReader& reader, size_t documents) {
  std::vector<Entry> entries;
  uint64_t start = 0;
  uint32_t trigram = 0;
  while (true) {
    trigram += reader.Gamma();
    if (trigram > kPartTrigrams) break;
    Entry entry{trigram - 1, reader.Gamma() - 1, start, 0};
    if (entry.length > LongestList(documents)) Damaged();
    entry.size = entry.length <= kFixedList ? entry.length * kDocumentBits : reader.Gamma() - 1;
    start += entry.size;
    entries.push_back(entry);
  }
  return entries;
}

void ReadList(BitReader& reader, const Entry& entry, uint64_t lists, size_t documents,
              std::vector<uint16_t>& found) {
  reader.Seek(lists + entry.start);
  bool fixed = entry.length <= kFixedList;
  int parameter = fixed ? 0 : RiceParameter(documents, entry.length);
  uint64_t next = 0;
  for (size_t i = 0; i < entry.length; i++) {
    uint64_t document = fixed ? reader.Get(kDocumentBits) : next + reader.Rice(parameter);
    if (document < next || document >= documents) Damaged();
    found.push_back(static_cast<uint16_t>(document));
    next = document + 1;
  }
  // Lists that lay over each other would make much of few bytes.
  if (reader.Position() != lists + entry.start + entry.size) Damaged();
}

}  // namespace

void SegmentWriter::Add(int64_t key, const std::vector<uint32_t>& trigrams) {
  auto document = static_cast<uint32_t>(keys_.size());
  keys_.push_back(key);
  for (uint32_t trigram : trigrams) {
    postings_[trigram / kPartTrigrams].push_back(trigram << kDocumentBits | document);
  }
  count_ += trigrams.size();
}

void SegmentWriter::TakeOver(std::string_view head,
                             const std::function<std::string(size_t)>& part) {
  assert(keys_.empty());
  keys_ = ReadSegmentKeys(head);
  std::vector<uint16_t> found;
  for (size_t i = 0; i < kSegmentParts; i++) {
    std::string data = part(i);
    BitReader reader(data);
    std::vector<Entry> entries = ReadTable(reader, keys_.size());
    uint64_t lists = reader.Position();
    for (const Entry& entry : entries) {
      auto trigram = static_cast<uint32_t>(i * kPartTrigrams) + entry.trigram;
      if (entry.length == 0) left_out_.push_back(trigram);
      found.clear();
      ReadList(reader, entry, lists, keys_.size(), found);
      for (uint16_t document : found) postings_[i].push_back(trigram << kDocumentBits | document);
      count_ += found.size();
      // The one that filled it up may have held every trigram.
      if (count_ > kMostPostings + (size_t{1} << kTrigramBits)) Damaged();
    }
  }
}

bool SegmentWriter::IsFull() const {
  return keys_.size() >= kMostDocuments || count_ >= kMostPostings;
}

std::string SegmentWriter::Head() const {
  std::string head;
  PutVarint(head, keys_.size());
  uint64_t expected = 0;
  for (size_t i = 0; i < keys_.size();) {
    auto first = static_cast<uint64_t>(keys_[i]);
    uint64_t run = 1;
    while (i + run < keys_.size() && static_cast<uint64_t>(keys_[i + run]) == first + run) run++;
    uint64_t distance = first - expected;
    PutVarint(head, distance << 1 ^ (distance >> 63 != 0 ? ~uint64_t{0} : 0));
    PutVarint(head, run);
    expected = first + run;
    i += run;
  }
  return head;
}

// Writes the parts of one segment.
class SegmentWriter::PartWriter {
 public:
  explicit PartWriter(size_t documents) : documents_(documents) {}

  // postings: trigram and document, those of one trigram in order. leftOut: trigrams of no list.
  std::string_view Write(std::span<const uint32_t> postings, const std::vector<uint32_t>& leftOut) {
    Sort(postings);
    table_.Clear();
    table_.Reserve(kPartTrigrams * uint64_t{kMostOfEntry});
    lists_.Clear();
    uint32_t before = 0;  // behind the last trigram written
    auto out = leftOut.begin();
    for (uint32_t trigram = 0; trigram < kPartTrigrams; trigram++) {
      uint32_t length = ends_[trigram] - (trigram == 0 ? 0 : ends_[trigram - 1]);
      bool isOut = out != leftOut.end() && *out == trigram;
      if (isOut) ++out;
      if (length == 0 && !isOut) continue;
      table_.Gamma(trigram + 1 - before);
      before = trigram + 1;
      if (isOut || length > LongestList(documents_)) {
        table_.Gamma(1);
      } else {
        WriteList(sorted_.data() + ends_[trigram] - length, length);
      }
    }
    table_.Gamma(static_cast<uint32_t>(kPartTrigrams) + 1 - before);
    table_.Append(lists_);
    return table_.Bytes();
  }

 private:
  // Bits of a list's entry at the most: three numbers below 2^28.
  static constexpr int kMostOfEntry = 3 * BitWriter::kMostAtOnce;

  static size_t TrigramOf(uint32_t posting) {  // within the part
    return posting >> kDocumentBits & (kPartTrigrams - 1);
  }

  // The documents sorted by trigram, and where those of each end.
  void Sort(std::span<const uint32_t> postings) {
    ends_.fill(0);
    for (uint32_t posting : postings) ends_[TrigramOf(posting)]++;
    uint32_t start = 0;
    for (uint32_t& end : ends_) start += std::exchange(end, start);
    if (sorted_.size() < postings.size()) sorted_.resize(postings.size());
    for (uint32_t posting : postings) {
      sorted_[ends_[TrigramOf(posting)]++] = static_cast<uint16_t>(posting & kDocumentMask);
    }
  }

  void WriteList(const uint16_t* documents, uint32_t length) {
    table_.Gamma(length + 1);
    if (length <= kFixedList) {
      lists_.Reserve(length * uint64_t{kDocumentBits});
      for (uint32_t i = 0; i < length; i++) lists_.Put(documents[i], kDocumentBits);
      return;
    }
    int parameter = RiceParameter(documents_, length);
    // All quotients together are no more than the last document's number divided alike.
    lists_.Reserve(length * (uint64_t{1} + static_cast<uint64_t>(parameter)) +
                   (documents_ >> parameter));
    uint64_t start = lists_.Position();
    uint32_t next = 0;
    for (uint32_t i = 0; i < length; i++) {
      lists_.Rice(documents[i] - next, parameter);
      next = documents[i] + 1u;
    }
    table_.Gamma(static_cast<uint32_t>(lists_.Position() - start) + 1);
  }

  size_t documents_;
  std::array<uint32_t, kPartTrigrams> ends_;
  std::vector<uint16_t> sorted_;
  BitWriter table_;
  BitWriter lists_;
};

void SegmentWriter::Finish(const std::function<void(size_t, std::string_view)>& take) {
  PartWriter writer(keys_.size());
  std::vector<uint32_t> leftOut;
  auto out = left_out_.begin();
  for (size_t part = 0; part < kSegmentParts; part++) {
    leftOut.clear();
    for (; out != left_out_.end() && *out / kPartTrigrams == part; ++out) {
      leftOut.push_back(*out % kPartTrigrams);
    }
    take(part, writer.Write(postings_[part], leftOut));
  }
  Clear();
}

void SegmentWriter::Clear() {
  keys_.clear();
  left_out_.clear();
  // The memory is used again by the next segment of a long run and given back at its end.
  for (std::vector<uint32_t>& part : postings_) part.clear();
  count_ = 0;
}

size_t ReadSegmentSize(std::string_view head) {
  return TakeSize(head);
}

std::vector<int64_t> ReadSegmentKeys(std::string_view head) {
  size_t documents = TakeSize(head);
  std::vector<int64_t> keys;
  keys.reserve(documents);
  uint64_t expected = 0;
  while (keys.size() < documents) {
    uint64_t coded = TakeVarint(head);
    uint64_t key = expected + (coded >> 1 ^ (~(coded & 1) + 1));
    uint64_t run = TakeVarint(head);
    if (run == 0 || run > documents - keys.size()) Damaged();
    for (uint64_t i = 0; i < run; i++) keys.push_back(static_cast<int64_t>(key++));
    expected = key;
  }
  return keys;
}

Postings ReadPostings(std::string_view part, uint32_t trigram, size_t documents) {
  BitReader reader(part);
  std::vector<Entry> entries = ReadTable(reader, documents);
  uint64_t lists = reader.Position();
  uint32_t wanted = trigram % kPartTrigrams;
  auto entry = std::lower_bound(entries.begin(), entries.end(), wanted,
                                [](const Entry& a, uint32_t b) { return a.trigram < b; });
  Postings postings;
  if (entry == entries.end() || entry->trigram != wanted) return postings;
  postings.isAll = entry->length == 0;
  ReadList(reader, *entry, lists, documents, postings.documents);
  return postings;
}

}  // namespace tarnwick::jet
