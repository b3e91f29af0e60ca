// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the search of a store believes: forged and doubled blocks, and files that are none.
#include "outlook/reader/lost_store.h"

#include "outlook/reader/checksum.h"
#include "samples/worn_outlook.h"
#include "support/testing.h"

namespace tarnwick::outlook::reader {
namespace {

using samples::PstBuilder;
using samples::PstMessage;

void PutAt(std::string& bytes, size_t at, uint64_t value, size_t count) {
  for (size_t i = 0; i < count; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
}

// A block of a Unicode store that is right in all but what it says.
std::string ForgedBlock(uint64_t offset, uint64_t id) {
  std::string block(64, 'f');
  size_t size = 64 - LayoutOf(Variant::kUnicode).trailer;
  PutAt(block, size, size, 2);
  PutAt(block, size + 2, SignatureOf(offset, id), 2);
  PutAt(block, size + 4, Checksum(block.substr(0, size)), 4);
  PutAt(block, size + 8, id, 8);
  return block;
}

class LostStoreTest : public ::testing::Test {
 protected:
  void Write(const std::string& bytes) { platform::WriteFile(folder_.File("a.pst"), bytes); }
  FoundStore Scan() {
    platform::InputFile file(folder_.File("a.pst"));
    return ScanStore(file, [](int) {});
  }
  // The text of an item; "" where it can't be read.
  std::string Item(uint32_t node) {
    platform::InputFile file(folder_.File("a.pst"));
    LostStore store(file, [](int) {});
    Answer answer;
    try {
      store.DescribeItem({PstBuilder::kTop, 0, node}, answer);
    } catch (const ReadError&) {
      return {};
    }
    std::string texts;
    for (const RawProperty& property : answer.properties) texts += property.bytes;
    std::erase(texts, '\0');
    return texts;
  }
  testing::TempFolder folder_;
};

TEST_F(LostStoreTest, ABlockInAnotherIsAPartOfItAndOneThatDiffersFromItsDoubleIsNotBelieved) {
  uint32_t first = 0;
  auto build = [&](const std::string& attached) {
    PstBuilder store;
    uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
    first = store.AddMessage(inbox, samples::WornMail(1));
    PstMessage carrier = samples::WornMail(3);
    carrier.attachments[0].data = attached;
    store.AddMessage(inbox, carrier);
    return store.Build();
  };
  std::string sound = build(std::string(4000, 'x'));
  Write(sound);
  ASSERT_THAT(Item(first), HasSubstr("body-1;"));
  FoundStore found = Scan();
  auto its = std::find_if(found.nodes.begin(), found.nodes.end(),
                          [&](const FoundNode& node) { return node.number == first; });
  ASSERT_NE(its, found.nodes.end());

  size_t place = (sound.find(std::string(4000, 'x')) + 63) / 64 * 64;
  std::string attached(4000, 'x');
  attached.replace(place - sound.find(attached), 64, ForgedBlock(place, its->data));
  std::string nested = build(attached);
  ASSERT_EQ(nested.substr(place, 64), ForgedBlock(place, its->data));
  Write(nested);
  EXPECT_THAT(Item(first), HasSubstr("body-1;")) << "what somebody attached";

  sound.resize((sound.size() + 63) / 64 * 64);
  Write(sound + ForgedBlock(sound.size(), its->data));
  EXPECT_EQ(Item(first), "") << "two of one number";
  Write(sound + ForgedBlock(sound.size() + 64, its->data));
  EXPECT_THAT(Item(first), HasSubstr("body-1;")) << "of another place";
}

TEST_F(LostStoreTest, AFileOfNothingButEndsOfBlocksCostsNoMoreThanItsSize) {
  // Each end says that eight kilobytes before it are a block, whose checksum is wrong.
  constexpr size_t kSize = 4 << 20;
  std::string bytes(kSize, '\1');
  for (size_t end = 8192; end <= kSize; end += 64) {
    size_t trailer = end - LayoutOf(Variant::kUnicode).trailer;
    PutAt(bytes, trailer, 8176, 2);
    PutAt(bytes, trailer + 8, 4, 8);
    PutAt(bytes, trailer + 2, SignatureOf(end - 8192, 4), 2);
  }
  Write(bytes);
  int looks = 0;
  platform::InputFile file(folder_.File("a.pst"));
  EXPECT_THROW(ScanStore(file, [&](int) { ++looks; }), ReadError);
  EXPECT_LT(looks, 3 * 4) << "the look as a Unicode store was given up";
}

}  // namespace
}  // namespace tarnwick::outlook::reader
