// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Who wrote each message of the open repository, who got it, what files were attached to it, in
// which folder of the mail program it lay and what that knew of it, and whom the contact book
// holds, in memory: sixteen bytes for each message, four for each recipient and file, each name and
// address once, and the contact book's texts. A search for a person is a look at the distinct
// names then, and folders are counted without a look at the file.
//
// It is read in steps, while there is nothing else to do or by the first search that wants it, and
// goes on from there after messages and contacts were added. Deleted ones stay in it until it is
// forgotten: whoever asks knows which messages there are. Where keys are too high or lie too far
// apart, it is never complete.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "search/row_steps.h"

namespace tarnwick::search {

// Marks by the keys of messages; those beyond the end are not marked.
class KeySet {
 public:
  void Add(int64_t key) {
    if (key < 0 || key > kHighestKey) return;
    auto place = static_cast<size_t>(key);
    if (place >= marks_.size()) marks_.resize(place + place / 2 + 64);
    marks_[place] = true;
  }
  bool Holds(int64_t key) const {
    auto place = static_cast<size_t>(key);
    return place < marks_.size() && marks_[place];
  }

  static constexpr int64_t kHighestKey = (int64_t{1} << 25) - 1;

 private:
  std::vector<bool> marks_;
};

// Texts of many owners, folded, one behind the other: to look for a part is one pass over them all.
class TextPool {
 public:
  void Add(int64_t owner, std::string_view text);
  void AddOwnersWith(std::string_view part, KeySet& owners) const;

 private:
  std::string texts_;  // each ends with a NUL
  std::vector<size_t> begins_;
  std::vector<int64_t> owners_;
};

struct Folder {
  std::string identity;
  std::string name;
  int64_t messages = 0;
  friend bool operator==(const Folder&, const Folder&) = default;
};

class MailMap {
 public:
  // Reads on for some milliseconds; true when there is nothing left to read. Throws Error.
  bool Read(int64_t milliseconds);
  // True when every message there is now is in it. Throws Error.
  bool IsComplete();
  // There are messages that it can't hold.
  bool IsUnfit() const { return isUnfit_; }
  // After anything else than new messages: another repository, rows replaced.
  void Forget() { *this = {}; }
  // After the contact book was changed.
  void ForgetContacts();

  // The messages that somebody with the text in name or address wrote or got.
  void AddWrittenBy(std::string_view text, KeySet& keys) const;
  void AddReceivedBy(std::string_view text, KeySet& keys) const;
  // Those with the text in the name of an attached file.
  void AddWithFile(std::string_view text, KeySet& keys) const;
  // Those whose correspondent has the text in name or address in the contact book; received or
  // sent ones, or both.
  void AddOfContacts(std::string_view text, bool received, bool sent, KeySet& keys) const;
  // Those of the folders with the text in their names.
  void AddInFolders(std::string_view text, KeySet& keys) const;
  // Those of one folder.
  void AddInFolder(const std::string& identity, const std::string& name, KeySet& keys) const;

  // Those with a letter of intake::kStateMarks.
  void AddInState(char letter, KeySet& keys) const;

  struct Traits {
    int day = 0;  // of its date: days since 1 January 1970
    bool isReceived = false;
    int64_t contact = 0;  // 0: none
  };
  // nullopt for a message that is not in it.
  std::optional<Traits> Of(int64_t message) const;

  // In the order of identity and name; those that hold no message any more are left out. Throws
  // Error.
  std::vector<Folder> Folders() const;

 private:
  static constexpr uint32_t kNone = UINT32_MAX;  // where there is no message

  // Pairs of texts, numbered as they come.
  struct Names {
    uint32_t NumberOf(std::string_view first, std::string_view second);
    // Which have the text in one of the two.
    std::vector<bool> With(std::string_view text) const;
    std::unordered_map<std::string, uint32_t> numbers;
    std::vector<std::pair<std::string_view, std::string_view>> pairs;
    std::string key;
  };
  static constexpr uint32_t kNoContact = (1U << 26) - 1;
  struct Message {
    uint32_t sender = kNone;
    uint32_t folder = kNone;
    uint32_t contact : 26 = kNoContact;
    uint32_t isReceived : 1 = 0;
    uint32_t isSent : 1 = 0;
    int32_t day : 24 = 0;
    uint32_t states : 8 = 0;  // by their places in intake::kStateMarks
  };
  static_assert(sizeof(Message) == 16 && kNoContact > KeySet::kHighestKey);
  // Rows of a table beside the messages: a message's key, and a number of Names. They come nearly
  // in the order of the messages.
  class Links {
   public:
    void Add(uint32_t message, uint32_t name) {
      uint32_t step = message - last_;
      if (step < kFar && name <= kShortName) {
        words_.push_back(step << kNameBits | name);
      } else {
        words_.insert(words_.end(), {kFar << kNameBits, message, name});
      }
      last_ = message;
    }
    template <typename Use>
    void ForEach(const Use& use) const {
      uint32_t message = 0;
      for (auto word = words_.begin(); word != words_.end(); ++word) {
        uint32_t name = *word & kShortName;
        if (*word >> kNameBits != kFar) {
          message += *word >> kNameBits;
        } else {
          message = *++word;
          name = *++word;
        }
        use(message, name);
      }
    }

   private:
    static constexpr int kNameBits = 24;
    static constexpr uint32_t kShortName = (1U << kNameBits) - 1;
    static constexpr uint32_t kFar = 255;
    // How many keys the message is further than the one before, and the name; or kFar, and both.
    std::deque<uint32_t> words_;
    uint32_t last_ = 0;
  };
  // How far a table has been read.
  struct Progress {
    int64_t last = 0;  // key
    int64_t end = 0;   // the last there is
    bool IsAtEnd() const { return end <= last; }
  };
  void ReadNext(int64_t rows);
  void ReadMessages(int64_t rows);
  // columns: two of texts behind the key of the message.
  void ReadLinks(std::string_view table, std::string_view columns, int64_t rows, Names& names,
                 Links& links, Progress& progress);
  // columns: the key of a contact and a text of it.
  void ReadContacts(std::string_view table, std::string_view columns, int64_t rows,
                    Progress& progress);
  void CountLeft(std::vector<Folder>& folders) const;
  template <typename Test>
  void AddLetters(const Test& test, KeySet& keys) const;
  static void AddLinked(const Links& links, const std::vector<bool>& wanted, KeySet& keys);

  Names people_;                  // folded: address and name
  Names files_;                   // folded: name and nothing
  Names folders_;                 // identity and name
  std::vector<Message> letters_;  // by their keys
  int64_t read_ = 0;              // of them
  Links recipients_;
  Links attached_;
  Progress messages_;
  Progress to_;
  Progress cc_;
  Progress attachments_;
  TextPool contacts_;  // names and addresses
  Progress contactNames_;
  Progress contactAddresses_;
  bool isUnfit_ = false;
  RowSteps steps_;
};

// The map of the open repository.
MailMap& Map();

}  // namespace tarnwick::search
