// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/registry_link.h"

#include <optional>
#include <utility>
#include <vector>

#include "intake/letter_record.h"
#include "intake/reader_link.h"
#include "platform/files.h"

namespace tarnwick::intake {

namespace {

using platform::ProfileKind;
using platform::RegistryKeys;
using platform::RegistryValue;

constexpr size_t kProfileKinds = static_cast<size_t>(ProfileKind::kDbxFiles) + 1;
constexpr size_t kValueTypes = static_cast<size_t>(RegistryValue::Type::kNumber) + 1;

struct Opening {
  ProfileKind kind = ProfileKind::kNone;
};
template <typename Archive>
void Pass(Archive& archive, Opening& o) {
  archive(OneOf{o.kind, kProfileKinds});
}

// In whatever bytes the file has it.
struct Name {
  std::string text;
};
template <typename Archive>
void Pass(Archive& archive, Name& n) {
  archive(RawBytes{n.text});
}

struct Question {
  Name path;
  std::optional<Name> valueName;  // nothing: the key's subkeys are asked for
};
template <typename Archive>
void Pass(Archive& archive, Question& q) {
  archive(q.path, q.valueName);
}

struct Reply {
  std::optional<core::Telling> fault;  // of the file
  bool keyExists = false;
  std::vector<Name> subKeys;
  bool hasValue = false;
  RegistryValue value;
};
template <typename Archive>
void Pass(Archive& archive, Reply& r) {
  archive(r.fault, r.keyExists, r.subKeys, r.hasValue, OneOf{r.value.type, kValueTypes},
          RawBytes{r.value.text}, r.value.number);
}

class RegistryLink final : public RegistryKeys {
 public:
  RegistryLink(std::string file, std::unique_ptr<ReaderLink> link)
      : file_(std::move(file)), link_(std::move(link)) {
    Ask({});  // has it opened
  }

  std::optional<std::vector<std::string>> SubKeys(std::string_view path) override {
    Reply reply = Ask({{std::string(path)}, {}});
    if (!reply.keyExists) return std::nullopt;
    std::vector<std::string> names;
    for (Name& name : reply.subKeys) names.push_back(std::move(name.text));
    return names;
  }

  std::optional<RegistryValue> Value(std::string_view path, std::string_view name,
                                     bool* keyExists) override {
    Reply reply = Ask({{std::string(path)}, Name{std::string(name)}});
    if (keyExists != nullptr) *keyExists = reply.keyExists;
    if (!reply.hasValue) return std::nullopt;
    return std::move(reply.value);
  }

 private:
  Reply Ask(const Question& question) {
    std::optional<std::string_view> record = link_->Text(BytesOf(question), {});
    Reply reply;
    try {
      if (!record) RefuseRecord();
      reply = RecordOf<Reply>(*record);
    } catch (const Error&) {
      if (record) link_->Distrust();
      throw Error(ErrorNumber::kPathAccess, kReaderLost);
    }
    if (!reply.fault) return reply;
    std::string& text = reply.fault->text;
    if (size_t at = text.find(platform::kHandedName); at != std::string::npos) {
      text.replace(at, platform::kHandedName.size(), file_);
    }
    throw Error(reply.fault->number, text);
  }

  std::string file_;
  std::unique_ptr<ReaderLink> link_;
};

class RegistryService : public LetterService {
 public:
  explicit RegistryService(ProfileKind kind) : kind_(kind) {}

  Answer Next(std::string_view /*how*/, bool /*packs*/, const ByteSink& /*sink*/) override {
    return {};
  }

  std::string Text(std::string_view which, const ByteSink& /*longText*/) override {
    auto question = RecordOf<Question>(which);
    Reply reply;
    try {
      if (!keys_) keys_ = platform::ReadRegistryFile(platform::kHandedName, kind_);
      if (question.valueName) {
        auto value = keys_->Value(question.path.text, question.valueName->text, &reply.keyExists);
        reply.hasValue = value.has_value();
        if (value) reply.value = std::move(*value);
      } else if (auto names = keys_->SubKeys(question.path.text)) {
        reply.keyExists = true;
        for (std::string& name : *names) reply.subKeys.push_back({std::move(name)});
      }
    } catch (const Error& error) {
      reply.fault = {.kind = core::Telling::Kind::kError,
                     .text = error.Description(),
                     .number = error.Number()};
    }
    return BytesOf(reply);
  }

 private:
  ProfileKind kind_;
  std::unique_ptr<RegistryKeys> keys_;  // once they were asked for
};

}  // namespace

std::unique_ptr<RegistryKeys> OpenRegistryLink(const std::string& file, ProfileKind kind) {
  auto link = ReaderLink::Begin(file, Conversation::kRegistry, kDesigned, BytesOf(Opening{kind}));
  if (!link) return nullptr;
  return std::make_unique<RegistryLink>(file, std::move(link));
}

std::unique_ptr<LetterService> MakeRegistryService(std::string_view opening) {
  return std::make_unique<RegistryService>(RecordOf<Opening>(opening).kind);
}

}  // namespace tarnwick::intake
