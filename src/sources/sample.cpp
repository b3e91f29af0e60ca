// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/sample.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

#include "intake/letter_record.h"
#include "platform/error.h"
#include "platform/files.h"
#include "sources/file_window.h"
#include "sources/letter_files.h"
#include "sources/letter_key.h"
#include "sources/letter_walk.h"
#include "sources/mbox.h"
#include "sources/outlook_express4.h"

namespace tarnwick::sources {

namespace {

constexpr uint64_t kMostCounted = uint64_t{32} << 20;
constexpr size_t kPiece = size_t{64} * 1024;
constexpr size_t kMostFilesLookedInto = 8;
constexpr int kMostTried = 20;  // letters, for one that is not deleted

// What is asked about some bytes, or a file.
enum class About : uint8_t {
  kMailbox,  // a mailbox that is a file
  kNumber,   // how many letters it holds
  kHeads,    // the beginnings of some letters: their years
  kLetter    // a letter's file: its key, where it is not deleted
};

struct Head {
  std::string bytes;
};
struct Heads {
  std::vector<Head> heads;
};

struct Reply {
  MailboxSample sample;
  std::optional<core::Telling> failure;
};

struct Question {
  explicit Question(About what = About::kMailbox) : about(what) {}
  About about;
  MailboxKind kind = MailboxKind::kMbox;
  std::string index;  // the bytes of the file beside it
  LetterFileKind letterKind = LetterFileKind::kText;
};

template <typename Archive>
void Pass(Archive& archive, Question& q) {
  archive(intake::OneOf{q.about, static_cast<size_t>(About::kLetter) + 1},
          intake::OneOf{q.kind, static_cast<size_t>(MailboxKind::kOutlookExpress4) + 1},
          intake::RawBytes{q.index},
          intake::OneOf{q.letterKind, static_cast<size_t>(LetterFileKind::kRecord) + 1});
}
template <typename Archive>
void Pass(Archive& archive, Head& h) {
  archive(intake::RawBytes{h.bytes});
}
template <typename Archive>
void Pass(Archive& archive, Heads& h) {
  archive(h.heads);
}
template <typename Archive>
void Pass(Archive& archive, Reply& r) {
  MailboxSample& s = r.sample;
  constexpr int kLastYear = 9999;
  archive(intake::AtMost{s.letters, int64_t{1} << 48}, s.isEstimate,
          intake::AtMost{s.firstYear, kLastYear}, intake::AtMost{s.lastYear, kLastYear}, s.key,
          r.failure);
}

void AddYear(int year, MailboxSample& sample) {
  if (year == 0) return;
  sample.firstYear = sample.firstYear == 0 ? year : std::min(sample.firstYear, year);
  sample.lastYear = std::max(sample.lastYear, year);
}

// The years that Date headers tell in some bytes.
void AddYears(std::string_view bytes, MailboxSample& sample) {
  constexpr std::string_view kDate = "\nDate: ";
  for (size_t at = bytes.find(kDate); at != std::string_view::npos;
       at = bytes.find(kDate, at + 1)) {
    std::string_view line = bytes.substr(at + kDate.size());
    line = line.substr(0, line.find('\n'));
    AddYear(YearOfDate(line), sample);
  }
}

std::string KeyOf(LetterReader& letters) {
  LetterEntry letter;
  for (int i = 0; i < kMostTried && letters.Next(letter); ++i, letter = {}) {
    if (letter.state.isDeleted || !letter.fault.empty()) continue;
    LetterKey key;
    letters.Copy([&](std::string_view piece) { key.Add(piece); });
    return key.Finish();
  }
  return {};
}

void SampleFile(const intake::RawMessage& raw, MailboxKind kind, const std::string& index,
                MailboxSample& sample) {
  if (kind == MailboxKind::kOutlookExpress4) {
    sample.letters = CountOutlookExpress4(raw);
  } else {
    MboxCount count = CountMbox(raw, kMostCounted);
    sample.letters = count.letters;
    sample.isEstimate = count.isEstimate;
  }
  FileWindow file(raw, kPiece);
  AddYears(file.Read(0, kPiece), sample);
  if (file.Size() > kPiece) AddYears(file.Read(file.Size() - kPiece, kPiece), sample);
  sample.key = KeyOf(*OpenMailboxFile(kind, raw, index));
}

void SampleHeads(const intake::RawMessage& raw, MailboxSample& sample) {
  intake::RawReader bytes(raw);
  auto said = intake::RecordOf<Heads>(bytes.Read(0, static_cast<size_t>(bytes.Size())));
  for (Head& each : said.heads) {
    std::string head = "\n" + std::move(each.bytes);
    AddYears(head.substr(0, std::min(head.find("\n\n"), head.find("\n\r\n"))), sample);
  }
}

std::string KeyOfFile(const intake::RawMessage& raw, LetterFileKind kind) {
  FileWindow file(raw);
  LetterFrame frame = FrameOf(file, kind);
  if (frame.state.isDeleted || !frame.fault.empty()) return {};
  LetterKey key;
  file.Copy(frame.span.begin, frame.span.end, [&](std::string_view piece) { key.Add(piece); });
  return key.Finish();
}

Reply AnswerHere(const intake::RawMessage& raw, const Question& question,
                 const std::function<void()>& goesOn) {
  Reply reply;
  try {
    switch (question.about) {
      case About::kMailbox:
        SampleFile(raw, question.kind, question.index, reply.sample);
        break;
      case About::kNumber:
        reply.sample.letters = CountMbox(raw, UINT64_MAX, goesOn).letters;
        break;
      case About::kHeads:
        SampleHeads(raw, reply.sample);
        break;
      case About::kLetter:
        reply.sample.key = KeyOfFile(raw, question.letterKind);
        break;
    }
  } catch (const Error&) {
    reply.failure = CurrentFailure();
  }
  return reply;
}

class MailboxSampleService : public intake::SingleService {
 public:
  explicit MailboxSampleService(intake::ProgressTeller tell) : tell_(std::move(tell)) {}

