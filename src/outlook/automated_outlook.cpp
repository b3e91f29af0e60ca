// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/automated_outlook.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <utility>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "outlook/msg_file.h"
#include "outlook/pst_provider.h"
#include "outlook/type_name.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::outlook {

namespace {

using platform::AutomationObject;
using platform::AutomationValue;
using Object = std::shared_ptr<AutomationObject>;

// As Outlook numbers them (OlDefaultFolders, OlItemType, OlBodyFormat).
constexpr std::pair<int64_t, FolderRole> kDefaultFolders[] = {{3, FolderRole::kDeletedItems},
                                                              {4, FolderRole::kOutbox},
                                                              {5, FolderRole::kSentItems},
                                                              {6, FolderRole::kInbox}};
constexpr int64_t kMailItems = 0;
constexpr int64_t kHtmlFormat = 2;

// Where Outlook tells no size.
constexpr uint64_t kOutputBudget = uint64_t{1} << 40;

Object Part(AutomationObject& object, const std::string& member,
            const std::vector<AutomationValue>& arguments = {}) {
  AutomationValue value = object.Ask(member, arguments);
  const Object* part = std::get_if<Object>(&value);
  if (part == nullptr || *part == nullptr) {
    throw Error(ErrorNumber::kPathAccess, "Outlook gives no " + member);
  }
  return *part;
}

// Nothing where Outlook hasn't got it.
AutomationValue IfThere(AutomationObject& object, const std::string& member,
                        const std::vector<AutomationValue>& arguments = {}) {
  try {
    return object.Ask(member, arguments);
  } catch (const Error&) {
    return {};
  }
}

template <typename Kind>
std::optional<Kind> As(const AutomationValue& value) {
  const Kind* held = std::get_if<Kind>(&value);
  return held != nullptr ? std::optional<Kind>(*held) : std::nullopt;
}

std::string TextOf(AutomationObject& object, const std::string& member) {
  return As<std::string>(IfThere(object, member)).value_or("");
}

int64_t CountOf(AutomationObject& collection) {
  int64_t count = As<int64_t>(collection.Ask("Count")).value_or(0);
  return std::clamp<int64_t>(count, 0, std::numeric_limits<int32_t>::max());
}

// Counted from 0 here and from 1 there.
Object Nth(AutomationObject& collection, int64_t index) {
  return Part(collection, "Item", {index + 1});
}

// Values that an object has under their MAPI numbers.
class MapiValues {
 public:
  explicit MapiValues(AutomationObject& object) {
    accessor_ = As<Object>(IfThere(object, "PropertyAccessor")).value_or(nullptr);
  }

  void CopyText(Prop property, PropertySet& into) const {
    if (auto text = As<std::string>(Value(property, PropType::kUnicode))) {
      into.SetText(property, *text);
    }
  }
  void CopyNumber(Prop property, PropertySet& into) const {
    if (auto number = As<int64_t>(Value(property, PropType::kInt32))) {
      into.SetNumber(property, *number);
    }
  }
  // These are UTC.
  void CopyTime(Prop property, PropertySet& into) const {
    if (auto time = As<DateTime>(Value(property, PropType::kTime))) {
      into.SetTime(property, time->Seconds());
    }
  }

 private:
  AutomationValue Value(Prop property, uint16_t type) const {
    if (accessor_ == nullptr) return {};
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string name = "http://schemas.microsoft.com/mapi/proptag/0x";
    uint32_t tag = static_cast<uint32_t>(property) << 16 | type;
    for (int shift = 28; shift >= 0; shift -= 4) name += kDigits[tag >> shift & 15];
    return IfThere(*accessor_, "GetProperty", {name});
  }

