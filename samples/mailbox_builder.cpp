// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/mailbox_builder.h"

#include <map>
#include <memory>

namespace tarnwick::samples {

namespace {

void Put(std::string& bytes, uint64_t number, size_t size) {
  for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<char>(number >> (8 * i)));
}

void Overwrite(std::string& bytes, size_t place, uint32_t number) {
  std::string raw;
  Put(raw, number, 4);
  bytes.replace(place, 4, raw);
}

constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr uint32_t kEnd = 0xFFFFFFFE;
constexpr size_t kSector = 512;
constexpr size_t kMini = 64;
constexpr size_t kMiniLimit = 4096;

struct Node {
  std::string name;
  bool isStorage = true;
  std::vector<size_t> children;
  std::string bytes;
  uint32_t start = kEnd;
};

// Sectors and their table, being filled.
struct Sectors {
  size_t size;
  std::string bytes;
  std::vector<uint32_t> next;

  uint32_t Add(const std::string& data) {
    if (data.empty()) return kEnd;
    auto first = static_cast<uint32_t>(next.size());
    bytes += data;
    bytes.resize((bytes.size() + size - 1) / size * size);
    while (next.size() * size < bytes.size())
      next.push_back(static_cast<uint32_t>(next.size()) + 1);
    next.back() = kEnd;
    return first;
  }
};

std::string TableBytes(const std::vector<uint32_t>& numbers) {
  std::string bytes;
  for (uint32_t number : numbers) Put(bytes, number, 4);
  while (bytes.size() % kSector != 0) Put(bytes, kNone, 4);
  return bytes;
}

std::string DirectoryBytes(const std::vector<Node>& nodes) {
  std::vector<uint32_t> right(nodes.size(), kNone);
  std::vector<uint32_t> child(nodes.size(), kNone);
  for (size_t i = 0; i < nodes.size(); ++i) {
    const std::vector<size_t>& children = nodes[i].children;
    if (children.empty()) continue;
    child[i] = static_cast<uint32_t>(children[0]);
    for (size_t k = 1; k < children.size(); ++k) {
      right[children[k - 1]] = static_cast<uint32_t>(children[k]);
    }
  }
  std::string bytes;
  for (size_t i = 0; i < nodes.size(); ++i) {
    std::string entry;
    for (char c : nodes[i].name) entry += {c, '\0'};
    entry.resize(64);
    Put(entry, 2 * nodes[i].name.size() + 2, 2);
    entry.push_back(static_cast<char>(i == 0 ? 5 : nodes[i].isStorage ? 1 : 2));
    entry.push_back('\1');
    Put(entry, kNone, 4);
    Put(entry, right[i], 4);
    Put(entry, child[i], 4);
    entry.resize(0x74);
    Put(entry, nodes[i].start, 4);
    Put(entry, nodes[i].bytes.size(), 8);
    bytes += entry;
  }
  return bytes;
}

// The properties of a storage: those with a fixed size, and a stream for each other.
class PropertyWriter {
 public:
  PropertyWriter(std::string storage, size_t head)
      : storage_(std::move(storage)), fixed_(head, '\0') {}

  void Number(uint16_t property, uint16_t type, uint64_t value) {
    Put(fixed_, type, 2);
    Put(fixed_, property, 2);
    Put(fixed_, 6, 4);
    Put(fixed_, value, 8);
  }
  void Text(uint16_t property, const std::string& ascii) {
    std::string wide;
    for (char c : ascii) wide += {c, '\0'};
    Stream(property, 0x001F, std::move(wide));
  }
  void Stream(uint16_t property, uint16_t type, std::string bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string name = storage_ + "__substg1.0_";
    uint32_t both = uint32_t{property} << 16 | type;
    for (int shift = 28; shift >= 0; shift -= 4) name.push_back(kDigits[both >> shift & 15]);
    streams_.emplace_back(name, std::move(bytes));
  }
  void Finish(std::vector<std::pair<std::string, std::string>>& streams) {
    streams.emplace_back(storage_ + "__properties_version1.0", fixed_);
    streams.insert(streams.end(), streams_.begin(), streams_.end());
  }

 private:
  std::string storage_;
  std::string fixed_;
  std::vector<std::pair<std::string, std::string>> streams_;
};

}  // namespace

OutlookExpress4Builder::OutlookExpress4Builder() : letters_("JMF6"), index_("JMF9") {
  letters_.resize(84);
  Put(index_, 0x00010004, 4);
  index_.resize(80);
}

void OutlookExpress4Builder::Add(const std::string& letter, uint32_t flags) {
  ++count_;
  auto place = static_cast<uint32_t>(letters_.size());
  size_t size = (16 + letter.size() + 3) / 4 * 4;
  letters_ += std::string("\x00\x7F\x00\x7F", 4);
  Put(letters_, count_, 4);
  Put(letters_, size, 4);
  Put(letters_, letter.size(), 4);
  letters_ += letter;
  letters_.resize(place + size);

  std::string item;
  Put(item, flags, 4);
  Put(item, 0, 4);
  Put(item, count_, 4);
  Put(item, index_.size(), 4);
  Put(item, 212, 4);
  Put(item, place, 4);
  Put(item, size, 4);
  item.resize(212);
  index_ += item;
}

