// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The parts of a raw message as a tree of containers (RFC 2046), read down to its leaves. Accepted
// beyond the rules: headers that no empty line ends, containers without a closing line or with a
// boundary that is not the declared one, parts behind a closing line, attached messages that are
// encoded. Depth and number of parts are bounded, so that time and memory are proportional to the
// message whatever it says.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "intake/content_type.h"

namespace tarnwick::takeout {

struct MessagePart {
  intake::PartDescription content;
  std::string_view body;  // still encoded
  bool isMessage = false;
  bool isOfMessage = false;  // of an attached message
  std::string contentId;     // without its brackets
  std::string subject;       // of an attached message: its Subject line as it stands
};

class MessageParts {
 public:
  // message must outlive this.
  explicit MessageParts(std::string_view message);
  MessageParts(const MessageParts&) = delete;
  MessageParts& operator=(const MessageParts&) = delete;

  // In their order. An attached message is a leaf, and its own leaves follow it.
  const std::vector<MessagePart>& Leaves() const { return leaves_; }
  // True when parts may be missing: a container whose boundary was not found, or too deep a
  // nesting, or too many parts.
  bool IsDamaged() const { return isDamaged_; }
  // The charset of the first text that declares one.
  const std::string& Charset() const { return charset_; }

 private:
  void ReadPart(std::string_view text, int depth, bool isDigest);
  void ReadContainer(const MessagePart& part, int depth);
  void AddLeaf(MessagePart part);

  std::vector<MessagePart> leaves_;
  std::deque<std::string> decoded_;  // of attached messages that were encoded
  std::string charset_;
  bool isDamaged_ = false;
  int insideMessages_ = 0;
};

}  // namespace tarnwick::takeout
