// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/letters_link.h"

#include <deque>
#include <utility>

#include "core/guard.h"
#include "intake/letter_record.h"
#include "intake/reader_link.h"
#include "platform/files.h"
#include "sources/file_window.h"
#include "sources/letter_files.h"
#include "sources/mh.h"
#include "sources/outlook_express4.h"

namespace tarnwick::sources {

using intake::RawBytes;

template <typename Archive>
void Pass(Archive& archive, LetterEntry& e) {
  archive(e.name, e.fault, e.state);
}

template <typename Archive>
void Pass(Archive& archive, LetterSays& s) {
  archive(s.key, s.subject, s.state, s.senderAddress, s.senderName, s.size);
}

template <typename Archive>
void Pass(Archive& archive, LetterReading& r) {
  bool isHeld = r.held.has_value();
  archive(r.isEnd, r.entry, r.span.begin, r.span.end, r.failure, r.says, r.damage, isHeld);
  if (isHeld) archive(RawBytes{r.held ? *r.held : r.held.emplace()});
  archive(r.prepared);
}

namespace {

// A request for a text.
struct Wanted {
  LetterSpan span;
  intake::MessageState state;
};
template <typename Archive>
void Pass(Archive& archive, Wanted& w) {
  archive(w.span.begin, w.span.end, w.state);
}

// A file that a mailbox is.
struct MailboxFile {
  MailboxKind kind = MailboxKind::kMbox;
  std::string index;  // the bytes of the file beside it
};
template <typename Archive>
void Pass(Archive& archive, MailboxFile& f) {
  constexpr size_t kKinds = static_cast<size_t>(MailboxKind::kOutlookExpress4) + 1;
  archive(intake::OneOf{f.kind, kKinds}, RawBytes{f.index});
}

// What the reader made of a letter fits the letter.
void Check(const LetterReading& letter) {
  bool hasText = !letter.isEnd && letter.says && !letter.failure;
  if (!hasText && (letter.held || letter.prepared)) intake::RefuseRecord();
  if (HasText(letter.entry) && !letter.isEnd && !letter.says && !letter.failure) {
    intake::RefuseRecord();
  }
  if (letter.held && letter.held->size() != letter.says->size) intake::RefuseRecord();
  if (letter.prepared) intake::CheckPrepared(*letter.prepared, letter.held);
}

core::Telling LostFailure() {
  return {.kind = core::Telling::Kind::kError,
          .text = intake::kReaderLost,
          .number = ErrorNumber::kPathAccess};
}

// A mailbox that is one file.
class MailboxLink : public LetterWalk {
 public:
  explicit MailboxLink(std::unique_ptr<intake::ReaderLink> link)
      : link_(std::move(link)), bytesLeft_(link_->StoreSize()) {}

  LetterReading Next(bool wantsText) override {
    ++number_;
    std::optional<std::string_view> record = link_->Next(wantsText);
    LetterReading letter;
    try {
      if (!record) intake::RefuseRecord();
      letter = intake::RecordOf<LetterReading>(*record);
      Check(letter);
      // No letter lies in another.
      uint64_t size = letter.says ? letter.says->size : 0;
      if (size > bytesLeft_) intake::RefuseRecord();
      bytesLeft_ -= size;
    } catch (const Error&) {
      if (record) link_->Distrust();
      letter = {};
      letter.entry.name = "message " + std::to_string(number_);
      letter.failure = LostFailure();
    }
    return letter;
  }

  void ReadText(LetterReading& letter, const Sink& sink) override {
    if (letter.prepared) return sink(*letter.held);
    uint64_t left = letter.says->size;
    auto take = [&](std::string_view piece) {
      if (piece.size() > left) intake::RefuseRecord();
      left -= piece.size();
      sink(piece);
    };
    std::optional<std::string_view> record =
        link_->Text(intake::BytesOf(Wanted{letter.span, letter.entry.state}), take);
    try {
      if (!record) intake::RefuseRecord();
      auto text = intake::RecordOf<LetterReading>(*record);
      Check(text);
      if (text.failure) throw Error(text.failure->number, text.failure->text);
      if (!text.says || text.says->key != letter.says->key) intake::RefuseRecord();
      if (!text.held && left > 0) intake::RefuseRecord();
      letter.held = std::move(text.held);
      letter.prepared = std::move(text.prepared);
    } catch (const Error&) {
      if (record) link_->Distrust();
      throw;
    }
    if (letter.held) sink(*letter.held);
  }

