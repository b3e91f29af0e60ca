// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/pst_service.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "core/guard.h"
#include "outlook/letter_keeper.h"
#include "outlook/little_endian.h"
#include "outlook/output_budget.h"
#include "outlook/pst_record.h"
#include "outlook/raw_row.h"
#include "outlook/take_item.h"
#include "outlook/type_name.h"
#include "platform/confinement.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::outlook {

namespace {

using reader::Answer;
using reader::AttachmentPath;
using reader::ItemPlace;
using reader::ReadError;
using reader::StoreFile;
using LostParts = std::set<std::string>;

constexpr size_t kEntryIdSize = 24;
constexpr uint64_t kMaxAnswer = uint64_t{1} << 30;
constexpr int64_t kRequestSeconds = 60;

// The node that an entry identifier of the store's own properties names; 0 for none.
uint32_t NodeOfEntry(const std::string& entry) {
  return entry.size() == kEntryIdSize ? TakeNumber(entry, kEntryIdSize - 4) : 0;
}

std::string Listed(const LostParts& parts) {
  std::string all;
  for (const std::string& part : parts) all += (all.empty() ? "" : ", ") + part;
  return all;
}

Error Damaged(const std::string& what) {
  return Error(ErrorNumber::kPathAccess, "The Outlook store can't be read here: " + what);
}

// What of a request may end this process, in order.
class Steps {
 public:
  explicit Steps(intake::ProgressTeller tell) : tell_(std::move(tell)) {}

  void Begin(const PstRequest& request) {
    leftOut_ = {request.leaveOut.begin(), request.leaveOut.end()};
    tells_ = request.tellsSteps;
    last_ = 0;
  }
  // Throws Error where the step is to be left out.
  void Enter() {
    ++last_;
    if (leftOut_.count(last_) > 0) throw Damaged("the reader was lost over it");
    if (tells_) tell_(-static_cast<int>(last_));
  }

 private:
  intake::ProgressTeller tell_;
  std::set<uint32_t> leftOut_;
  bool tells_ = false;
  uint32_t last_ = 0;
};

// The store, and what all that is read of it shares.
class OpenedStore {
 public:
  OpenedStore(std::unique_ptr<StoreFile> store, uint64_t size, intake::ProgressTeller tell)
      : steps(std::move(tell)), store_(std::move(store)), size_(size) {}

  Steps steps;

  // Has the store say something; errors are Errors.
  template <typename Ask>
  void Have(Ask&& ask) {
    try {
      std::forward<Ask>(ask)(*store_);
    } catch (const ReadError& error) {
      throw Damaged(error.what());
    }
  }
  std::vector<reader::FoundItem> Found() { return store_->FindLost(); }
  uint64_t Size() const { return size_; }
  // How much one answer may hold. Values lie in the store as they are; the same block may serve
  // several of them.
  uint64_t AnswerBudget() const { return std::min<uint64_t>(kMaxAnswer, 4 * size_ + (1 << 20)); }

  // A row of the store's own, or of a message that names no code page.
  PropertySet Decoded(const RawRow& row) {
    return Decode(row, HasByteTexts(row) ? Charset() : std::string());
  }
  // Of the store's own byte texts. An ANSI store does not tell, but the first messages in it do.
  const std::string& Charset() {
    if (!charset_) {
      charset_.emplace();
      try {
        steps.Enter();
        FindCharset();
      } catch (const Error&) {
        // They are read as those of this machine.
      }
    }
    return *charset_;
  }

 private:
  void FindCharset() {
    constexpr size_t kMaxFolders = 50;
    constexpr size_t kItemsOfEach = 3;
    Answer top(AnswerBudget());
    store_->DescribeStore(top);
    std::vector<uint32_t> folders = std::move(top.folders);
    for (size_t next = 0; next < std::min(folders.size(), kMaxFolders); ++next) {
      try {
        Answer folder(AnswerBudget());
        store_->DescribeFolder(folders[next], folder);
        folders.insert(folders.end(), folder.folders.begin(), folder.folders.end());
        for (uint32_t i = 0; i < std::min(folder.items.size(), kItemsOfEach); ++i) {
          Answer item(AnswerBudget());
          store_->DescribeItem({folders[next], i, folder.items[i]}, item);
          charset_ = CharsetOfWriter(item.properties);
          if (!charset_->empty()) return;
        }
      } catch (const ReadError&) {
        // There are others.
      }
    }
  }

