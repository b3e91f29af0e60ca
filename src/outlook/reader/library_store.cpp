// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/library_store.h"

#include <algorithm>
#include <optional>

#include "outlook/little_endian.h"
#include "outlook/mapi.h"
#include "platform/error.h"

namespace tarnwick::outlook::reader {

namespace {

constexpr uint32_t kRowNode = 0x67F2;  // a table row's property that names its node
constexpr uint32_t kNodeTypeMask = 0x1F;
constexpr uint32_t kMessageNode = 0x04;
constexpr size_t kMaxValue = 256u << 20;
constexpr int kMaxRows = 100'000;
constexpr size_t kAttachmentPiece = size_t{48} * 1024;

// The store's file as the library reads it: by calls that know a place in it.
struct Input {
  platform::InputFile& file;
  uint64_t place = 0;
};

Input& InputOf(intptr_t* handle) {
  return *reinterpret_cast<Input*>(handle);
}

int FreeInput(intptr_t** handle, libbfio_error_t**) {
  delete reinterpret_cast<Input*>(*handle);
  *handle = nullptr;
  return 1;
}

int CloneInput(intptr_t** copy, intptr_t* handle, libbfio_error_t**) {
  *copy = reinterpret_cast<intptr_t*>(new Input(InputOf(handle)));
  return 1;
}

ssize_t ReadInput(intptr_t* handle, uint8_t* buffer, size_t size, libbfio_error_t**) {
  Input& input = InputOf(handle);
  try {
    size_t got = input.file.ReadAt(input.place, buffer, size);
    input.place += got;
    return static_cast<ssize_t>(got);
  } catch (const Error&) {
    return -1;
  }
}

off64_t SeekInput(intptr_t* handle, off64_t offset, int whence, libbfio_error_t**) {
  Input& input = InputOf(handle);
  auto from = static_cast<off64_t>(whence == SEEK_SET   ? 0
                                   : whence == SEEK_CUR ? input.place
                                                        : input.file.Size());
  if (offset < -from || offset > INT64_MAX - from) return -1;
  input.place = static_cast<uint64_t>(from + offset);
  return from + offset;
}

int InputSize(intptr_t* handle, size64_t* size, libbfio_error_t**) {
  *size = InputOf(handle).file.Size();
  return 1;
}

InputHandle OpenInput(platform::InputFile& file) {
  auto isThere = [](intptr_t*, libbfio_error_t**) { return 1; };
  libbfio_handle_t* raw = nullptr;
  auto* input = reinterpret_cast<intptr_t*>(new Input{file});
  int result = libbfio_handle_initialize(
      &raw, input, FreeInput, CloneInput, [](intptr_t*, int, libbfio_error_t**) { return 1; },
      [](intptr_t*, libbfio_error_t**) { return 0; }, ReadInput,
      [](intptr_t*, const uint8_t*, size_t, libbfio_error_t**) -> ssize_t { return -1; }, SeekInput,
      isThere, isThere, InputSize, LIBBFIO_FLAG_IO_HANDLE_MANAGED, nullptr);
  if (result != 1) FreeInput(&input, nullptr);
  if (result != 1) throw ReadError("store");
  return InputHandle(raw);
}

// The value's bytes; nullopt when they can't be read.
std::optional<std::string> ValueOf(libpff_record_entry_t* entry) {
  size_t size = 0;
  if (libpff_record_entry_get_data_size(entry, &size, nullptr) != 1 || size > kMaxValue) {
    return std::nullopt;
  }
  std::string bytes(size, '\0');
  if (size == 0) return bytes;
  int result =
      libpff_record_entry_get_data(entry, reinterpret_cast<uint8_t*>(bytes.data()), size, nullptr);
  if (result != 1) return std::nullopt;
  return bytes;
}

template <typename Visit>
void ForEachEntry(libpff_record_set_t* set, Visit visit) {
  int count = 0;
  if (libpff_record_set_get_number_of_entries(set, &count, nullptr) != 1) return;
  for (int i = 0; i < count; ++i) {
    libpff_record_entry_t* raw = nullptr;
    if (libpff_record_set_get_entry_by_index(set, i, &raw, nullptr) != 1) continue;
    RecordEntryHandle entry(raw);
    uint32_t number = 0;
    uint32_t type = 0;
    if (libpff_record_entry_get_entry_type(entry.get(), &number, nullptr) != 1) continue;
    if (libpff_record_entry_get_value_type(entry.get(), &type, nullptr) != 1) continue;
    visit(entry.get(), number, type);
  }
}

// A property that can't be read is left out; the others still count.
void SendSet(libpff_record_set_t* set, const std::vector<Prop>& wanted, Answer& answer) {
  ForEachEntry(set, [&](libpff_record_entry_t* entry, uint32_t number, uint32_t type) {
    if (number > 0xFFFF || !Contains(wanted, number)) return;
    if (auto bytes = ValueOf(entry)) {
      answer.Property(static_cast<uint16_t>(number), static_cast<uint16_t>(type), *bytes);
    }
  });
}

int RowsOf(libpff_item_t* item) {
  int count = 0;
  if (libpff_item_get_number_of_record_sets(item, &count, nullptr) != 1) return 0;
  return std::min(count, kMaxRows);
}

void SendProperties(const char* what, libpff_item_t* item, const std::vector<Prop>& wanted,
                    Answer& answer) {
  if (RowsOf(item) < 1) throw ReadError(what);
  auto set = Get<RecordSetHandle>(what, libpff_item_get_record_set_by_index, item, 0);
  if (set) SendSet(set.get(), wanted, answer);
}

// The nodes that a table's rows name, and those of them whose class is another than mail.
struct Listing {
  std::vector<uint32_t> nodes;
  std::vector<uint32_t> otherItems;
};

Listing ListOf(libpff_item_t* table) {
  Listing listing;
  int rows = 0;
  if (libpff_item_get_number_of_record_sets(table, &rows, nullptr) != 1) return listing;
  for (int row = 0; row < rows; ++row) {
    uint32_t node = 0;
    bool isOther = false;
    auto set = Get<RecordSetHandle>("contents", libpff_item_get_record_set_by_index, table, row);
    if (set) {
      ForEachEntry(set.get(), [&](libpff_record_entry_t* entry, uint32_t number, uint32_t type) {
        if (number != kRowNode && number != static_cast<uint32_t>(Prop::kMessageClass)) return;
        auto bytes = ValueOf(entry);
        if (number != kRowNode) {
          isOther = bytes && !bytes->empty() && !IsMailClass(*bytes, type);
        } else if (bytes && bytes->size() >= 4) {
          node = TakeNumber(*bytes, 0);
        }
      });
    }
    listing.nodes.push_back(node);
    if (isOther) listing.otherItems.push_back(node);
  }
  return listing;
}

std::vector<uint32_t> SubFolders(libpff_item_t* folder) {
  std::vector<uint32_t> nodes;
  int count = 0;
  if (libpff_folder_get_number_of_sub_folders(folder, &count, nullptr) != 1) return nodes;
  for (int i = 0; i < count; ++i) {
    libpff_item_t* raw = nullptr;
    if (libpff_folder_get_sub_folder(folder, i, &raw, nullptr) != 1) continue;
    ItemHandle sub(raw);
    uint32_t node = 0;
    if (libpff_item_get_identifier(sub.get(), &node, nullptr) == 1) nodes.push_back(node);
  }
  return nodes;
}

// What the node tree holds below a folder, for a folder whose table of contents is gone.
std::vector<uint32_t> MessagesByTree(libpff_item_t* folder) {
  std::vector<uint32_t> nodes;
  int count = 0;
  if (libpff_item_get_number_of_sub_items(folder, &count, nullptr) != 1) return nodes;
  for (int i = 0; i < count; ++i) {
    libpff_item_t* raw = nullptr;
    if (libpff_item_get_sub_item(folder, i, &raw, nullptr) != 1) continue;
    ItemHandle sub(raw);
    uint32_t node = 0;
    if (libpff_item_get_identifier(sub.get(), &node, nullptr) != 1) continue;
    if ((node & kNodeTypeMask) == kMessageNode) nodes.push_back(node);
  }
  return nodes;
}

void StreamBytes(libpff_item_t* attachment, const StoreFile::ByteSink& sink) {
  int type = 0;
  size64_t size = 0;
  if (libpff_attachment_get_type(attachment, &type, nullptr) != 1 ||
      type != LIBPFF_ATTACHMENT_TYPE_DATA) {
    throw ReadError("attachment");
  }
  if (libpff_attachment_get_data_size(attachment, &size, nullptr) != 1) {
    throw ReadError("attachment");
  }
  std::string piece(kAttachmentPiece, '\0');
  while (size > 0) {
    ssize_t count = libpff_attachment_data_read_buffer(
        attachment, reinterpret_cast<uint8_t*>(piece.data()),
        static_cast<size_t>(std::min<size64_t>(size, piece.size())), nullptr);
    if (count <= 0) throw ReadError("attachment");
    sink(std::string_view(piece).substr(0, static_cast<size_t>(count)));
    size -= std::min<size64_t>(size, static_cast<size64_t>(count));
  }
}

}  // namespace

LibraryStore::LibraryStore(platform::InputFile& file, bool isDamaged)
    : input_(OpenInput(file)), isDamaged_(isDamaged) {
  libpff_file_t* raw = nullptr;
  if (libpff_file_initialize(&raw, nullptr) != 1) throw ReadError("store");
  file_.reset(raw);
  int access = libpff_get_access_flags_read();
  if (libpff_file_open_file_io_handle(file_.get(), input_.get(), access, nullptr) != 1) {
    throw ReadError("store");
  }
}

void LibraryStore::DescribeStore(Answer& answer) {
  auto store = Get<ItemHandle>("store", libpff_file_get_message_store, file_.get());
  if (store) SendProperties("store", store.get(), kStoreProperties, answer);
  // Where the store does not say which folder is its top, everything below the root is shown.
  auto root = Get<ItemHandle>("root folder", libpff_file_get_root_folder, file_.get());
  uint32_t node = 0;
  if (root && libpff_item_get_identifier(root.get(), &node, nullptr) == 1) {
    answer.folders = {node};
  }
}

libpff_item_t* LibraryStore::OpenFolder(uint32_t node) {
  if (folder_ && folderNode_ == node) return folder_.get();
  embedded_ = {};
  item_.reset();
  folder_.reset();
  folder_ = Get<ItemHandle>("folder", libpff_file_get_item_by_identifier, file_.get(), node);
  if (!folder_) throw ReadError("folder");
  folderNode_ = node;
  return folder_.get();
}

void LibraryStore::DescribeFolder(uint32_t node, Answer& answer) {
  libpff_item_t* folder = OpenFolder(node);
  SendProperties("folder", folder, kFolderProperties, answer);
  answer.folders = SubFolders(folder);
  libpff_item_t* raw = nullptr;
  int result = libpff_folder_get_sub_messages(folder, &raw, nullptr);
  ItemHandle table(raw);
  Listing items;
  if (result == 1 && table) {
    items = ListOf(table.get());
  } else {
    items.nodes = MessagesByTree(folder);
  }
  answer.items = std::move(items.nodes);
  answer.otherItems = std::move(items.otherItems);
}

libpff_item_t* LibraryStore::OpenItem(const ItemPlace& place) {
  libpff_item_t* parent = OpenFolder(place.folder);
  if (item_ && itemNode_ == place.node) return item_.get();
  embedded_ = {};
  item_.reset();
  libpff_item_t* raw = nullptr;
  uint32_t found = 0;
  if (place.index <= INT32_MAX &&
      libpff_folder_get_sub_message(parent, static_cast<int>(place.index), &raw, nullptr) == 1) {
    item_.reset(raw);
  }
  // A row may name another node than its place says, or the table may be gone.
  if (!item_ || libpff_item_get_identifier(item_.get(), &found, nullptr) != 1 ||
      found != place.node) {
    item_ = Get<ItemHandle>("item", libpff_file_get_item_by_identifier, file_.get(), place.node);
  }
  if (!item_) throw ReadError("item");
  itemNode_ = place.node;
  return item_.get();
}

void LibraryStore::DescribeItem(const ItemPlace& place, Answer& answer) {
  libpff_item_t* item = OpenItem(place);
  if (RowsOf(item) < 1) throw ReadError("item");
  auto set = Get<RecordSetHandle>("item", libpff_item_get_record_set_by_index, item, 0);
  bool isMail = false;
  ForEachEntry(set.get(), [&](libpff_record_entry_t* entry, uint32_t number, uint32_t type) {
    if (number != static_cast<uint32_t>(Prop::kMessageClass)) return;
    auto bytes = ValueOf(entry);
    if (!bytes) return;
    isMail = IsMailClass(*bytes, type);
    answer.Property(static_cast<uint16_t>(number), static_cast<uint16_t>(type), *bytes);
  });
  if (isMail) DescribeMessage(item, answer);
}

void LibraryStore::DescribeMessage(libpff_item_t* message, Answer& answer) {
  SendProperties("item", message, kMessageProperties, answer);
  if (isDamaged_) answer.Lose("the store's index");
  libpff_item_t* raw = nullptr;
  if (libpff_message_get_recipients(message, &raw, nullptr) == 1 && raw != nullptr) {
    ItemHandle recipients(raw);
    int rows = RowsOf(recipients.get());
    for (int row = 0; row < rows; ++row) {
      libpff_record_set_t* rawSet = nullptr;
      if (libpff_item_get_record_set_by_index(recipients.get(), row, &rawSet, nullptr) != 1) {
        continue;
      }
      RecordSetHandle set(rawSet);
      answer.BeginRecipient();
      SendSet(set.get(), kRecipientProperties, answer);
    }
  }
  int attachments = 0;
  if (libpff_message_get_number_of_attachments(message, &attachments, nullptr) != 1) return;
  for (int i = 0; i < std::min(attachments, kMaxRows); ++i) {
    answer.BeginAttachment();  // keeps the numbers even where one is lost
    raw = nullptr;
    if (libpff_message_get_attachment(message, i, &raw, nullptr) != 1) continue;
    ItemHandle attachment(raw);
    if (RowsOf(attachment.get()) < 1) continue;
    libpff_record_set_t* rawSet = nullptr;
    if (libpff_item_get_record_set_by_index(attachment.get(), 0, &rawSet, nullptr) != 1) continue;
    RecordSetHandle set(rawSet);
    SendSet(set.get(), kAttachmentProperties, answer);
  }
}

// The message at the end of a path of attachment numbers below item.
libpff_item_t* LibraryStore::OpenEmbedded(libpff_item_t* item, const AttachmentPath& path) {
  if (path.empty()) return item;
  if (path.size() > kMaxEmbedding) throw ReadError("embedded message");
  if (embedded_.path == path) return embedded_.chain.back().get();
  embedded_ = {};
  std::vector<ItemHandle> chain;
  libpff_item_t* message = item;
  for (uint32_t number : path) {
    if (number > INT32_MAX) throw ReadError("attachment");
    auto attachment = Get<ItemHandle>("attachment", libpff_message_get_attachment, message,
                                      static_cast<int>(number));
    if (!attachment) throw ReadError("attachment");
    int type = 0;
    if (libpff_attachment_get_type(attachment.get(), &type, nullptr) != 1 ||
        type != LIBPFF_ATTACHMENT_TYPE_ITEM) {
      throw ReadError("embedded message");
    }
    auto inner = Get<ItemHandle>("embedded message", libpff_attachment_get_item, attachment.get());
    if (!inner) throw ReadError("embedded message");
    message = inner.get();
    chain.push_back(std::move(attachment));
    chain.push_back(std::move(inner));
  }
  embedded_.path = path;
  embedded_.chain = std::move(chain);
  return message;
}

void LibraryStore::DescribeEmbedded(const ItemPlace& place, const AttachmentPath& path,
                                    Answer& answer) {
  DescribeMessage(OpenEmbedded(OpenItem(place), path), answer);
}

void LibraryStore::ReadAttachment(const ItemPlace& place, const AttachmentPath& path,
                                  const ByteSink& sink, Answer& /*answer*/) {
  if (path.empty() || path.back() > INT32_MAX) throw ReadError("attachment");
  AttachmentPath above(path.begin(), path.end() - 1);
  libpff_item_t* message = OpenEmbedded(OpenItem(place), above);
  auto attachment = Get<ItemHandle>("attachment", libpff_message_get_attachment, message,
                                    static_cast<int>(path.back()));
  if (!attachment) throw ReadError("attachment");
  StreamBytes(attachment.get(), sink);
}

std::unique_ptr<StoreFile> OpenByLibrary(platform::InputFile& file, bool isDamaged) {
  return std::make_unique<LibraryStore>(file, isDamaged);
}

}  // namespace tarnwick::outlook::reader
