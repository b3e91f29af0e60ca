// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/attachments.h"

#include <algorithm>
#include <cassert>
#include <cstdio>

#include "core/guard.h"
#include "core/messages.h"
#include "core/text.h"
#include "intake/attachment_file.h"
#include "intake/encoded_word.h"
#include "intake/inline_file.h"
#include "intake/transfer_decoding.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "takeout/file_kinds.h"
#include "takeout/new_files.h"
#include "takeout/stored_file.h"

namespace tarnwick::takeout {

namespace {

using intake::PartKind;

constexpr std::string_view kInlineType = "application/octet-stream";
constexpr size_t kMostAttachments = 1000;

// What a reader is shown as the message's text, not as a file.
bool IsText(const intake::PartDescription& content) {
  return content.type == PartKind::kUndeclared || content.type == PartKind::kText ||
         content.type == PartKind::kHtml || content.isUnknownText;
}

bool IsUuencoding(std::string_view encoding) {
  std::string lower = platform::AsciiLower(encoding);
  return lower.find("uue") != std::string::npos || lower == "x-uu";
}

// Calls found with each uuencoded file of a text.
template <typename Found>
void ForEachInlineFile(std::string_view text, Found&& found) {
  std::optional<intake::InlineFile> file;
  while (!text.empty()) {
    size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (file) {
      intake::InlineFile::Step step = file->Line(line);
      if (step == intake::InlineFile::Step::kTaken) continue;
      if (step == intake::InlineFile::Step::kEnded) found(*file);
      file.reset();
      if (step == intake::InlineFile::Step::kEnded) continue;
    }
    if (intake::InlineFile::MayBegin(line)) file.emplace(line);
  }
}

// A name for a file that the message does not name.
std::string InventedName(const MessagePart& leaf, const std::string& charset) {
  std::string extension(ExtensionOf(leaf.isMessage ? "message/rfc822" : leaf.content.mediaType));
  if (leaf.isMessage) {
    intake::MixedText subject;
    intake::Decode(leaf.subject, subject);
    std::string safe = platform::SafeFileName(subject.Finish(charset), 80);
    return (safe.empty() ? "message" : safe) + extension;
  }
  std::string_view family = leaf.content.mediaType;
  family = family.substr(0, family.find('/'));
  bool isTold = family == "image" || family == "audio" || family == "video";
  return (isTold ? std::string(family) : "attachment") + extension;
}

bool EndsWith(const std::string& name, std::string_view lowerEnd) {
  return name.size() >= lowerEnd.size() &&
         platform::AsciiLower(name.substr(name.size() - lowerEnd.size())) == lowerEnd;
}

void Warn(const std::vector<std::string>& programs) {
  constexpr size_t kMostNamed = 5;
  std::string text;
  for (size_t i = 0; i < programs.size() && i < kMostNamed; ++i) {
    text += (i == 0 ? "" : "\r\n\r\n") + ProgramWarning(programs[i]);
  }
  if (programs.size() > kMostNamed) {
    text += "\r\n\r\nThe same is true of " + std::to_string(programs.size() - kMostNamed) +
            " other saved files.";
  }
  if (!text.empty()) core::ShowMessage(text);
}

}  // namespace

MessageAttachments::MessageAttachments(std::string file) : file_(std::move(file)), parts_(file_) {
  for (const MessagePart& leaf : parts_.Leaves()) TakeLeaf(leaf);
  FreeNames names("");
  for (Attachment& attachment : list_) {
    attachment.name = names.Take(attachment.name);
    attachment.isProgram = IsProgramName(attachment.name);
  }
  if (!parts_.IsDamaged() && list_.size() < kMostAttachments) return;
  Add({names.Take("whole message.eml"), "message/rfc822", file_.size(), false},
      {file_, "", "", false});
}

void MessageAttachments::TakeLeaf(const MessagePart& leaf) {
  const intake::PartDescription& content = leaf.content;
  std::string name = platform::SafeFileName(content.anyName.Finish(parts_.Charset()));
  bool isFile = leaf.isMessage || content.isAttached || !name.empty() || !IsText(content);
  if (!isFile) {
    TakeInlineFiles(leaf);
    return;
  }
  if (name.empty()) name = InventedName(leaf, parts_.Charset());
  if (leaf.isMessage && !EndsWith(name, ".eml")) name += ".eml";
  Source source{leaf.body, content.encoding, "", false};
  if (IsUuencoding(content.encoding)) {
    ForEachInlineFile(leaf.body, [&](const intake::InlineFile& file) {
      if (source.isDecoded) return;
      source.bytes = file.Bytes();
      source.isDecoded = true;
    });
  }
  std::string type = leaf.isMessage              ? "message/rfc822"
                     : content.mediaType.empty() ? "text/plain"
                                                 : content.mediaType;
  Add({std::move(name), std::move(type), 0, false, leaf.contentId, leaf.isOfMessage},
      std::move(source));
}

void MessageAttachments::TakeInlineFiles(const MessagePart& leaf) {
  if (leaf.content.type == PartKind::kHtml) return;
  std::string decoded;
  std::string_view text = leaf.body;
  if (intake::TransferKindOf(leaf.content.encoding) != intake::TransferKind::kPlain) {
    decoded = intake::DecodeFile(text, leaf.content.encoding);
    text = decoded;
  }
  ForEachInlineFile(text, [&](const intake::InlineFile& file) {
    intake::MixedText declared;
    declared.AppendRaw(file.Name());
    std::string name = platform::SafeFileName(declared.Finish(parts_.Charset()));
    if (name.empty()) name = "attachment.bin";
    Add({std::move(name), std::string(kInlineType), 0, false}, {{}, "", file.Bytes(), true});
  });
}

void MessageAttachments::Add(Attachment attachment, Source source) {
  if (list_.size() > kMostAttachments) return;
  sources_.push_back(std::move(source));
  list_.push_back(std::move(attachment));
  list_.back().size = Bytes(list_.size() - 1).size();
}

uint64_t MessageAttachments::TotalSize() const {
  uint64_t total = 0;
  for (const Attachment& attachment : list_) total += attachment.size;
  return total;
}

std::string MessageAttachments::Bytes(size_t index) const {
  assert(index < sources_.size());
  const Source& source = sources_[index];
  return source.isDecoded ? source.bytes : intake::DecodeFile(source.body, source.encoding);
}

std::unique_ptr<MessageAttachments> OpenAttachments(int64_t id) {
  return core::Guarded("OpenAttachments", std::unique_ptr<MessageAttachments>(), [&] {
    std::optional<std::string> file = ReadStoredFile(id);
    return file ? std::make_unique<MessageAttachments>(std::move(*file)) : nullptr;
  });
}

std::vector<std::string> SaveAttachments(const MessageAttachments& attachments,
                                         const std::vector<size_t>& which,
                                         const std::string& folder) {
  std::vector<std::string> paths;
  std::vector<std::string> programs;
  core::GuardedRun("SaveAttachments", [&] {
    uint64_t size = 0;
    for (size_t index : which) size += attachments.List()[index].size;
    platform::RequireSpace(folder, size);
    NewFiles files(folder);
    for (size_t index : which) {
      const std::string& name = attachments.List()[index].name;
      size_t dot = std::min(name.rfind('.'), name.size());
      paths.push_back(files.Add(name.substr(0, dot), name.substr(dot), attachments.Bytes(index)));
      if (attachments.List()[index].isProgram) {
        programs.push_back(platform::FileNameOf(paths.back()));
      }
    }
  });
  Warn(programs);
  return paths;
}

bool SaveAttachmentAs(const MessageAttachments& attachments, size_t which,
                      const std::string& path) {
  bool saved = core::GuardedRun("SaveAttachmentAs", [&] {
    platform::RequireSpace(platform::FolderOf(path), attachments.List()[which].size);
    platform::StagedFile file(platform::UniquePath(path, std::string(platform::kUnfinished)));
    platform::WriteFile(file.Path(), attachments.Bytes(which));
    file.Replace(path);
  });
  std::string name = platform::FileNameOf(path);
  if (saved && IsProgramName(name)) Warn({name});
  return saved;
}

std::string AttachmentScratchFile(const MessageAttachments& attachments, size_t which) {
  return intake::MakeAttachFile(attachments.List()[which].name, attachments.Bytes(which));
}

std::string SizeText(uint64_t bytes) {
  if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  constexpr const char* kUnits[] = {"kB", "MB", "GB"};
  double value = static_cast<double>(bytes) / 1000;
  size_t unit = 0;
  while (value >= 999.5 && unit + 1 < std::size(kUnits)) {
    value /= 1000;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, value < 10 ? "%.1f %s" : "%.0f %s", value, kUnits[unit]);
  return text;
}

}  // namespace tarnwick::takeout