  Object accessor_;
};

// Outlook saves what is attached to a file and gives no bytes otherwise. It is gone with this.
class SavedFile {
 public:
  SavedFile(AutomationObject& attachment, const char* name)
      : path_(core::State().EmailFileFolder + name) {
    platform::RemoveFile(path_);
    attachment.Ask("SaveAsFile", {path_});
  }
  ~SavedFile() {
    try {
      platform::RemoveFile(path_);
    } catch (const Error&) {
      core::ReportCurrentException("SavedFile", core::Report::kLog);
    }
  }
  SavedFile(const SavedFile&) = delete;
  SavedFile& operator=(const SavedFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// A message within a message, saved as a file.
class SavedItem : public PropertyItem {
 public:
  SavedItem(AutomationObject& attachment, const char* name)
      : file_(attachment, name), item_(OpenMsgFile(file_.Path())) {}

  std::string EntryID() override { return item_->EntryID(); }
  std::string TypeName() override { return item_->TypeName(); }
  const PropertySet& Properties() override { return item_->Properties(); }
  const std::vector<PropertySet>& Recipients() override { return item_->Recipients(); }
  const std::vector<PropertySet>& Attachments() override { return item_->Attachments(); }
  void ReadAttachment(size_t index, const std::function<void(std::string_view)>& sink) override {
    item_->ReadAttachment(index, sink);
  }
  std::unique_ptr<PropertyItem> EmbeddedItem(size_t index) override {
    return item_->EmbeddedItem(index);
  }
  std::string Damage() override { return item_->Damage(); }

 private:
  SavedFile file_;
  std::unique_ptr<PropertyItem> item_;  // reads the file
};

class AutomatedItem : public PropertyItem {
 public:
  explicit AutomatedItem(Object item) : item_(std::move(item)) {}

  std::string EntryID() override { return As<std::string>(item_->Ask("EntryID")).value_or(""); }
  std::string TypeName() override {
    return TypeNameOf(As<std::string>(item_->Ask("MessageClass")).value_or(""));
  }

  const PropertySet& Properties() override {
    if (properties_.IsEmpty()) ReadProperties();
    return properties_;
  }
  const std::vector<PropertySet>& Recipients() override {
    if (!recipients_) {
      recipients_.emplace();
      ReadEach("Recipients", *recipients_, &AutomatedItem::Recipient);
    }
    return *recipients_;
  }
  const std::vector<PropertySet>& Attachments() override {
    if (!attachments_) {
      attachments_.emplace();
      ReadEach("Attachments", *attachments_, &AutomatedItem::Attachment);
    }
    return *attachments_;
  }

  void ReadAttachment(size_t index, const std::function<void(std::string_view)>& sink) override {
    SavedFile saved(*AttachmentAt(index), "olAttachment.tmp");
    platform::InputFile file(saved.Path());
    std::string piece(kPiece, '\0');
    for (uint64_t at = 0; at < file.Size();) {
      size_t count = file.ReadAt(at, piece.data(), piece.size());
      if (count == 0) break;
      sink({piece.data(), count});
      at += count;
    }
  }
  std::unique_ptr<PropertyItem> EmbeddedItem(size_t index) override {
    return std::make_unique<SavedItem>(*AttachmentAt(index), "olEmbedded.msg");
  }

 private:
  static constexpr size_t kPiece = size_t{64} << 10;

  Object AttachmentAt(size_t index) {
    return Nth(*Part(*item_, "Attachments"), static_cast<int64_t>(index));
  }

  void ReadProperties() {
    core::YieldEvents();
    constexpr std::pair<const char*, Prop> kTexts[] = {
        {"MessageClass", Prop::kMessageClass},
        {"Subject", Prop::kSubject},
        {"Body", Prop::kBody},
        {"SenderName", Prop::kSenderName},
        {"SenderEmailAddress", Prop::kSenderAddress},
        {"SenderEmailType", Prop::kSenderAddressType},
        {"SentOnBehalfOfName", Prop::kSentRepresentingName}};
    PropertySet read;
    for (const auto& [member, property] : kTexts) {
      read.SetText(property, TextOf(*item_, member));
    }
    // Of another letter Outlook makes HTML up.
    if (As<int64_t>(IfThere(*item_, "BodyFormat")).value_or(kHtmlFormat) == kHtmlFormat) {
      read.SetText(Prop::kHtml, TextOf(*item_, "HTMLBody"));
    }
    read.SetNumber(Prop::kImportance, As<int64_t>(IfThere(*item_, "Importance")).value_or(1));
    SetTimes(read);
    SetState(read);
    MapiValues values(*item_);
    for (Prop property :
         {Prop::kTransportHeaders, Prop::kMessageId, Prop::kInReplyTo, Prop::kReferences,
          Prop::kSentRepresentingAddress, Prop::kSenderSmtpAddress,
          Prop::kSentRepresentingSmtpAddress, Prop::kReceivedBySmtpAddress}) {
      values.CopyText(property, read);
    }
    for (Prop property : {Prop::kMessageFlags, Prop::kLastVerbExecuted, Prop::kIconIndex,
                          Prop::kFlagStatus, Prop::kInternetCodepage}) {
      values.CopyNumber(property, read);
    }
    for (Prop property : {Prop::kClientSubmitTime, Prop::kDeliveryTime, Prop::kCreationTime}) {
      values.CopyTime(property, read);
    }
    properties_ = std::move(read);
  }

  // What the objects show is local.
  void SetTimes(PropertySet& read) {
    constexpr std::pair<const char*, Prop> kTimes[] = {
        {"SentOn", Prop::kClientSubmitTime},
        {"ReceivedTime", Prop::kDeliveryTime},
        {"CreationTime", Prop::kCreationTime},
        {"LastModificationTime", Prop::kModificationTime}};
    for (const auto& [member, property] : kTimes) {
      if (auto time = As<DateTime>(IfThere(*item_, member))) {
        read.SetTime(property, platform::UnixFromLocal(*time));
      }
    }
  }

  void SetState(PropertySet& read) {
    auto isUnread = As<int64_t>(IfThere(*item_, "UnRead"));
    if (!isUnread) return;
    bool isSent = As<int64_t>(IfThere(*item_, "Sent")).value_or(1) != 0;
    read.SetNumber(Prop::kMessageFlags,
                   (*isUnread == 0 ? MessageFlag::kRead : 0) | (isSent ? 0 : MessageFlag::kUnsent));
  }

  void ReadEach(const std::string& collection, std::vector<PropertySet>& rows,
                PropertySet (*read)(AutomationObject&)) {
    Object all = Part(*item_, collection);
    int64_t count = CountOf(*all);
    for (int64_t i = 0; i < count; ++i) rows.push_back(read(*Nth(*all, i)));
  }

  static PropertySet Recipient(AutomationObject& recipient) {
    PropertySet row;
    row.SetNumber(Prop::kRecipientType,
                  As<int64_t>(IfThere(recipient, "Type")).value_or(RecipientType::kTo));
    row.SetText(Prop::kDisplayName, TextOf(recipient, "Name"));
    row.SetText(Prop::kAddress, TextOf(recipient, "Address"));
    MapiValues(recipient).CopyText(Prop::kSmtpAddress, row);
    return row;
  }

  static PropertySet Attachment(AutomationObject& attachment) {
    PropertySet row;
    row.SetNumber(Prop::kAttachMethod,
                  As<int64_t>(IfThere(attachment, "Type")).value_or(AttachMethod::kByValue));
    row.SetText(Prop::kAttachLongName, TextOf(attachment, "FileName"));
    row.SetText(Prop::kDisplayName, TextOf(attachment, "DisplayName"));
    MapiValues values(attachment);
    for (Prop property : {Prop::kAttachMimeType, Prop::kAttachContentId}) {
      values.CopyText(property, row);
    }
    return row;
  }

  Object item_;
  PropertySet properties_;
  std::optional<std::vector<PropertySet>> recipients_;
  std::optional<std::vector<PropertySet>> attachments_;
};

// By the identifiers of Outlook's default folders.
using Roles = std::map<std::string, FolderRole>;

class AutomatedFolder : public Folder {
 public:
  AutomatedFolder(Object folder, std::shared_ptr<const Roles> roles)
      : folder_(std::move(folder)), roles_(std::move(roles)) {}

  std::string Name() override { return As<std::string>(folder_->Ask("Name")).value_or(""); }
  std::string EntryID() override { return As<std::string>(folder_->Ask("EntryID")).value_or(""); }
  FolderRole Role() override {
    auto role = roles_->find(EntryID());
    return role != roles_->end() ? role->second : FolderRole::kOther;
  }
  bool IsMailFolder() override {
    return As<int64_t>(IfThere(*folder_, "DefaultItemType")).value_or(kMailItems) == kMailItems;
  }
  std::vector<std::unique_ptr<Folder>> Folders() override {
    core::YieldEvents();
    Object all = Part(*folder_, "Folders");
    std::vector<std::unique_ptr<Folder>> folders;
    int64_t count = CountOf(*all);
    for (int64_t i = 0; i < count; ++i) {
      folders.push_back(std::make_unique<AutomatedFolder>(Nth(*all, i), roles_));
    }
    return folders;
  }
  int64_t ItemCount() override { return CountOf(Items()); }
  std::unique_ptr<Item> ItemAt(int64_t index) override {
    return std::make_unique<AutomatedItem>(Nth(Items(), index));
  }

 private:
  AutomationObject& Items() {
    if (items_ == nullptr) items_ = Part(*folder_, "Items");
    return *items_;
  }

  Object folder_;
  Object items_;  // each time it is asked for Outlook gives another one
  std::shared_ptr<const Roles> roles_;
};

class AutomatedStore : public Store {
 public:
  AutomatedStore(Object top, std::shared_ptr<const Roles> roles)
      : top_(std::move(top)), roles_(std::move(roles)) {
    name_ = As<std::string>(top_->Ask("Name")).value_or("");
    if (Object store = As<Object>(IfThere(*top_, "Store")).value_or(nullptr)) {
      file_ = TextOf(*store, "FilePath");
    }
  }

  std::string DisplayName() override { return name_; }
  std::string Location() override { return file_.empty() ? name_ : file_; }
  // Outlook has asked for it.
  bool HasPassword() override { return false; }
  std::unique_ptr<Folder> RootFolder() override {
    return std::make_unique<AutomatedFolder>(top_, roles_);
  }
  uint64_t OutputBudget() override { return kOutputBudget; }
  // That it lies in; "" where Outlook doesn't say.
  const std::string& File() const { return file_; }

 private:
  Object top_;
  std::shared_ptr<const Roles> roles_;
  std::string name_;
  std::string file_;
};

std::shared_ptr<const Roles> RolesOf(AutomationObject& mapi) {
  auto roles = std::make_shared<Roles>();
  for (const auto& [number, role] : kDefaultFolders) {
    auto folder = As<Object>(IfThere(mapi, "GetDefaultFolder", {number}));
    if (folder && *folder) roles->emplace(TextOf(**folder, "EntryID"), role);
  }
  return roles;
}

bool MayBeRead(const std::string& file) {
  try {
    platform::InputFile opened(file);
    return true;
  } catch (const Error&) {
    return false;
  }
}

}  // namespace

AutomatedOutlook::AutomatedOutlook(AutomationObject& application, std::vector<std::string> files)
    : mapi_(Part(application, "GetNamespace", {"MAPI"})),
      files_(std::move(files)),
      others_(std::make_unique<PstNamespace>(std::vector<std::string>{})) {}

std::vector<std::unique_ptr<Store>> AutomatedOutlook::Stores() {
  refused_.clear();
  std::vector<std::unique_ptr<Store>> stores;
  std::vector<std::string> others = files_;
  std::shared_ptr<const Roles> roles = RolesOf(*mapi_);
  Object tops = Part(*mapi_, "Folders");
  int64_t count = CountOf(*tops);
  for (int64_t i = 0; i < count; ++i) {
    std::unique_ptr<AutomatedStore> store;
    try {
      store = std::make_unique<AutomatedStore>(Nth(*tops, i), roles);
    } catch (const Error& error) {
      refused_.push_back({"Outlook", error.Description()});
      continue;
    }
    auto isItsFile = [&](const std::string& other) {
      return platform::IsSameFile(other, store->File());
    };
    bool isMeant = store->File().empty() || std::erase_if(others, isItsFile) > 0;
    if (isMeant) stores.push_back(std::move(store));
  }
  others_ = std::make_unique<PstNamespace>(others);
  for (std::unique_ptr<Store>& store : others_->Stores()) stores.push_back(std::move(store));
  for (const RefusedStore& store : others_->Refused()) refused_.push_back(store);
  return stores;
}

// What Outlook doesn't show lies in the file; where Outlook has that open the search says so.
std::unique_ptr<LostItems> AutomatedOutlook::FindLost(const std::string& location,
                                                      const std::function<void(int)>& tell) {
  return others_->FindLost(location, tell);
}

std::unique_ptr<Namespace> OpenStores(const std::vector<std::string>& files) {
  if (std::all_of(files.begin(), files.end(), MayBeRead)) {
    return std::make_unique<PstNamespace>(files);
  }
  try {
    Object application = platform::FindAutomation("Outlook.Application");
    if (application) return std::make_unique<AutomatedOutlook>(*application, files);
  } catch (const Error&) {
    core::ReportCurrentException("OpenStores", core::Report::kLog);
  }
  return std::make_unique<PstNamespace>(files);  // which tells of each what stands in the way
}

}  // namespace tarnwick::outlook
