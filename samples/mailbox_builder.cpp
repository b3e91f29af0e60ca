// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/mailbox_builder.h"

#include <utility>
#include <vector>

#include "takeout/compound_file_writer.h"

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

std::string SampleMsgFile(const std::string& subject, size_t pictureBytes) {
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
  while (body.size() < 6144) body += "A line of a long letter.\r\n";
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
  picture.Stream(0x3701, 0x0102, std::string(pictureBytes, '\x89'));
  picture.Finish(streams);
  PropertyWriter inner("__attach_version1.0_#00000001/", 8);
  inner.Text(0x3001, "forwarded");
  inner.Number(0x3705, 0x0003, 5);
  inner.Finish(streams);
  message("__attach_version1.0_#00000001/__substg1.0_3701000D/", 24, "The inner one", "inside");
  return takeout::CompoundFileBytes(streams);
}

}  // namespace tarnwick::samples
