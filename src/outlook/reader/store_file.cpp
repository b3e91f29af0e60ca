// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/store_file.h"

#include <algorithm>

#include "outlook/reader/node_store.h"

namespace tarnwick::outlook::reader {

const std::vector<Prop> kStoreProperties = {
    Prop::kRecordKey,         Prop::kDisplayName,   Prop::kIpmSubtree,  Prop::kOutboxEntry,
    Prop::kDeletedItemsEntry, Prop::kSentMailEntry, Prop::kPstPassword, Prop::kMessageCodepage};
const std::vector<Prop> kFolderProperties = {Prop::kDisplayName, Prop::kContainerClass,
                                             Prop::kContentCount};
const std::vector<Prop> kRecipientProperties = {Prop::kRecipientType, Prop::kDisplayName,
                                                Prop::kAddressType,   Prop::kAddress,
                                                Prop::kSmtpAddress,   Prop::kRecipientDisplayName};
const std::vector<Prop> kAttachmentProperties = {
    Prop::kDisplayName,    Prop::kAttachExtension, Prop::kAttachShortName, Prop::kAttachMethod,
    Prop::kAttachLongName, Prop::kAttachMimeType,  Prop::kAttachContentId};
const std::vector<Prop> kMessageProperties = {Prop::kImportance,
                                              Prop::kMessageClass,
                                              Prop::kSubject,
                                              Prop::kClientSubmitTime,
                                              Prop::kSentRepresentingName,
                                              Prop::kReceivedByName,
                                              Prop::kSentRepresentingAddressType,
                                              Prop::kSentRepresentingAddress,
                                              Prop::kReceivedByAddressType,
                                              Prop::kReceivedByAddress,
                                              Prop::kTransportHeaders,
                                              Prop::kSenderName,
                                              Prop::kSenderAddressType,
                                              Prop::kSenderAddress,
                                              Prop::kDeliveryTime,
                                              Prop::kMessageFlags,
                                              Prop::kBody,
                                              Prop::kRtfCompressed,
                                              Prop::kHtml,
                                              Prop::kMessageId,
                                              Prop::kReferences,
                                              Prop::kInReplyTo,
                                              Prop::kIconIndex,
                                              Prop::kLastVerbExecuted,
                                              Prop::kFlagStatus,
                                              Prop::kCreationTime,
                                              Prop::kModificationTime,
                                              Prop::kInternetCodepage,
                                              Prop::kMessageLocale,
                                              Prop::kMessageCodepage,
                                              Prop::kSenderSmtpAddress,
                                              Prop::kSentRepresentingSmtpAddress,
                                              Prop::kReceivedBySmtpAddress};

bool Contains(const std::vector<Prop>& list, uint32_t number) {
  return std::any_of(list.begin(), list.end(),
                     [&](Prop property) { return static_cast<uint32_t>(property) == number; });
}

bool IsMailClass(std::string_view bytes, uint32_t type) {
  std::string lower;
  for (size_t i = 0; i < bytes.size(); i += type == PropType::kUnicode ? 2 : 1) {
    char c = bytes[i];
    lower.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c);
  }
  constexpr std::string_view kMail = "ipm.note";
  if (lower.compare(0, kMail.size(), kMail) != 0) return false;
  return lower.size() == kMail.size() || lower[kMail.size()] == '.' || lower[kMail.size()] == '\0';
}

std::unique_ptr<StoreFile> OpenStore(platform::InputFile& file) {
  bool isDamaged = true;
  std::string why;
  try {
    return std::make_unique<NodeStore>(file);
  } catch (const OtherVariant&) {
    isDamaged = false;
    why = "it was made by a newer Outlook than this program knows, or its beginning is damaged";
  } catch (const ReadError& error) {
    why = error.what();
  }
  try {
    return OpenByLibrary(file, isDamaged);
  } catch (const ReadError&) {
    throw ReadError(why);
  }
}

}  // namespace tarnwick::outlook::reader