std::string OutlookExpress4Builder::Letters() const {
  std::string bytes = letters_;
  Overwrite(bytes, 8, count_);
  Overwrite(bytes, 16, static_cast<uint32_t>(bytes.size()));
  return bytes;
}

std::string OutlookExpress4Builder::Index() const {
  std::string bytes = index_;
  Overwrite(bytes, 8, count_);
  Overwrite(bytes, 12, static_cast<uint32_t>(bytes.size()));
  return bytes;
}

std::string CompoundBytes(const std::vector<std::pair<std::string, std::string>>& streams) {
  std::vector<Node> nodes = {{"Root Entry", true, {}, {}, kEnd}};
  std::map<std::string, size_t> storages = {{"", 0}};
  for (const auto& [path, bytes] : streams) {
    size_t above = 0;
    size_t begin = 0;
    for (size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', begin)) {
      auto [known, isNew] = storages.try_emplace(path.substr(0, slash), nodes.size());
      if (isNew) {
        nodes[above].children.push_back(nodes.size());
        nodes.push_back({path.substr(begin, slash - begin), true, {}, {}, kEnd});
      }
      above = known->second;
      begin = slash + 1;
    }
    nodes[above].children.push_back(nodes.size());
    nodes.push_back({path.substr(begin), false, {}, bytes, kEnd});
  }
  Sectors mini{kMini, {}, {}};
  Sectors sectors{kSector, {}, {}};
  for (Node& node : nodes) {
    if (node.isStorage) continue;
    node.start = (node.bytes.size() < kMiniLimit ? mini : sectors).Add(node.bytes);
  }
  nodes[0].bytes = mini.bytes;
  nodes[0].start = sectors.Add(mini.bytes);
  uint32_t miniTable = sectors.Add(TableBytes(mini.next));
  uint32_t directory = sectors.Add(DirectoryBytes(nodes));
  // The table itself takes sectors that stand in it.
  size_t tables = 1;
  while (tables * (kSector / 4) < sectors.next.size() + tables) ++tables;
  auto firstTable = static_cast<uint32_t>(sectors.next.size());
  for (size_t i = 0; i < tables; ++i) sectors.next.push_back(0xFFFFFFFD);

  std::string header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  header.resize(0x18);
  for (uint64_t word : {0x3E, 3, 0xFFFE, 9, 6}) Put(header, word, 2);
  header.resize(0x2C);
  Put(header, tables, 4);
  Put(header, directory, 4);
  Put(header, 0, 4);
  Put(header, kMiniLimit, 4);
  Put(header, miniTable, 4);
  Put(header, 1, 4);
  Put(header, kEnd, 4);
  Put(header, 0, 4);
  for (uint32_t i = 0; i < 109; ++i) Put(header, i < tables ? firstTable + i : kNone, 4);
  return header + sectors.bytes + TableBytes(sectors.next);
}

std::string SampleMsgFile(const std::string& subject) {
  constexpr uint64_t kTime = 126'598'072'200'000'000;  // 2002-03-05 13:07 UTC
  std::vector<std::pair<std::string, std::string>> streams;
  auto message = [&](const std::string& storage, size_t head, const std::string& title,
                     const std::string& body) {
    PropertyWriter writer(storage, head);
    writer.Text(0x001A, "IPM.Note");
    writer.Text(0x0037, title);
    writer.Text(0x0C1A, "Bob Marsh");
    writer.Text(0x0C1E, "SMTP");
    writer.Text(0x0C1F, "bob@firm.test");
    writer.Text(0x1000, body);
    writer.Number(0x0039, 0x0040, kTime);
    writer.Number(0x0E06, 0x0040, kTime);
    writer.Number(0x0E07, 0x0003, 1);
    writer.Finish(streams);
  };
  std::string body;
  while (body.size() < 3 * kMiniLimit / 2) body += "A line of a long letter.\r\n";
  message("", 32, subject, body);
  const char* people[] = {"ann", "carl", "dora"};
  for (size_t i = 0; i < 3; ++i) {
    PropertyWriter writer("__recip_version1.0_#0000000" + std::to_string(i) + "/", 8);
    writer.Number(0x0C15, 0x0003, i + 1);
    writer.Text(0x3001, people[i]);
    writer.Text(0x3003, std::string(people[i]) + "@firm.test");
    writer.Finish(streams);
  }
  PropertyWriter picture("__attach_version1.0_#00000000/", 8);
  picture.Text(0x3707, "picture.png");
  picture.Number(0x3705, 0x0003, 1);
  picture.Stream(0x3701, 0x0102, std::string(5000, '\x89'));
  picture.Finish(streams);
  PropertyWriter inner("__attach_version1.0_#00000001/", 8);
  inner.Text(0x3001, "forwarded");
  inner.Number(0x3705, 0x0003, 5);
  inner.Finish(streams);
  message("__attach_version1.0_#00000001/__substg1.0_3701000D/", 24, "The inner one", "inside");
  return CompoundBytes(streams);
}

}  // namespace tarnwick::samples
