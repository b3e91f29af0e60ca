// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/lost_mail.h"

#include <algorithm>
#include <bit>

#include "oe/tree_walk.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "platform/registry.h"

namespace tarnwick::oe {

namespace {

constexpr size_t kHeaderBlocks = 16;
constexpr size_t kMessageRootPlace = 0xE4;

using Owner = FoundBlock::Owner;

std::string KeyOf(const MessageInfo& info) {
  return MakeEntryKey(info.keyText, info.date);
}

// In lower case; a folded line is one line then.
std::string WithoutBlanks(const std::string& text) {
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    char behind = i + 1 < text.size() ? text[i + 1] : '\0';
    bool isFold = text[i] == '\n' && (behind == ' ' || behind == '\t');
    if (text[i] != ' ' && text[i] != '\t' && text[i] != '\r' && !isFold) result += text[i];
  }
  return platform::AsciiLower(result);
}

// The boundary that the headers of a message name; "" for none.
std::string BoundaryOf(const std::string& headers) {
  const std::string mark = "boundary=";
  size_t place = platform::AsciiLower(headers).find(mark);
  if (place == std::string::npos) return {};
  place += mark.size();
  bool isQuoted = place < headers.size() && headers[place] == '"';
  if (isQuoted) ++place;
  size_t end = headers.find_first_of(isQuoted ? "\"\r\n" : "; \t\r\n", place);
  return end == std::string::npos ? std::string() : headers.substr(place, end - place);
}

constexpr const char* kByText = "by its text alone, what the store said of it being lost";

LostMessage Begin(uint32_t place, const char* how, std::optional<PeekedMessage> index) {
  LostMessage message;
  message.place = place;
  message.how = how;
  message.index = std::move(index);
  return message;
}

}  // namespace

LostMail::LostMail(const std::string& path, FoundObjects objects, bool isCopy,
                   const std::function<bool(int)>& goOn)
    : objects_(std::move(objects)),
      file_(path, objects_.origin),
      isCopy_(isCopy),
      isDone_(objects_.infos.size()),
      isReached_(objects_.infos.size()),
      stepsLeft_(16 * uint64_t{objects_.blocks.size()} + 1024) {
  if (!objects_.isWhole) {
    pass_ = Pass::kEnd;
    return;
  }
  if (!isCopy && objects_.origin == 0) MarkTree(path);
  pass_ = Pass::kProven;
  InspectLost(goOn);
  if (pass_ == Pass::kProven) SettleClaims();
}

FoundBlock* LostMail::Find(uint32_t offset) {
  auto place =
      std::lower_bound(objects_.blocks.begin(), objects_.blocks.end(), offset,
                       [](const FoundBlock& block, uint32_t each) { return block.offset < each; });
  return place != objects_.blocks.end() && place->offset == offset ? &*place : nullptr;
}

void LostMail::MarkTree(const std::string& path) {
  std::string header(file_.Read(0, kHeaderSize));
  if (header.size() < kHeaderSize) return;
  uint32_t root = Get32(header, kMessageRootPlace);
  if (root == 0) return;
  TreeWalk walk(path, root, [] {});
  while (std::optional<uint32_t> value = walk.Next()) MarkTreeMessage(*value);
}

// Of an object that is not of the form that indexes have.
uint32_t LostMail::ReadFirstBlock(uint32_t infoOffset) {
  constexpr size_t kCountPlace = 10;
  std::string head(file_.Read(infoOffset, kInfoHead));
  if (head.size() < kInfoHead || Get32(head, 0) != infoOffset) return 0;
  InfoIndex index = ReadIndex(file_, infoOffset, Get32(head, 4), Get8(head, kCountPlace));
  return NumberOf(file_, index, kFirstBlock, infoOffset).value_or(0);
}

