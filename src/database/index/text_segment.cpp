// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/index/text_segment.h"

#include <algorithm>
#include <bit>
#include <cassert>

#include "platform/error.h"

namespace tarnwick::jet {

namespace {

// Memory while a segment is built: four bytes each, and half of that again when it is written.
constexpr size_t kMostPostings = 6'000'000;
// Up to so many documents are written as they are.
constexpr size_t kFixedList = 3;
// What more than every second document holds tells a search next to nothing.
constexpr size_t kTellingShare = 2;

constexpr uint32_t kDocumentMask = (1u << kDocumentBits) - 1;

[[noreturn]] void Damaged() {
  throw Error(11, "The text index is damaged");
}

class BitWriter {
 public:
  explicit BitWriter(std::string& data) : data_(data) {}
  ~BitWriter() { Align(); }
  BitWriter(const BitWriter&) = delete;
  BitWriter& operator=(const BitWriter&) = delete;

  // count: at most 32.
  void Put(uint32_t bits, int count) {
    window_ |= static_cast<uint64_t>(bits) << filled_;
    filled_ += count;
    if (filled_ >= 32) Drop(4);
  }
  void Gamma(uint32_t number) {
    int bits = static_cast<int>(std::bit_width(number)) - 1;
    Put(1u << bits, bits + 1);
    Put(number & ((1u << bits) - 1), bits);
  }
  void Rice(uint32_t number, int parameter) {
    uint32_t quotient = number >> parameter;
    for (; quotient >= 16; quotient -= 16) Put(0xFFFF, 16);
    // Together at most 29 bits: a parameter has fewer than a document's number.
    uint32_t ones = (1u << quotient) - 1;
    uint32_t rest = number & ((1u << parameter) - 1);
    int length = static_cast<int>(quotient) + 1;
    Put(ones | rest << length, length + parameter);
  }

 private:
  void Drop(int bytes) {
    char dropped[4];
    for (int i = 0; i < bytes; i++) dropped[i] = static_cast<char>(window_ >> 8 * i);
    data_.append(dropped, static_cast<size_t>(bytes));
    window_ >>= 8 * bytes;
    filled_ -= 8 * bytes;
  }
  void Align() {
    while (filled_ > 0) Drop(1);
  }

  std::string& data_;
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
  size_t before = postings_.size();
  postings_.insert(postings_.end(), trigrams.begin(), trigrams.end());
  for (size_t i = before; i < postings_.size(); i++) {
    postings_[i] = postings_[i] << kDocumentBits | document;
  }
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
      for (uint16_t document : found) postings_.push_back(trigram << kDocumentBits | document);
      // The one that filled it up may have held every trigram.
      if (postings_.size() > kMostPostings + (size_t{1} << kTrigramBits)) Damaged();
    }
    if (postings_.size() > kMostPostings + (size_t{1} << kTrigramBits)) Damaged();
  }
}

bool SegmentWriter::IsFull() const {
  return keys_.size() >= kMostDocuments || postings_.size() >= kMostPostings;
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

void SegmentWriter::Finish(const std::function<void(size_t, std::string_view)>& take) {
  // Sorted by trigram; the documents of each came in order and stay so.
  std::vector<uint32_t> starts((size_t{1} << kTrigramBits) + 1);
  for (uint32_t posting : postings_) starts[(posting >> kDocumentBits) + 1]++;
  for (size_t i = 1; i < starts.size(); i++) starts[i] += starts[i - 1];
  std::vector<uint16_t> documents(postings_.size());
  {
    std::vector<uint32_t> places(starts.begin(), starts.end() - 1);
    for (uint32_t posting : postings_) {
      documents[places[posting >> kDocumentBits]++] =
          static_cast<uint16_t>(posting & kDocumentMask);
    }
  }
  std::string data;
  for (size_t part = 0; part < kSegmentParts; part++) {
    data.clear();
    WritePart(part, starts, documents, data);
    take(part, data);
  }
  Clear();
}

void SegmentWriter::WritePart(size_t part, const std::vector<uint32_t>& starts,
                              const std::vector<uint16_t>& documents, std::string& data) const {
  {
    BitWriter table(data);
    struct List {
      uint32_t first;
      uint32_t length;
    };
    std::vector<List> written;
    auto last = static_cast<uint32_t>(part * kPartTrigrams) - 1;
    auto leftOut = std::lower_bound(left_out_.begin(), left_out_.end(), part * kPartTrigrams);
    for (size_t i = 0; i < kPartTrigrams; i++) {
      auto trigram = static_cast<uint32_t>(part * kPartTrigrams + i);
      uint32_t first = starts[trigram];
      uint32_t length = starts[trigram + 1] - first;
      bool isOut = leftOut != left_out_.end() && *leftOut == trigram;
      if (isOut) ++leftOut;
      if (length == 0 && !isOut) continue;
      table.Gamma(trigram - last);
      last = trigram;
      if (isOut || length > LongestList(keys_.size())) {
        table.Gamma(1);
        continue;
      }
      table.Gamma(length + 1);
      written.push_back({first, length});
      if (length <= kFixedList) continue;
      int parameter = RiceParameter(keys_.size(), length);
      uint32_t size = 0;
      uint32_t next = 0;
      for (uint32_t j = first; j < first + length; j++) {
        size += ((documents[j] - next) >> parameter) + 1 + static_cast<uint32_t>(parameter);
        next = documents[j] + 1u;
      }
      table.Gamma(size + 1);
    }
    table.Gamma(static_cast<uint32_t>((part + 1) * kPartTrigrams) - last);
    for (const List& list : written) {
      bool fixed = list.length <= kFixedList;
      int parameter = RiceParameter(keys_.size(), list.length);
      uint32_t next = 0;
      for (uint32_t j = list.first; j < list.first + list.length; j++) {
        if (fixed) {
          table.Put(documents[j], kDocumentBits);
        } else {
          table.Rice(documents[j] - next, parameter);
          next = documents[j] + 1u;
        }
      }
    }
  }
}

void SegmentWriter::Clear() {
  keys_.clear();
  left_out_.clear();
  // The memory is used again by the next segment of a long run and given back at its end.
  postings_.clear();
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