 private:
  std::unique_ptr<intake::ReaderLink> link_;
  uint64_t bytesLeft_;  // of the file
  int64_t number_ = 0;
};

// What lies beside the letters of a folder.
struct LetterFolder {
  std::string sequences;  // .mh_sequences
};
template <typename Archive>
void Pass(Archive& archive, LetterFolder& f) {
  archive(RawBytes{f.sequences});
}

// How a letter that is sent is to be read.
struct Sent {
  bool withText = false;
  LetterFileKind kind = LetterFileKind::kText;
  std::string name;
  intake::MessageState state;  // as far as names tell it
};
template <typename Archive>
void Pass(Archive& archive, Sent& s) {
  archive(s.withText, intake::OneOf{s.kind, static_cast<size_t>(LetterFileKind::kRecord) + 1},
          RawBytes{s.name}, s.state);
}

// Letters that are files of their own, which the program opens. Those to come are read and sent
// while the reader is busy with the ones before; a long one waits for its turn. An Apple file is
// sent as it is, and the reader says where in it the letter lies.
class LetterFilesLink : public LetterWalk {
 public:
  LetterFilesLink(const Mailbox& mailbox, std::unique_ptr<intake::ReaderLink> link)
      : hasKinds_(mailbox.kind == MailboxKind::kLetterFiles), link_(std::move(link)) {
    LetterFiles::StateOf stateOf;
    if (mailbox.kind == MailboxKind::kMaildir) stateOf = StateInMaildir;
    if (mailbox.kind == MailboxKind::kMh)
      stateOf = [](const auto&) { return intake::MessageState(); };
    letters_ = std::make_unique<LetterFiles>(LetterPathsOf(mailbox), std::move(stateOf), true);
  }

  LetterReading Next(bool wantsText) override {
    while (MayReadOn()) ReadOn(wantsText);
    Coming coming = std::move(coming_.front());
    coming_.pop_front();
    bytesAhead_ -= coming.bytes;
    if (HasText(coming.letter.entry) && !coming.letter.failure) {
      if (coming.step == Coming::kWaits) SendInTurn(coming, wantsText);
      if (coming.step == Coming::kSent) TakeAnswer(coming);
    }
    return std::move(coming.letter);
  }

  void ReadText(LetterReading& letter, const Sink& sink) override {
    if (!letter.prepared) {
      for (Coming& other : coming_) {
        if (other.step == Coming::kSent) TakeAnswer(other);
      }
      Coming again{std::move(letter)};
      SendIt(again, true);
      TakeAnswer(again);
      letter = std::move(again.letter);
      if (letter.failure) throw Error(letter.failure->number, letter.failure->text);
    }
    if (letter.held) return sink(*letter.held);
    letters_->Copy(sink);  // a long one, behind which nothing was read
  }

 private:
  struct Coming {
    enum Step : uint8_t { kWaits, kSent, kAnswered };
    LetterReading letter;
    Step step = kWaits;
    size_t bytes = 0;  // that were read ahead
  };

  bool MayReadOn() const {
    constexpr size_t kMostAhead = size_t{64} * 1024;
    constexpr size_t kMostComing = 64;
    if (coming_.empty()) return true;
    const Coming& last = coming_.back();
    bool isBlocked =
        last.letter.isEnd || (HasText(last.letter.entry) && last.step == Coming::kWaits);
    return !isBlocked && bytesAhead_ < kMostAhead && coming_.size() < kMostComing;
  }

  void ReadOn(bool wantsText) {
    Coming& coming = coming_.emplace_back();
    LetterReading& letter = coming.letter;
    letter.isEnd = !letters_->Next(letter.entry);
    if (letter.isEnd) letter.damage = letters_->Damage();
    if (!HasText(letter.entry)) return;
    letter.span = letters_->Span();
    uint64_t size = letter.span.end - letter.span.begin;
    if (size > kMostKept) return;
    try {
      letters_->Copy([&](std::string_view piece) {
        if (!letter.held) letter.held.emplace();
        *letter.held += piece;
      });
    } catch (...) {
      letter.held.reset();
      letter.failure = CurrentFailure();
      return;
    }
    if (letter.held) coming.bytes = letter.held->size();
    bytesAhead_ += coming.bytes;
    if (link_->MayAsk(size)) SendIt(coming, wantsText);
  }