// The blocks of a message that the tree leads to are its own, where its text is whole.
void LostMail::MarkTreeMessage(uint32_t infoOffset) {
  auto info =
      std::lower_bound(objects_.infos.begin(), objects_.infos.end(), infoOffset,
                       [](const FoundInfo& each, uint32_t offset) { return each.offset < offset; });
  bool isKnown = info != objects_.infos.end() && info->offset == infoOffset;
  uint32_t first = isKnown ? info->firstBlock : ReadFirstBlock(infoOffset);
  Chain chain = Follow(first, 0);
  bool isWhole = chain.end == End::kEnd;
  for (size_t block : chain.blocks) {
    if (isWhole) objects_.blocks[block].owner = Owner::kTree;
  }
  if (isWhole) treeFirsts_.emplace(first, infoOffset);
  if (!isKnown) return;
  auto number = static_cast<size_t>(info - objects_.infos.begin());
  isReached_[number] = true;
  isDone_[number] = isWhole || first == 0;
}

// Looks at the texts of the blocks that are nobody's, and at how many lead to each.
void LostMail::InspectLost(const std::function<bool(int)>& goOn) {
  stepsLeft_ = 16 * uint64_t{objects_.blocks.size()} + 1024;
  constexpr size_t kBetweenQuestions = 1024;
  size_t looked = 0;
  for (FoundBlock& block : objects_.blocks) {
    if (block.owner == Owner::kTree) continue;
    InspectText(file_, block);
    FoundBlock* next = block.next == 0 ? nullptr : Find(block.next);
    if (next != nullptr && next->comers < 2) ++next->comers;
    if (++looked % kBetweenQuestions == 0 && !goOn(100)) {
      pass_ = Pass::kEnd;
      return;
    }
  }
}

// What keeps a block from being the next of a chain.
std::optional<LostMail::End> LostMail::WhatForbids(const FoundBlock* block, const Chain& chain,
                                                   uint64_t declared) {
  if (block == nullptr) return End::kMissing;
  if (pass_ == Pass::kTree) return std::nullopt;  // what the ordinary reading takes
  if (block->owner != Owner::kNone) return End::kForeign;
  if (block->isOverlaid || !block->isText) return End::kOverwritten;
  if (!chain.blocks.empty() && block->size != objects_.blocks[chain.blocks.front()].size) {
    return End::kDisagree;
  }
  bool isLast = declared == 0 && block->isFreed && block->next == 0;
  if (isLast) return End::kUnsure;  // where it ends is not known
  if (declared != 0 && !block->isFreed && chain.total + block->length > declared) {
    return End::kDisagree;
  }
  return std::nullopt;
}

// The chain from a block on, up to its end or what forbids to go on; declared: the length that its
// index gives, 0 where there is none.
LostMail::Chain LostMail::Follow(uint32_t first, uint64_t declared) {
  Chain chain;
  uint64_t steps = 0;
  uint32_t remembered = 0;
  for (uint32_t offset = first;;) {
    FoundBlock* block = Find(offset);
    std::optional<End> forbidden = WhatForbids(block, chain, declared);
    // Brent's test for a chain that comes back to itself.
    if (steps > 0 && offset == remembered) forbidden = End::kDisagree;
    if (std::has_single_bit(++steps)) remembered = offset;
    if (!forbidden && stepsLeft_ == 0) forbidden = End::kUnsure;
    if (forbidden) {
      chain.end = *forbidden;
      return chain;
    }
    --stepsLeft_;
    chain.blocks.push_back(static_cast<size_t>(block - objects_.blocks.data()));
    uint64_t length = block->length;
    if (block->isFreed && declared != 0) length = std::min(length, declared - chain.total);
    chain.total += length;
    chain.isFreed = chain.isFreed || block->isFreed;
    chain.lacksWords = chain.lacksWords || block->lacksFirstWord;
    if (block->next == 0) return chain;
    bool isFull = declared != 0 && chain.total == declared;
    bool isShort = block->length < block->size;
    if (pass_ != Pass::kTree && (isFull || isShort)) {
      // The end of a message that was freed; what it leads to is freed as well.
      bool isEnd = isFull ? isShort || block->isFreed : declared == 0;
      if (!isEnd) chain.end = End::kDisagree;
      return chain;
    }
    offset = block->next;
  }
}

