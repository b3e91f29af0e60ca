// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/msg_file.h"

#include <charconv>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "intake/letter_record.h"
#include "outlook/letter_keeper.h"
#include "outlook/output_budget.h"
#include "outlook/raw_row.h"
#include "outlook/take_item.h"
#include "outlook/type_name.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::outlook {

namespace {

constexpr uint64_t kMostBytes = uint64_t{256} << 20;
constexpr int kMostNested = 32;     // messages within one another
constexpr size_t kMostRows = 2048;  // attachments; recipients likewise

constexpr std::string_view kProperties = "__properties_version1.0";
constexpr std::string_view kStream = "__substg1.0_";
constexpr std::string_view kRecipient = "__recip_version1.0_";
constexpr std::string_view kAttachment = "__attach_version1.0_";
constexpr std::string_view kEmbedded = "__substg1.0_3701000D";
constexpr uint16_t kAttachedBytes = 0x3701;

// What stands before the properties, by what they are of.
constexpr size_t kHeadOfMessage = 32;
constexpr size_t kHeadOfEmbedded = 24;
constexpr size_t kHeadOfRow = 8;
constexpr size_t kPropertySize = 16;
constexpr size_t kValuePlace = 8;

using SharedFile = std::shared_ptr<CompoundFile>;

uint16_t Get16(std::string_view bytes, size_t place) {
  return static_cast<uint16_t>(static_cast<unsigned char>(bytes[place]) |
                               static_cast<unsigned char>(bytes[place + 1]) << 8);
}

// How many bytes of a property's place are its value; 0 for one that lies in a stream.
size_t FixedSize(uint16_t type) {
  switch (type) {
    case PropType::kInt16:
    case PropType::kBoolean:
      return 2;
    case PropType::kInt32:
      return 4;
    case PropType::kInt64:
    case PropType::kTime:
      return 8;
    default:
      return 0;
  }
}

// Number and type of the property that a stream holds, by its name.
std::optional<std::pair<uint16_t, uint16_t>> PropertyOf(std::string_view name) {
  constexpr size_t kDigits = 8;
  if (!name.starts_with(kStream) || name.size() != kStream.size() + kDigits) return std::nullopt;
  uint32_t both = 0;
  std::string_view digits = name.substr(kStream.size());
  auto [end, code] = std::from_chars(digits.data(), digits.data() + digits.size(), both, 16);
  if (code != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return std::pair(static_cast<uint16_t>(both >> 16), static_cast<uint16_t>(both));
}

class MsgItem : public PropertyItem {
 public:
  MsgItem(SharedFile file, uint32_t storage, int depth)
      : file_(std::move(file)), storage_(storage), depth_(depth) {
    std::vector<CompoundFile::Entry> children = file_->Children(storage_);
    RawRow row = ReadRow(children, depth == 0 ? kHeadOfMessage : kHeadOfEmbedded);
    std::string charset = CharsetOfMessage(row);
    properties_ = Decode(row, charset);
    for (const CompoundFile::Entry& child : children) {
      if (!child.isStorage) continue;
      if (child.name.starts_with(kRecipient) && recipients_.size() < kMostRows) {
        recipients_.push_back(Decode(ReadRow(file_->Children(child.index), kHeadOfRow), charset));
      } else if (child.name.starts_with(kAttachment) && attachments_.size() < kMostRows) {
        attachments_.push_back(Decode(ReadRow(file_->Children(child.index), kHeadOfRow), charset));
        attachmentStorages_.push_back(child.index);
      }
    }
  }

  std::string EntryID() override { return {}; }
  std::string TypeName() override {
    return depth_ > 0 ? kMailType : TypeNameOf(properties_.Text(Prop::kMessageClass));
  }
  const PropertySet& Properties() override { return properties_; }
  const std::vector<PropertySet>& Recipients() override { return recipients_; }
  const std::vector<PropertySet>& Attachments() override { return attachments_; }

  void ReadAttachment(size_t index, const std::function<void(std::string_view)>& sink) override {
    for (const CompoundFile::Entry& child : file_->Children(attachmentStorages_.at(index))) {
      auto property = PropertyOf(child.name);
      if (property && property->first == kAttachedBytes && !child.isStorage) {
        sink(file_->Read(child));
        return;
      }
    }
    throw Error(ErrorNumber::kPathAccess, "the attachment has no bytes");
  }

  std::unique_ptr<PropertyItem> EmbeddedItem(size_t index) override {
    if (depth_ >= kMostNested) throw Error(ErrorNumber::kPathAccess, "nested too deep");
    for (const CompoundFile::Entry& child : file_->Children(attachmentStorages_.at(index))) {
      if (child.isStorage && child.name == kEmbedded) {
        return std::make_unique<MsgItem>(file_, child.index, depth_ + 1);
      }
    }
    throw Error(ErrorNumber::kPathAccess, "the embedded message is missing");
  }

  std::string Damage() override { return damage_; }

 private:
  // The properties of a storage: small ones side by side in one stream, others in one each.
  RawRow ReadRow(const std::vector<CompoundFile::Entry>& children, size_t head) {
    RawRow row;
    for (const CompoundFile::Entry& child : children) {
      if (child.isStorage) continue;
      try {
        if (child.name == kProperties) {
          AddFixed(file_->Read(child), head, row);
        } else if (auto property = PropertyOf(child.name);
                   property && property->first != kAttachedBytes && property->first < 0x8000) {
          row.push_back({property->first, property->second, file_->Read(child)});
        }
      } catch (const Error& error) {
        damage_ = error.Description();
      }
    }
    return row;
  }

  static void AddFixed(std::string_view bytes, size_t head, RawRow& row) {
    for (size_t place = head; place + kPropertySize <= bytes.size(); place += kPropertySize) {
      uint16_t type = Get16(bytes, place);
      size_t size = FixedSize(type);
      if (size == 0) continue;
      row.push_back(
          {Get16(bytes, place + 2), type, std::string(bytes.substr(place + kValuePlace, size))});
    }
  }

  SharedFile file_;
  uint32_t storage_;
  int depth_;
  PropertySet properties_;
  std::vector<PropertySet> recipients_;
  std::vector<PropertySet> attachments_;
  std::vector<uint32_t> attachmentStorages_;
  std::string damage_;
};

// The item of a file as both ends read it.
ItemReading ReadMsg(const intake::RawMessage& file, const intake::ReadingRules& rules,
                    const std::function<void(std::string_view)>& sink) {
  uint64_t budget = OutputBudgetOf(intake::RawReader(file).Size());
  ItemReading reading = ReadItem(*OpenMsgFile(file), budget, rules, sink);
  if (reading.type != kMailType) {
    throw Error(ErrorNumber::kPathAccess, "it is no mail: " + reading.type);
  }
  return reading;
}

class MsgFileService : public intake::SingleService {
 protected:
  std::string Read(const intake::RawMessage& raw, std::string_view how,
                   const ByteSink& sink) override {
    auto rules = intake::RecordOf<intake::ReadingRules>(how);
    LetterKeeper text(sink);
    ItemReading reading;
    auto read = intake::ReadElsewhere([&](intake::PreparedMessage& prepared) {
      reading = ReadMsg(raw, rules, [&](std::string_view bytes) { text.Add(bytes); });
      text.Flush();
      prepared = std::move(reading.prepared);
      intake::PackElsewhere(prepared, {"", text.TakeBegin()}, text.Size());
    });
    reading.prepared = std::move(*read);
    return intake::BytesOf(reading);
  }
};

}  // namespace

std::unique_ptr<PropertyItem> OpenMsgFile(const intake::RawMessage& file) {
  auto bytes = std::make_shared<CompoundFile>(
      file.Held() ? *file.Held() : platform::ReadFile(file.File(), kMostBytes));
  auto item = std::make_unique<MsgItem>(std::move(bytes), CompoundFile::kRoot, 0);
  if (item->Properties().IsEmpty()) {
    throw Error(ErrorNumber::kPathAccess, "the file is no Outlook message");
  }
  return item;
}

intake::PreparedMessage MsgFileReader::Read(const std::string& path,
                                            const intake::SourceDescriptor& place, bool isSent,
                                            const intake::ReadingRules& rules) {
  ItemReading reading;
  intake::ScratchLetter output;
  bool isRead = reader_.Ask(path, rules, intake::BytesOf(rules), &output,
                            [&](std::string_view record, const auto& /*sent*/) {
                              reading = intake::RecordOf<ItemReading>(record);
                              intake::CheckPrepared(reading.prepared, output.Held());
                            });
  if (isRead) {
    intake::TellOf(reading.prepared);
  } else {
    reading = ReadMsg(path, rules, [&](std::string_view bytes) { output.Add(bytes); });
  }
  return SettleItem(std::move(reading), output.FinishInFile(),
                    {place.folder, place.parent, isSent, false}, place.application, texts_)
      .prepared;
}

std::function<intake::PreparedMessage(const std::string&, const intake::SourceDescriptor&, bool,
                                      const intake::ReadingRules&)>
ReadsMsgFiles() {
  auto reader = std::make_shared<std::optional<MsgFileReader>>();
  return [reader](const std::string& path, const intake::SourceDescriptor& place, bool isSent,
                  const intake::ReadingRules& rules) {
    if (!*reader) reader->emplace();
    return (*reader)->Read(path, place, isSent, rules);
  };
}

std::unique_ptr<intake::LetterService> MakeMsgFileService() {
  return std::make_unique<MsgFileService>();
}

}  // namespace tarnwick::outlook
