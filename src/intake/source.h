// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a load reads from: Outlook Express, Outlook, and whatever comes later. The load command asks
// each source whether the profile holds anything of it, has all of them announce to the account of
// the load (load_account.h) what their places hold, and then has them read one after the other. A
// source opens its folders and gives each to ReadFolder, which has its messages stored and counted.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "intake/header_parser.h"
#include "intake/mail_message.h"
#include "intake/outcome.h"
#include "intake/prepared_message.h"
#include "intake/raw_message.h"
#include "intake/reading_rules.h"

namespace tarnwick::intake {

// The message that a folder has come to.
struct SourceMessage {
  // How the person knows it, such as date and subject; "" where it need not be told of.
  std::string name;
  // How it ended already: it is stored, can't be read or the like. kNone: it is to be taken in.
  Ending ending;
  // What tells it from every other message, the same at every load; "" where there is no such
  // thing.
  std::string key;
  // The source has asked for the key, and nothing is stored or ignored by it.
  bool isKeyNew = false;
  // The record of a message that is to be taken in, as the source has made it, its key not stored
  // yet. Without one the message is its text, which is parsed.
  std::optional<MailMessage> message;
  // Its text, where that is not to be read from TempMessageFile.
  std::optional<RawMessage> raw;
  // What was read of it ahead, by the folder's rules and the facts below; beside a record, the rows
  // of that record.
  std::unique_ptr<PreparedMessage> prepared;
  // What its store says of it beside the text.
  StoreFacts facts;
};

// A place that holds messages: a file, or a folder of a store.
class SourceFolder {
 public:
  virtual ~SourceFolder() = default;

  // Its name in the account of the load.
  virtual std::string Place() const = 0;
  // What its messages are stored with.
  virtual SourceDescriptor Descriptor() const = 0;
  virtual std::string Identity() const = 0;
  // What its messages are parsed by.
  virtual const ReadingRules& Rules() const { return kDesigned; }

  // Goes to the next message and writes its raw bytes, if it is to be taken in, to TempMessageFile.
  // False behind the last one. A message that can't be read is one that ended as kUnreadable. An
  // Error that is thrown ends the folder.
  virtual bool Next(SourceMessage& message) = 0;
  // What became of the message.
  virtual void Ended(const SourceMessage& /*message*/, const Ending& /*ending*/) {}
};

// Takes in the messages of a folder up to its end, or until core::IsLoadStopped. Throws what Next
// throws; the account has the reason then.
void ReadFolder(SourceFolder& folder);

// Its routines report their own errors.
class Source {
 public:
  virtual ~Source() = default;

  // As people know it: "Outlook Express".
  virtual std::string Name() const = 0;
  // The option that has it read without a question (parameter_store.h).
  virtual const char* Option() const = 0;
  // The files that it reads: "*.dbx".
  virtual std::string Files() const = 0;

  // Whether a folder, chosen as a profile, holds anything of it. Changes nothing.
  virtual bool IsIn(const std::string& folder) = 0;
  // Finds what there is in the profile. whole: as at a first load. False when it could not be
  // looked at; that is no end of the load.
  virtual bool Announce(bool whole) = 0;
  // Reads what was announced. False when it could not be read.
  virtual bool Read(bool whole) = 0;
};

}  // namespace tarnwick::intake