// Whether the one may have been written right behind the other: at its end or, where there is an
// index between, at the beginning of the next stretch of blocks.
bool LostMail::IsPlainLink(const FoundBlock& from, uint32_t to) const {
  if (to == from.End()) return true;
  const FoundBlock* behind = &from + 1;
  bool isNext = behind < objects_.blocks.data() + objects_.blocks.size() && behind->offset == to;
  if (!isNext || to < from.End()) return false;
  auto info =
      std::lower_bound(objects_.infos.begin(), objects_.infos.end(), from.End(),
                       [](const FoundInfo& each, uint64_t offset) { return each.offset < offset; });
  return info != objects_.infos.end() && info->offset < to;
}

// Cuts a chain that is not proven to what was written in one go. A block that took another's place
// leads on elsewhere than the one before it did, or ends another message: so the last block before
// a jump goes as well. The first is known by its headers.
void LostMail::Trim(Chain& chain, uint64_t declared) const {
  auto at = [&](size_t i) -> const FoundBlock& { return objects_.blocks[chain.blocks[i]]; };
  size_t most = chain.blocks.size();
  bool jumps = false;
  for (size_t i = 1; i < most; ++i) {
    jumps = !IsPlainLink(at(i - 1), at(i).offset);
    End end = jumps                 ? End::kUnsure
              : at(i).comers > 1    ? End::kTwoClaims
              : at(i).beginsMessage ? End::kForeign
                                    : End::kEnd;
    if (end == End::kEnd) continue;
    most = i;
    chain.end = end;
  }
  bool isAll = most == chain.blocks.size();
  if (isAll && chain.end == End::kEnd && declared != 0 && chain.total != declared) {
    chain.end = End::kDisagree;
    jumps = true;
  } else if (isAll && chain.end != End::kEnd && most > 0) {
    jumps = at(most - 1).next != at(most - 1).End();
  }
  if (jumps && most > 1) --most;
  if (most == chain.blocks.size()) return;
  chain.blocks.resize(most);
  chain.total = 0;
  for (size_t i = 0; i < most; ++i) chain.total += at(i).length;
}

std::string LostMail::TextOf(const Chain& chain, size_t firstBlock, size_t blocks) {
  std::string text;
  for (size_t i = firstBlock; i < std::min(firstBlock + blocks, chain.blocks.size()); ++i) {
    const FoundBlock& block = objects_.blocks[chain.blocks[i]];
    size_t start = text.size();
    text += file_.Read(uint64_t{block.offset} + kBlockHead, block.length);
    if (block.lacksFirstWord) text.replace(start, kLostWord.size(), kLostWord);
  }
  return text;
}

// Whether the headers of a chain are those that its index tells of.
LostMail::Match LostMail::MatchOf(const Chain& chain, const MessageInfo& info) {
  std::string headers = TextOf(chain, 0, kHeaderBlocks);
  size_t end = headers.find("\r\n\r\n");
  bool hasAll = end != std::string::npos && !chain.lacksWords;
  headers = "\n" + WithoutBlanks(headers.substr(0, end));
  auto match = [&](const std::string& sign, const std::string& header) {
    if (sign.empty()) return Match::kUnknown;
    if (headers.find(WithoutBlanks(sign)) != std::string::npos) return Match::kYes;
    return hasAll && headers.find("\n" + header + ":") != std::string::npos ? Match::kNo
                                                                            : Match::kUnknown;
  };
  Match byId = match(info.messageId, "message-id");
  if (byId != Match::kUnknown) return byId;
  Match sender = match(info.senderAddress, "from");
  // A subject of other letters stands there encoded.
  bool isPlain = std::all_of(info.subject.begin(), info.subject.end(),
                             [](char c) { return c >= ' ' && c <= '~'; });
  Match subject = isPlain && headers.find("\nsubject:=?") == std::string::npos
                      ? match(info.subject, "subject")
                      : Match::kUnknown;
  return subject == Match::kNo ? Match::kNo : sender;
}

// A message of several parts ends with the mark that its headers name.
bool LostMail::EndsAsItsHeadersSay(const Chain& chain) {
  std::string boundary = BoundaryOf(TextOf(chain, 0, kHeaderBlocks));
  if (boundary.empty()) return false;
  size_t count = chain.blocks.size();
  std::string end = TextOf(chain, count < 2 ? 0 : count - 2, 2);
  return end.rfind("--" + boundary + "--") != std::string::npos;
}

