// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-reader: reads one mail store for the program that started it and handed it the open file
// (the channel is standard input; the conversation that of intake/reader_link.h). A process of its
// own, because what reads a store meets whatever a damaged or hostile file holds: it may fall, but
// takes nothing with it; and shut in, because it may be taken over, but gives nothing away.
#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "channel.h"
#include "intake/letter_record.h"
#include "intake/letter_service.h"
#include "intake/reader_link.h"
#include "intake/registry_link.h"
#include "intake/text_reader.h"
#include "oe/folder_list.h"
#include "oe/lost_walk.h"
#include "oe/sample.h"
#include "oe/store_link.h"
#include "outlook/msg_file.h"
#include "outlook/pst_service.h"
#include "outlook/reader/store_file.h"
#include "platform/child_process.h"
#include "platform/confinement.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "sources/letters_link.h"
#include "sources/sample.h"

namespace {

using namespace tarnwick;

// The sanitizers reserve more address space than any limit.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARNWICK_SANITIZED
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define TARNWICK_SANITIZED
#endif
#if defined(TARNWICK_SANITIZED)
constexpr uint64_t kMaxMemory = 0;
#else
constexpr uint64_t kMaxMemory = uint64_t{2} << 30;
#endif
constexpr int kStartedByHand = 2;

std::unique_ptr<intake::LetterService> OpenService(const intake::LetterOpening& opening,
                                                   const intake::ProgressTeller& tell) {
  const intake::ReadingRules& rules = opening.conditions.rules;
  switch (opening.conversation) {
    case intake::Conversation::kMailbox:
      return sources::MakeMailboxService(rules, opening.store);
    case intake::Conversation::kLetterFiles:
      return sources::MakeLetterFileService(rules, opening.store);
    case intake::Conversation::kText:
      return intake::MakeTextService();
    case intake::Conversation::kFolderList:
      return oe::MakeFolderListService(rules);
    case intake::Conversation::kRegistry:
      return intake::MakeRegistryService(opening.store);
    case intake::Conversation::kMsgFile:
      return outlook::MakeMsgFileService();
    case intake::Conversation::kOutlookStore:
      return outlook::MakePstService(outlook::reader::OpenStore, tell);
    case intake::Conversation::kLostOutlook:
      return outlook::MakePstService(
          [&](platform::InputFile& file) { return outlook::reader::OpenLostStore(file, tell); },
          tell);
    case intake::Conversation::kLostMail:
      return oe::MakeLostService(rules, opening.store, tell);
    case intake::Conversation::kStoreSample:
      return oe::MakeStoreSampleService();
    case intake::Conversation::kMailboxSample:
      return sources::MakeMailboxSampleService(tell);
    case intake::Conversation::kDbx:
      break;
  }
  return oe::MakeStoreService(rules, opening.store);
}

// What is needed of the machine is had before the process shuts itself in, and nothing of the store
// is looked at.
int Run() {
  Channel channel;
  std::string payload;
  if (channel.ReadRequest(payload) != intake::letter_frame::kOpen) return kStartedByHand;
  auto opening = intake::RecordOf<intake::LetterOpening>(payload);
  intake::ReadUnder(opening.conditions);
  if (opening.isHanded) platform::InputFile::Handed();  // which asks for its size
  bool isShutIn = platform::ConfineThisProcess(kMaxMemory).HasAny();
  intake::LetterChannel letters{
      .request = [&](std::string& request) { return channel.ReadRequest(request); },
      .hasMore = [&] { return channel.HasMore(); },
      .write = [&](std::string_view bytes) { channel.Write(bytes); },
      .isProgramFaster = platform::IsParentFaster};
  intake::ServeLetters(
      letters, isShutIn,
      [&](const intake::ProgressTeller& tell) { return OpenService(opening, tell); }, opening.skip);
  return 0;
}

}  // namespace

int main() {
  platform::KeepFreedMemory();
  try {
    return Run();
  } catch (const ChannelClosed&) {
    return 0;
  } catch (const std::exception&) {
    return kStartedByHand;
  }
}