  std::unique_ptr<StoreFile> store_;
  uint64_t size_;
  std::optional<std::string> charset_;
};

class PstItem : public PropertyItem {
 public:
  // lost: what was lost so far, shared with the item that this one is embedded in.
  PstItem(OpenedStore& store, const ItemPlace& place, AttachmentPath path,
          std::shared_ptr<LostParts> lost)
      : store_(store), place_(place), path_(std::move(path)), lost_(std::move(lost)) {}

  std::string EntryID() override { return {}; }
  std::string TypeName() override {
    // Whatever is embedded is shown as a message.
    if (!path_.empty()) return kMailType;
    std::string type = TypeNameOf(ReadAll().Text(Prop::kMessageClass));
    // Of a damaged item a class that nobody knows may have been that of mail.
    if (type == kUnknownType && !lost_->empty()) {
      throw Error(ErrorNumber::kPathAccess, "its message class is damaged");
    }
    return type;
  }
  const PropertySet& Properties() override { return ReadAll(); }
  const std::vector<PropertySet>& Recipients() override {
    ReadAll();
    return recipients_;
  }
  const std::vector<PropertySet>& Attachments() override {
    ReadAll();
    return attachments_;
  }
  void ReadAttachment(size_t index, const std::function<void(std::string_view)>& sink) override {
    Answer answer;
    try {
      store_.steps.Enter();
      store_.Have(
          [&](StoreFile& store) { store.ReadAttachment(place_, Below(index), sink, answer); });
    } catch (const Error&) {
      lost_->insert("an attachment");
      throw;
    }
    lost_->merge(answer.lost);
  }
  std::unique_ptr<PropertyItem> EmbeddedItem(size_t index) override {
    if (path_.size() >= reader::kMaxEmbedding) {
      throw Error(ErrorNumber::kSubscript, "Messages are embedded too deep");
    }
    return std::make_unique<PstItem>(store_, place_, Below(index), lost_);
  }
  std::string Damage() override { return Listed(*lost_); }

 private:
  AttachmentPath Below(size_t index) const {
    AttachmentPath path = path_;
    path.push_back(static_cast<uint32_t>(index));
    return path;
  }

  const PropertySet& ReadAll() {
    if (isRead_) return properties_;
    Answer answer(store_.AnswerBudget());
    if (!path_.empty()) store_.steps.Enter();
    store_.Have([&](StoreFile& store) {
      if (path_.empty()) {
        store.DescribeItem(place_, answer);
      } else {
        store.DescribeEmbedded(place_, path_, answer);
      }
    });
    std::string charset = CharsetOfMessage(answer.properties);
    if (charset.empty() && HasByteTexts(answer.properties)) charset = store_.Charset();
    properties_ = Decode(answer.properties, charset);
    for (const RawRow& row : answer.recipients) recipients_.push_back(Decode(row, charset));
    for (const RawRow& row : answer.attachments) attachments_.push_back(Decode(row, charset));
    lost_->merge(answer.lost);
    isRead_ = true;
    return properties_;
  }