std::optional<PeekedMessage> LostMail::PeekAt(size_t info) {
  const FoundInfo& found = objects_.infos[info];
  if (found.isOverlaid) return std::nullopt;
  return PeekMessage(file_, found.offset, found.entryCount);
}

// An older copy of the index of a message that the tree leads to.
bool LostMail::IsOfTree(const PeekedMessage& message) {
  auto live = treeFirsts_.find(message.firstBlock);
  if (live == treeFirsts_.end()) return false;
  std::optional<PeekedMessage> other = PeekMessage(file_, live->second);
  return other && KeyOf(other->info) == KeyOf(message.info);
}

// The chain that an index leads to, where the two prove each other.
std::optional<LostMail::Chain> LostMail::ProvenChain(const PeekedMessage& message) {
  uint64_t declared = message.info.length;
  if (declared == 0) return std::nullopt;
  Chain chain = Follow(message.firstBlock, declared);
  if (chain.blocks.empty() || chain.end != End::kEnd || chain.total != declared || chain.isFreed) {
    return std::nullopt;
  }
  Match match = MatchOf(chain, message.info);
  bool begins = objects_.blocks[chain.blocks.front()].beginsMessage;
  if (match == Match::kNo || (match == Match::kUnknown && !begins)) return std::nullopt;
  return chain;
}

// Where two chains meet and both would be proven, neither is: one of the lengths is right by
// chance.
void LostMail::SettleClaims() {
  bool anyMeet = std::any_of(objects_.blocks.begin(), objects_.blocks.end(),
                             [](const FoundBlock& block) { return block.comers > 1; });
  if (!anyMeet) return;
  std::unordered_map<size_t, std::string>
      claims;  // meeting blocks, with the key of who claims them
  for (size_t info = 0; info < objects_.infos.size(); ++info) {
    if (isDone_[info]) continue;
    std::optional<PeekedMessage> message = PeekAt(info);
    std::optional<Chain> chain = message ? ProvenChain(*message) : std::nullopt;
    if (!chain) continue;
    for (size_t i = 1; i < chain->blocks.size(); ++i) {
      if (objects_.blocks[chain->blocks[i]].comers < 2) continue;
      auto [claim, isNew] = claims.emplace(chain->blocks[i], KeyOf(message->info));
      if (!isNew && claim->second != KeyOf(message->info)) claim->second.clear();
    }
  }
  for (const auto& [block, key] : claims) {
    if (!key.empty()) objects_.blocks[block].comers = 1;
  }
}

const char* LostMail::WhyOf(End end) {
  switch (end) {
    case End::kEnd:
      break;
    case End::kMissing:
      return "the next part of its text was overwritten or is not in the file";
    case End::kOverwritten:
      return "the next part of its text was overwritten";
    case End::kForeign:
      return "the next part of its text belongs to another message";
    case End::kTwoClaims:
      return "two messages claim the next part of its text";
    case End::kDisagree:
      return "the next part of its text is of another length than it must be";
    case End::kUnsure:
      return "nothing tells whether the next part of its text is its own";
  }
  return "";
}

const char* LostMail::HowFound(size_t info) const {
  if (isReached_[info]) return "damaged";
  if (objects_.infos[info].entryCount != 0) return "deleted";
  if (isCopy_) return "in a copy that was left behind";
  return objects_.origin != 0 ? "in a piece of a store" : "listed nowhere";
}

void LostMail::Fill(const Chain& chain, Owner owner, LostMessage& message) {
  uint64_t left = chain.total;
  for (size_t i : chain.blocks) {
    FoundBlock& block = objects_.blocks[i];
    block.owner = owner;
    auto length = static_cast<uint32_t>(std::min<uint64_t>(left, block.length));
    left -= length;
    message.text.push_back({block.offset + uint32_t{kBlockHead}, length, block.lacksFirstWord});
  }
  message.length = chain.total;
  message.why = WhyOf(chain.end);
}

