// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/node_store.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "outlook/mapi.h"

namespace tarnwick::outlook::reader {

namespace {

// Nodes that each store has, and kinds of nodes.
constexpr uint32_t kStoreNode = 0x21;
constexpr uint32_t kRootNode = 0x122;
constexpr uint32_t kRecipientsNode = 0x692;
constexpr uint32_t kAttachmentsNode = 0x671;
constexpr uint32_t kAttachmentKind = 0x05;
constexpr uint32_t kFoldersTable = 0x0D;   // a folder's list of the folders in it,
constexpr uint32_t kContentsTable = 0x0E;  // and of its items

constexpr uint32_t kNoNode = 0;
constexpr size_t kLeastItem = 64;  // bytes of a file that an item takes

constexpr uint16_t kObject = 0x000D;  // a value that is a node of its own
constexpr uint64_t kMaxValue = 256u << 20;
constexpr size_t kMaxRows = 100'000;

void SendField(Heap& heap, const Field& field, Answer& answer) {
  try {
    StreamField(
        heap, field,
        [&](uint64_t size) {
          if (size > kMaxValue) throw ReadError("value");
          answer.BeginProperty(field.number, field.type);
        },
        [&](std::string_view bytes) { answer.Continue(bytes); });
  } catch (const ReadError&) {
    // One property less, or what there is of it; the others still count.
    bool isBody = Contains({Prop::kBody, Prop::kHtml, Prop::kRtfCompressed}, field.number);
    answer.Lose(isBody ? "body" : "a property");
  }
}

void SendProperties(Heap& heap, const std::vector<Prop>& wanted, Answer& answer) {
  ForEachProperty(heap, [&](const Field& field) {
    if (Contains(wanted, field.number)) SendField(heap, field, answer);
  });
}

// How an attachment is kept; 0 where it does not say.
int64_t MethodOf(Heap& attachment) {
  auto method = FindProperty(attachment, Prop::kAttachMethod);
  if (!method || method->type != PropType::kInt32) return 0;
  return static_cast<int64_t>(NumberAt(method->value, 0, 4));
}

void StreamBytes(Heap& attachment, const StoreFile::ByteSink& sink) {
  auto data = FindProperty(attachment, Prop::kAttachData);
  if (!data || MethodOf(attachment) == AttachMethod::kEmbeddedMessage) {
    throw ReadError("attachment");
  }
  auto begin = [](uint64_t /*size*/) {};
  if (data->type != kObject) return StreamField(attachment, *data, begin, sink);
  // Something another program made: its bytes are a node of their own.
  std::string_view object = attachment.Value(static_cast<uint32_t>(NumberAt(data->value, 0, 4)));
  attachment.Stream(static_cast<uint32_t>(NumberAt(object, 0, 4)), begin, sink);
}

}  // namespace

NodeStore::NodeStore(platform::InputFile& file) : file_(file) {
  auto root = file_.FindNode(kRootNode);
  if (!root || !file_.FindNode(kStoreNode)) throw ReadError("its index is damaged");
}

NodeStore::NodeStore(platform::InputFile& file, FoundStore found) : file_(file, std::move(found)) {}

void NodeStore::DescribeStore(Answer& answer) {
  // Where the store does not say which folder is its top, everything below the root is shown.
  answer.folders = {kRootNode};
  file_.TakeDamage();
  auto node = file_.FindNode(kStoreNode);
  if (!node) throw ReadError("store");
  Heap properties(file_, node->data, node->sub, kPropertiesHeap);
  SendProperties(properties, kStoreProperties, answer);
  TellDamage(answer);
}

// Not as it was written is what can't be told in parts.
void NodeStore::TellDamage(Answer& answer) {
  if (file_.TakeDamage()) answer.Lose("a checksum does not match");
}

NodeStore::Listing NodeStore::ReadListing(uint32_t tableNode) {
  Listing listing;
  file_.TakeDamage();
  try {
    auto node = file_.FindNode(tableNode);
    if (!node) return listing;
    Table table(file_, node->data, node->sub);
    listing.rows = table.RowIds();
    for (size_t row = 0; row < listing.rows.size(); ++row) {
      auto cell = table.FindCell(row, static_cast<uint16_t>(Prop::kMessageClass));
      if (!cell) continue;
      std::string itsClass = ShortValue(table.Values(), *cell);
      if (!itsClass.empty() && !IsMailClass(itsClass, cell->type)) {
        listing.otherItems.push_back(listing.rows[row]);
      }
    }
    listing.isWhole = !file_.TakeDamage();
  } catch (const ReadError&) {
    // It is left for the nodes.
  }
  return listing;
}

// False also for a node that is not there.
bool NodeStore::IsBelow(uint32_t node, uint32_t folder, uint32_t kind) {
  if ((node & kKindMask) != kind) return false;
  try {
    auto found = file_.FindNode(node);
    return found && found->parent == folder;
  } catch (const ReadError&) {
    return false;
  }
}

// count: how many the folder says it has. A table that is damaged, or that the nodes contradict, is
// left for the nodes; beside them stay those rows of a sound one whose node is gone or damaged, so
// that they are not lost without a word.
NodeStore::Listing NodeStore::ListOf(uint32_t folder, uint32_t tableKind, uint32_t kind,
                                     std::optional<int64_t> count) {
  Listing listing = ReadListing((folder & ~kKindMask) | tableKind);
  // Searches stand among the folders; what they list lies elsewhere.
  if (kind == kFolderKind) {
    std::erase_if(listing.rows, [](uint32_t id) { return (id & kKindMask) != kFolderKind; });
  }
  bool agrees = !count || *count == static_cast<int64_t>(listing.rows.size());
  agrees = agrees && std::all_of(listing.rows.begin(), listing.rows.end(),
                                 [&](uint32_t id) { return IsBelow(id, folder, kind); });
  if (listing.isWhole && agrees) return listing;
  Listing nodes{Below(folder, kind), {}, listing.isWhole};
  std::set<uint32_t> known(nodes.rows.begin(), nodes.rows.end());
  if (listing.isWhole) {
    for (uint32_t id : listing.rows) {
      bool isLost = true;
      try {
        auto found = file_.FindNode(id);
        isLost = !found || !found->isSound;
      } catch (const ReadError&) {
      }
      if (isLost && (id & kKindMask) == kind && known.insert(id).second) nodes.rows.push_back(id);
    }
    nodes.otherItems = std::move(listing.otherItems);
    std::erase_if(nodes.otherItems, [&](uint32_t id) { return known.count(id) == 0; });
  }
  return nodes;
}

// The nodes of a kind whose parent is the folder.
std::vector<uint32_t> NodeStore::Below(uint32_t folder, uint32_t kind) {
  if (!hasChildren_) {
    hasChildren_ = true;
    file_.ForEachNode([&](uint32_t number, const NodeFile::Node& node) {
      uint32_t its = number & kKindMask;
      if ((its == kFolderKind || its == kMessageKind) && node.parent != number) {
        children_.emplace(node.parent, number);
      }
    });
  }
  std::vector<uint32_t> nodes;
  auto [begin, end] = children_.equal_range(folder);
  for (auto child = begin; child != end; ++child) {
    if ((child->second & kKindMask) == kind) nodes.push_back(child->second);
  }
  return nodes;
}

// A folder whose own node is gone still has what lies below it.
void NodeStore::DescribeFolder(uint32_t node, Answer& answer) {
  file_.TakeDamage();
  if ((node & kKindMask) != kFolderKind) throw ReadError("folder");
  std::optional<int64_t> count;
  bool hasName = false;
  try {
    auto found = file_.FindNode(node);
    if (!found) throw ReadError("folder");
    Heap properties(file_, found->data, found->sub, kPropertiesHeap);
    SendProperties(properties, kFolderProperties, answer);
    auto field = FindProperty(properties, Prop::kContentCount);
    if (field && field->type == PropType::kInt32) {
      count = static_cast<int64_t>(NumberAt(field->value, 0, 4));
    }
    hasName = true;
  } catch (const ReadError&) {
    if (Below(node, kFolderKind).empty() && Below(node, kMessageKind).empty()) throw;
  }
  bool isSound = !file_.TakeDamage() && hasName;
  if (!isSound) answer.Lose("its name");
  answer.folders = ListOf(node, kFoldersTable, kFolderKind, std::nullopt).rows;
  Listing items = ListOf(node, kContentsTable, kMessageKind, count);
  // What the folder says it has and nothing leads to any more.
  if (isSound && count && !items.isWhole) {
    auto most = static_cast<int64_t>(file_.Size() / kLeastItem);
    auto listed = static_cast<int64_t>(items.rows.size());
    for (int64_t i = listed; i < std::min(*count, most); ++i) items.rows.push_back(kNoNode);
  }
  answer.items = std::move(items.rows);
  answer.otherItems = std::move(items.otherItems);
}

NodeStore::Message NodeStore::OpenMessage(uint64_t data, uint64_t sub) {
  Message message;
  message.properties = std::make_unique<Heap>(file_, data, sub, kPropertiesHeap);
  try {
    if (auto node = message.properties->FindSubNode(kAttachmentsNode)) {
      message.attachments = Table(file_, node->data, node->sub).RowIds();
    }
  } catch (const ReadError&) {
    try {
      for (const NodeFile::SubNode& node : message.properties->SubNodes()) {
        if ((node.number & kKindMask) == kAttachmentKind) {
          message.attachments.push_back(node.number);
        }
      }
    } catch (const ReadError&) {
      message.isDamaged = true;  // it is there without what belongs to it
    }
  }
  if (message.attachments.size() > kMaxRows) message.attachments.resize(kMaxRows);
  return message;
}

// An item that stays open does not tell its damage again.
NodeStore::Message& NodeStore::OpenItem(uint32_t node) {
  if (item_.properties && itemNode_ == node) return item_;
  embedded_ = {};
  item_ = {};
  auto found = file_.FindNode(node);
  if (!found) throw ReadError("item");
  item_ = OpenMessage(found->data, found->sub);
  itemNode_ = node;
  return item_;
}

std::unique_ptr<Heap> NodeStore::OpenAttachment(Message& message, uint32_t number) {
  if (number >= message.attachments.size()) throw ReadError("attachment");
  auto node = message.properties->FindSubNode(message.attachments[number]);
  if (!node) throw ReadError("attachment");
  return std::make_unique<Heap>(file_, node->data, node->sub, kPropertiesHeap);
}

NodeStore::Message& NodeStore::OpenEmbedded(uint32_t node, const AttachmentPath& path) {
  Message& item = OpenItem(node);
  if (path.empty()) return item;
  if (path.size() > kMaxEmbedding) throw ReadError("embedded message");
  if (embedded_.properties && embeddedPath_ == path) return embedded_;
  embedded_ = {};
  embeddedPath_.clear();
  Message* above = &item;
  for (uint32_t number : path) {
    auto attachment = OpenAttachment(*above, number);
    auto data = FindProperty(*attachment, Prop::kAttachData);
    if (!data || data->type != kObject) throw ReadError("embedded message");
    std::string_view object = attachment->Value(static_cast<uint32_t>(NumberAt(data->value, 0, 4)));
    auto inner = attachment->FindSubNode(static_cast<uint32_t>(NumberAt(object, 0, 4)));
    if (!inner) throw ReadError("embedded message");
    embedded_ = OpenMessage(inner->data, inner->sub);
    above = &embedded_;
  }
  embeddedPath_ = path;
  return embedded_;
}

void NodeStore::DescribeItem(const ItemPlace& place, Answer& answer) {
  file_.TakeDamage();
  item_ = {};
  Message& item = OpenItem(place.node);
  if (auto messageClass = FindProperty(*item.properties, Prop::kMessageClass)) {
    std::string bytes = ShortValue(*item.properties, *messageClass);
    answer.Property(messageClass->number, messageClass->type, bytes);
    if (IsMailClass(bytes, messageClass->type)) DescribeMessage(item, answer);
  }
  TellDamage(answer);
}

void NodeStore::DescribeMessage(Message& message, Answer& answer) {
  SendProperties(*message.properties, kMessageProperties, answer);
  try {
    if (auto node = message.properties->FindSubNode(kRecipientsNode)) {
      Table recipients(file_, node->data, node->sub);
      for (size_t row = 0; row < std::min(recipients.RowIds().size(), kMaxRows); ++row) {
        answer.BeginRecipient();
        recipients.ForEachCell(row, [&](const Field& field) {
          if (Contains(kRecipientProperties, field.number)) {
            SendField(recipients.Values(), field, answer);
          }
        });
      }
    }
  } catch (const ReadError&) {
    answer.Lose("recipients");  // those that were read stand
  }
  if (message.isDamaged) answer.Lose("attachments");
  for (uint32_t i = 0; i < message.attachments.size(); ++i) {
    answer.BeginAttachment();  // keeps the numbers even where one is lost
    try {
      auto attachment = OpenAttachment(message, i);
      SendProperties(*attachment, kAttachmentProperties, answer);
    } catch (const ReadError&) {
      // It shows when its bytes are read.
    }
  }
}

void NodeStore::DescribeEmbedded(const ItemPlace& place, const AttachmentPath& path,
                                 Answer& answer) {
  file_.TakeDamage();
  embedded_ = {};
  DescribeMessage(OpenEmbedded(place.node, path), answer);
  TellDamage(answer);
}

void NodeStore::ReadAttachment(const ItemPlace& place, const AttachmentPath& path,
                               const ByteSink& sink, Answer& answer) {
  if (path.empty()) throw ReadError("attachment");
  file_.TakeDamage();
  Message& message = OpenEmbedded(place.node, {path.begin(), path.end() - 1});
  StreamBytes(*OpenAttachment(message, path.back()), sink);
  TellDamage(answer);
}

}  // namespace tarnwick::outlook::reader