  void SendIt(Coming& coming, bool withText) {
    LetterReading& letter = coming.letter;
    std::string own;
    if (!letter.held) {
      withText = true;
      letters_->Copy([&](std::string_view piece) { own += piece; });
    }
    link_->Ask(
        letter.held ? *letter.held : own,
        intake::BytesOf(Sent{withText, KindOf(letter), letter.entry.name, letter.entry.state}));
    coming.step = Coming::kSent;
  }

  // One that was answered for has been cut out of its file.
  LetterFileKind KindOf(const LetterReading& letter) const {
    return hasKinds_ && !letter.says ? KindOfLetterFile(letter.entry.name) : LetterFileKind::kText;
  }

  void SendInTurn(Coming& coming, bool withText) {
    try {
      SendIt(coming, withText);
    } catch (...) {
      coming.letter.failure = CurrentFailure();
    }
  }

  // What the reader has to say of the letter; its bytes are here.
  void TakeAnswer(Coming& coming) {
    LetterReading& letter = coming.letter;
    coming.step = Coming::kAnswered;
    std::optional<std::string_view> record = link_->Answer();
    try {
      if (!record) intake::RefuseRecord();
      auto read = intake::RecordOf<LetterReading>(*record);
      if (read.held || read.says.has_value() != HasText(read.entry)) intake::RefuseRecord();
      Cut(letter, read.span);
      letter.entry.state = read.entry.state;
      letter.entry.fault = read.entry.fault;
      if (!read.says) letter.held.reset();
      if (letter.held && letter.held->size() != read.says->size) intake::RefuseRecord();
      if (read.prepared) intake::CheckPrepared(*read.prepared, letter.held);
      letter.says = std::move(read.says);
      letter.prepared = std::move(read.prepared);
    } catch (const Error&) {
      if (record) link_->Distrust();
      letter.failure = LostFailure();
    }
  }

  // Leaves of what was sent the letter that lies there.
  void Cut(LetterReading& letter, LetterSpan place) {
    uint64_t size = letter.span.end - letter.span.begin;
    if (place.begin > place.end || place.end > size) intake::RefuseRecord();
    letter.span = {letter.span.begin + place.begin, letter.span.begin + place.end};
    if (!letter.held) return letters_->GoTo(letter.span);
    letter.held->resize(static_cast<size_t>(place.end));
    letter.held->erase(0, static_cast<size_t>(place.begin));
  }

  bool hasKinds_;
  std::unique_ptr<LetterReader> letters_;
  std::unique_ptr<intake::ReaderLink> link_;
  std::deque<Coming> coming_;
  size_t bytesAhead_ = 0;
};

// The reader's end of both.
std::unique_ptr<intake::PreparedMessage> Prepare(const intake::ReadingRules& rules,
                                                 const intake::MessageState& state, bool packs,
                                                 std::string& text) {
  intake::StoreFacts facts;
  facts.state = state;
  return intake::PrepareElsewhere(text, rules, facts, packs);
}

class LetterFileService : public intake::SentMessages {
 public:
  LetterFileService(const intake::ReadingRules& rules, const LetterFolder& folder)
      : rules_(rules), sequences_(folder.sequences) {}

  Answer Next(std::string_view how, bool packs, const ByteSink& /*sink*/) override {
    auto sent = intake::RecordOf<Sent>(how);
    intake::RawMessage file({}, Taken());
    FileWindow window(file);
    LetterFrame frame = FrameOf(window, sent.kind);
    LetterReading letter;
    letter.span = frame.span;
    letter.entry = {"letter", frame.fault, StateOf(sent, frame), ""};
    if (!HasText(letter.entry)) return {intake::BytesOf(letter)};
    std::string text = std::move(file).Bytes();
    text.resize(static_cast<size_t>(frame.span.end));
    text.erase(0, static_cast<size_t>(frame.span.begin));
    LetterListener listener;
    listener.Add(text);
    letter.says = listener.Finish();
    if (sent.withText) letter.prepared = Prepare(rules_, letter.entry.state, packs, text);
    return {intake::BytesOf(letter)};
  }