std::optional<LostMessage> LostMail::ProvenOf(size_t info) {
  std::optional<PeekedMessage> index = PeekAt(info);
  std::optional<Chain> chain = index ? ProvenChain(*index) : std::nullopt;
  if (!chain) return std::nullopt;
  for (size_t i = 1; i < chain->blocks.size(); ++i) {
    if (objects_.blocks[chain->blocks[i]].comers > 1) return std::nullopt;
  }
  isDone_[info] = true;
  given_.insert(KeyOf(index->info));
  LostMessage message = Begin(objects_.infos[info].offset, HowFound(info), index);
  message.declared = chain->total;
  message.isWhole = true;
  Fill(*chain, Owner::kProven, message);
  return message;
}

std::optional<LostMessage> LostMail::PartOf(size_t info) {
  std::optional<PeekedMessage> index = PeekAt(info);
  if (!index || IsOfTree(*index) || !given_.insert(KeyOf(index->info)).second) return std::nullopt;
  const MessageInfo& told = index->info;
  LostMessage message = Begin(objects_.infos[info].offset, HowFound(info), index);
  message.declared = told.length;
  const FoundBlock* first = Find(index->firstBlock);
  Chain chain = Follow(index->firstBlock, told.length);
  if (chain.blocks.empty()) {
    bool isTaken = first != nullptr && first->owner != Owner::kNone;
    message.why = isTaken ? "another message stands where its text began"
                          : "the beginning of its text was overwritten or is not in the file";
    return message;
  }
  bool fits = chain.end == End::kEnd && (told.length == 0 || chain.total == told.length);
  Match match = MatchOf(chain, told);
  if (match == Match::kNo) message.why = "another message stands where its text began";
  if (match == Match::kUnknown && !(fits && first->beginsMessage)) {
    message.why = "the headers of its text are missing";
  }
  if (!message.why.empty()) return message;
  Trim(chain, told.length);
  message.isWhole = chain.end == End::kEnd && told.length != 0;
  Fill(chain, Owner::kTaken, message);
  return message;
}

std::optional<LostMessage> LostMail::TextAt(FoundBlock& first) {
  if (!first.beginsMessage || first.owner != Owner::kNone || first.isOverlaid) return std::nullopt;
  Chain chain = Follow(first.offset, 0);
  LostMessage message = Begin(first.offset, kByText, {});
  bool isProven = chain.end == End::kEnd && EndsAsItsHeadersSay(chain);
  if (!isProven) Trim(chain, 0);
  message.isWhole = chain.end == End::kEnd;
  Fill(chain, isProven ? Owner::kProven : Owner::kTaken, message);
  if (message.text.empty()) first.owner = Owner::kTaken;
  return message;
}

std::optional<LostMessage> LostMail::Next() {
  for (; pass_ != Pass::kEnd; done_ = 0) {
    bool isTexts = pass_ == Pass::kTexts;
    size_t count = isTexts ? objects_.blocks.size() : objects_.infos.size();
    while (done_ < count) {
      size_t each = done_++;
      std::optional<LostMessage> message;
      if (isTexts) {
        message = TextAt(objects_.blocks[each]);
      } else if (!isDone_[each]) {
        message = pass_ == Pass::kProven ? ProvenOf(each) : PartOf(each);
      }
      if (!message) continue;
      message->origin = objects_.origin;
      return message;
    }
    pass_ = pass_ == Pass::kProven ? Pass::kParts : isTexts ? Pass::kEnd : Pass::kTexts;
  }
  return std::nullopt;
}

LostMail::Rest LostMail::CountRest() const {
  Rest rest;
  for (const FoundBlock& block : objects_.blocks) {
    if (block.owner != Owner::kNone || block.isOverlaid || !block.isText) continue;
    if (block.length == 0) continue;
    ++rest.blocks;
    rest.bytes += block.length;
  }
  return rest;
}

std::string LostMail::Remark() const {
  if (objects_.isCut) return "more objects than it can hold; what lies behind them is not read";
  if (objects_.isMore) return "pieces of many files; only the largest are read";
  return {};
}

}  // namespace tarnwick::oe