  OpenedStore& store_;
  ItemPlace place_;
  AttachmentPath path_;  // attachments down to this message
  std::shared_ptr<LostParts> lost_;
  bool isRead_ = false;
  PropertySet properties_;
  std::vector<PropertySet> recipients_;
  std::vector<PropertySet> attachments_;
};

StoreSays AskStore(OpenedStore& store) {
  Answer answer(store.AnswerBudget());
  store.Have([&](StoreFile& file) { file.DescribeStore(answer); });
  PropertySet properties = store.Decoded(answer.properties);
  return {.key = properties.Bytes(Prop::kRecordKey),
          .name = properties.Text(Prop::kDisplayName),
          .hasPassword = properties.Number(Prop::kPstPassword) != 0,
          .root = answer.folders.empty() ? 0 : answer.folders[0],
          .top = NodeOfEntry(properties.Bytes(Prop::kIpmSubtree)),
          .sentMail = NodeOfEntry(properties.Bytes(Prop::kSentMailEntry)),
          .outbox = NodeOfEntry(properties.Bytes(Prop::kOutboxEntry)),
          .deletedItems = NodeOfEntry(properties.Bytes(Prop::kDeletedItemsEntry)),
          .damage = Listed(answer.lost)};
}

FolderSays AskFolder(OpenedStore& store, uint32_t node) {
  Answer answer(store.AnswerBudget());
  store.Have([&](StoreFile& file) { file.DescribeFolder(node, answer); });
  PropertySet properties = store.Decoded(answer.properties);
  return {.name = properties.Text(Prop::kDisplayName),
          .container = properties.Text(Prop::kContainerClass),
          .folders = std::move(answer.folders),
          .items = std::move(answer.items),
          .otherItems = std::move(answer.otherItems),
          .damage = Listed(answer.lost)};
}

class PstService : public intake::LetterService {
 public:
  PstService(const std::function<std::unique_ptr<StoreFile>(platform::InputFile&)>& open,
             const intake::ProgressTeller& tell)
      : file_(platform::InputFile::Handed()) {
    try {
      store_.emplace(open(file_), file_.Size(), tell);
      tell(0);  // it is open
    } catch (const std::exception& error) {
      fault_ = error.what();
    }
  }

  Answer Next(std::string_view how, bool packs, const ByteSink& sink) override {
    platform::LimitProcessorTime(kRequestSeconds);
    auto request = intake::RecordOf<PstRequest>(how);
    if (store_) store_->steps.Begin(request);
    using Kind = PstRequest::Kind;
    switch (request.kind) {
      case Kind::kStore:
        return Told<StoreSays>([](OpenedStore& store) { return AskStore(store); });
      case Kind::kFolder:
        return Told<FolderSays>(
            [&](OpenedStore& store) { return AskFolder(store, request.place.node); });
      case Kind::kFacts:
        return Told<FactsSaid>([&](OpenedStore& store) {
          return FactsSaid{{}, PstItem(store, request.place, {}, Sound()).Facts()};
        });
      case Kind::kFound:
        return Told<FoundSaid>([](OpenedStore& store) { return FoundSaid{{}, store.Found()}; });
      case Kind::kLetter:
        break;
    }
    return {ReadLetterOf(request, packs, sink)};
  }
  std::string Text(std::string_view /*which*/, const ByteSink& /*longText*/) override { return {}; }

 private:
  static std::shared_ptr<LostParts> Sound() { return std::make_shared<LostParts>(); }

  OpenedStore& Opened() {
    if (!store_) throw Error(ErrorNumber::kPathAccess, fault_);
    return *store_;
  }

  template <typename Said, typename Ask>
  Answer Told(Ask&& ask) {
    Said said;
    try {
      said = std::forward<Ask>(ask)(Opened());
    } catch (...) {
      said = {};
      said.fault = core::CurrentError().Description();
    }
    return {intake::BytesOf(said)};
  }

  std::string ReadLetterOf(const PstRequest& request, bool packs, const ByteSink& sink) {
    LetterKeeper text(sink);
    ItemReading reading;
    auto read = intake::ReadElsewhere([&](intake::PreparedMessage& prepared) {
      OpenedStore& store = Opened();
      PstItem item(store, request.place, {}, Sound());
      uint64_t budget = OutputBudgetOf(store.Size());
      reading =
          ReadItem(item, budget, request.rules, [&](std::string_view bytes) { text.Add(bytes); });
      text.Flush();
      if (reading.type != kMailType) return;
      prepared = std::move(reading.prepared);
      intake::PackElsewhere(prepared, {"", text.TakeBegin()}, text.Size(), packs);
    });
    reading.prepared = std::move(*read);
    return intake::BytesOf(reading);
  }

  platform::InputFile file_;
  std::optional<OpenedStore> store_;
  std::string fault_;
};

}  // namespace

std::unique_ptr<intake::LetterService> MakePstService(
    const std::function<std::unique_ptr<StoreFile>(platform::InputFile&)>& open,
    const intake::ProgressTeller& tell) {
  return std::make_unique<PstService>(open, tell);
}

}  // namespace tarnwick::outlook