 private:
  intake::MessageState StateOf(const Sent& sent, const LetterFrame& frame) const {
    if (sent.kind == LetterFileKind::kApple) return frame.state;
    intake::MessageState state = sequences_.StateOf(sent.name);
    return state.isKnown ? state : sent.state;
  }

  intake::ReadingRules rules_;
  MhSequences sequences_;
};

class MailboxService : public intake::LetterService {
 public:
  MailboxService(const intake::ReadingRules& rules, MailboxFile mailbox)
      : rules_(rules), mailbox_(std::move(mailbox)) {}

  void Skip(uint64_t messages) override {
    LetterEntry entry;
    while (messages > 0 && Letters().Next(entry)) --messages;
  }

  Answer Next(std::string_view how, bool packs, const ByteSink& /*sink*/) override {
    LetterReading letter;
    try {
      letter.isEnd = !Letters().Next(letter.entry);
      if (letter.isEnd) letter.damage = Letters().Damage();
      letter.span = Letters().Span();
      if (HasText(letter.entry)) Listen(Letters(), letter);
    } catch (...) {
      letter.isEnd = true;
      letter.failure = CurrentFailure();
    }
    bool isWanted = how == intake::kWithText;
    bool halts = isWanted && letter.says && !letter.held;
    if (!isWanted) letter.held.reset();
    if (letter.held) letter.prepared = Prepare(rules_, letter.entry.state, packs, *letter.held);
    return {intake::BytesOf(letter), halts};
  }

  std::string Text(std::string_view which, const ByteSink& longText) override {
    auto wanted = intake::RecordOf<Wanted>(which);
    LetterReading letter;
    Letters().GoTo(wanted.span);
    Listen(Letters(), letter);
    if (letter.failure) return intake::BytesOf(letter);
    std::string bytes;
    if (letter.held) {
      letter.prepared = Prepare(rules_, wanted.state, true, *letter.held);
    } else {
      Letters().Copy([&](std::string_view piece) { bytes += piece; });
      longText(bytes);
      letter.prepared = Prepare(rules_, wanted.state, true, bytes);
    }
    return intake::BytesOf(letter);
  }

 private:
  // Opened when it is first needed, so that its error belongs to a request.
  LetterReader& Letters() {
    if (!letters_) {
      letters_ = OpenMailboxFile(mailbox_.kind, platform::kHandedName, mailbox_.index);
    }
    return *letters_;
  }

  intake::ReadingRules rules_;
  MailboxFile mailbox_;
  std::unique_ptr<LetterReader> letters_;
};

}  // namespace

std::unique_ptr<LetterWalk> OpenLettersLink(const Mailbox& mailbox,
                                            const intake::ReadingRules& rules) {
  using intake::Conversation;
  if (IsFile(mailbox.kind)) {
    bool hasIndex = mailbox.kind == MailboxKind::kOutlookExpress4;
    MailboxFile told{mailbox.kind, hasIndex ? IndexBeside(mailbox.path) : ""};
    auto link = intake::ReaderLink::Begin(mailbox.path, Conversation::kMailbox, rules,
                                          intake::BytesOf(told));
    return link ? std::make_unique<MailboxLink>(std::move(link)) : nullptr;
  }
  LetterFolder told;
  if (mailbox.kind == MailboxKind::kMh) told.sequences = SequencesIn(mailbox.path);
  auto link =
      intake::ReaderLink::Begin({}, Conversation::kLetterFiles, rules, intake::BytesOf(told));
  return link ? std::make_unique<LetterFilesLink>(mailbox, std::move(link)) : nullptr;
}

std::unique_ptr<intake::LetterService> MakeMailboxService(const intake::ReadingRules& rules,
                                                          std::string_view opening) {
  return std::make_unique<MailboxService>(rules, intake::RecordOf<MailboxFile>(opening));
}

std::unique_ptr<intake::LetterService> MakeLetterFileService(const intake::ReadingRules& rules,
                                                             std::string_view opening) {
  return std::make_unique<LetterFileService>(rules, intake::RecordOf<LetterFolder>(opening));
}

}  // namespace tarnwick::sources
