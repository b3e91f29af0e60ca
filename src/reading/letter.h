// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One message of the open repository as it is read: what stands over it, its text, its HTML made
// fit to be shown, its files, its headers and source.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reading/clean_html.h"
#include "takeout/attachments.h"
#include "takeout/stored_message.h"

namespace tarnwick::reading {

struct Letter {
  takeout::StoredMessage message;
  std::string text;  // the body, or what the HTML says where there is none
  std::optional<CleanedHtml> formatted;
  std::shared_ptr<const takeout::MessageAttachments> files;  // null without a stored file
};

// nullopt when there is no message of this number, or on an error, which has been reported.
std::optional<Letter> ReadLetter(int64_t id);

// What the text window shows of a message.
struct EmailText {
  std::string subject;
  std::string text;  // the body when it holds text, else the HTML as it stands
  int64_t id = 0;    // 0 for a text that is no stored message's
};

// nullopt when there is no message of this number (any more), or on an error, which has been
// reported.
std::optional<EmailText> ReadEmailText(int64_t id);

// "Ann Lee <ann@example.org>"; the address alone where there is no name.
std::string PersonText(const std::string& name, const std::string& address);

// The lines before the first empty one of the message as it was received, and all of it, as text; a
// source of many megabytes is cut. "" without a stored file.
std::string HeadersOf(int64_t id);
std::string SourceOf(int64_t id);

}  // namespace tarnwick::reading