 protected:
  std::string Read(const intake::RawMessage& raw, std::string_view how,
                   const ByteSink& /*sink*/) override {
    return intake::BytesOf(AnswerHere(raw, intake::RecordOf<Question>(how), [&] { tell_(0); }));
  }

 private:
  intake::ProgressTeller tell_;
};

// Throws Error, as all that ask do.
MailboxSample Ask(intake::SingleReader& reader, const intake::RawMessage& raw,
                  const Question& question) {
  Reply reply;
  bool isRead = reader.Ask(
      raw, intake::kComplete, intake::BytesOf(question), nullptr,
      [&](auto record, const auto& /*sent*/) { reply = intake::RecordOf<Reply>(record); });
  if (!isRead) reply = AnswerHere(raw, question, {});
  if (reply.failure) throw Error(reply.failure->number, reply.failure->text);
  return std::move(reply.sample);
}

void AddYearsOf(const std::vector<std::string>& paths, intake::SingleReader& reader,
                MailboxSample& sample) {
  // All are sent together: fewer than twice as many as the step is made for.
  static_assert((2 * kMostFilesLookedInto - 1) * (kPiece + sizeof(uint32_t)) < intake::kMostHeld);
  Heads beginnings;
  size_t step = std::max<size_t>(1, paths.size() / kMostFilesLookedInto);
  for (size_t i = 0; i < paths.size(); i += step) {
    FileWindow file(paths[i], kPiece);
    beginnings.heads.push_back({std::string(file.Read(0, kPiece))});
  }
  if (paths.empty()) return;
  MailboxSample said = Ask(reader, {"", intake::BytesOf(beginnings)}, Question(About::kHeads));
  AddYear(said.firstYear, sample);
  AddYear(said.lastYear, sample);
}

std::string KeyOfFirst(const std::vector<std::string>& paths, MailboxKind kind,
                       intake::SingleReader& reader) {
  for (size_t i = 0; i < std::min<size_t>(paths.size(), kMostTried); ++i) {
    if (kind == MailboxKind::kMaildir && StateInMaildir(paths[i]).isDeleted) continue;
    Question question(About::kLetter);
    if (kind == MailboxKind::kLetterFiles) {
      question.letterKind = KindOfLetterFile(platform::FileNameOf(paths[i]));
    }
    std::string key = Ask(reader, paths[i], question).key;
    if (!key.empty()) return key;
  }
  return {};
}

void SampleFolder(const Mailbox& mailbox, intake::SingleReader& reader, MailboxSample& sample) {
  std::vector<std::string> paths = LetterPathsOf(mailbox);
  bool isMaildir = mailbox.kind == MailboxKind::kMaildir;
  sample.letters = static_cast<int64_t>(paths.size());
  for (const std::string& path : paths) {
    sample.bytes += platform::FileSize(path);
    if (isMaildir) AddYear(YearOfMaildirName(platform::FileNameOf(path)), sample);
  }
  if (!isMaildir) AddYearsOf(paths, reader, sample);
  sample.key = KeyOfFirst(paths, mailbox.kind, reader);
}

}  // namespace

MailboxSample MailboxSampler::Sample(const Mailbox& mailbox) {
  MailboxSample sample;
  try {
    if (IsFile(mailbox.kind)) {
      Question question(About::kMailbox);
      question.kind = mailbox.kind;
      bool hasIndex = mailbox.kind == MailboxKind::kOutlookExpress4;
      if (hasIndex) question.index = IndexBeside(mailbox.path, kPiece);
      sample = Ask(reader_, mailbox.path, question);
      sample.bytes = platform::FileSize(mailbox.path);
    } else {
      SampleFolder(mailbox, reader_, sample);
    }
  } catch (const Error&) {
    sample.isDamaged = true;
  }
  return sample;
}

int64_t MailboxSampler::Count(const Mailbox& mailbox) {
  if (!IsFile(mailbox.kind)) return static_cast<int64_t>(LetterPathsOf(mailbox).size());
  if (mailbox.kind == MailboxKind::kOutlookExpress4) return CountOutlookExpress4(mailbox.path);
  return Ask(reader_, mailbox.path, Question(About::kNumber)).letters;
}

std::unique_ptr<intake::LetterService> MakeMailboxSampleService(
    const intake::ProgressTeller& tell) {
  return std::make_unique<MailboxSampleService>(tell);
}

}  // namespace tarnwick::sources
