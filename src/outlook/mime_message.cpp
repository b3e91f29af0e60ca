// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/mime_message.h"

#include <algorithm>
#include <array>
#include <vector>

#include "core/messages.h"
#include "core/text.h"
#include "intake/header_writer.h"
#include "outlook/mime_text.h"
#include "outlook/transport_headers.h"
#include "platform/charset.h"
#include "platform/date_time.h"
#include "platform/error.h"

namespace tarnwick::outlook {

namespace {

constexpr int kMaxEmbeddedMessages = 1000;
constexpr size_t kHeaderReach = 2048;
constexpr std::string_view kDefaultType = "application/octet-stream";

// Headers that speak of the form the letter had on its way, which is not the one it gets here.
constexpr std::array<std::string_view, 9> kFormHeaders = {
    "mime-version",        "content-type",  "content-transfer-encoding",
    "content-disposition", "content-id",    "content-description",
    "content-length",      "content-class", "content-language"};

bool IsSignedClass(const Letter& letter) {
  return core::ContainsIgnoringCase(letter.messageClass, "SMIME.MultipartSigned");
}

bool HasType(const std::string& text) {
  size_t slash = text.find('/');
  return slash != std::string::npos && slash > 0 && slash + 1 < text.size() &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return c > ' ' && c < 127 &&
                  std::string_view("()<>@,;:\\\"[]?=").find(c) == std::string_view::npos;
         });
}

class Writer {
 public:
  Writer(uint64_t& budget, const std::function<void(std::string_view)>& sink)
      : budget_(budget), sink_(sink) {}

  MimeResult result;

  void Message(PropertyItem& item, const Letter& letter) {
    Headers(letter);
    if (IsSecured(letter, item)) {
      Secured(item, letter);
    } else {
      Put("MIME-Version: 1.0\r\n");
      Content(item, letter);
    }
  }

 private:
  // A multipart that is open.
  class Multipart {
   public:
    Multipart(Writer& writer, std::string_view kind) : writer_(writer) {
      boundary_ = "=_part_" + std::to_string(++writer.parts_) + "_of_letter";
      writer.Put("Content-Type: multipart/" + std::string(kind) + ";\r\n\tboundary=\"" + boundary_ +
                 "\"\r\n\r\n");
    }
    void Next() { writer_.Put("--" + boundary_ + "\r\n"); }
    void End() { writer_.Put("--" + boundary_ + "--\r\n"); }

   private:
    Writer& writer_;
    std::string boundary_;
  };

  void Put(std::string_view bytes) {
    if (bytes.size() > budget_) {
      failed_ = true;
      throw Error(ErrorNumber::kPathAccess, "The messages take more room than their store could");
    }
    budget_ -= bytes.size();
    try {
      sink_(bytes);
    } catch (...) {
      failed_ = true;
      throw;
    }
  }

  void PutField(std::string_view name, const std::string& value) {
    if (!value.empty()) Put(std::string(name) + ": " + value + "\r\n");
  }

  void Headers(const Letter& letter) {
    std::vector<std::string> seen;
    for (const HeaderField& field : ReadTransportHeaders(letter.transportHeaders)) {
      bool isForm = std::find(kFormHeaders.begin(), kFormHeaders.end(), field.lowerName) !=
                    kFormHeaders.end();
      if (isForm) continue;
      Put(field.text);
      seen.push_back(field.lowerName);
    }
    auto isMissing = [&](std::string_view name) {
      return std::find(seen.begin(), seen.end(), name) == seen.end();
    };
    if (isMissing("from")) PutPeople("From", {letter.from});
    if (isMissing("to")) PutPeople("To", Recipients(letter, RecipientType::kTo));
    if (isMissing("cc")) PutPeople("Cc", Recipients(letter, RecipientType::kCc));
    if (isMissing("bcc")) PutPeople("Bcc", Recipients(letter, RecipientType::kBcc));
    if (isMissing("subject")) PutField("Subject", intake::HeaderText(letter.subject));
    auto sent = letter.sent ? letter.sent : letter.received ? letter.received : letter.created;
    if (isMissing("date") && sent)
      PutField("Date", intake::InternetDate(DateTime::FromSeconds(*sent), 0));
    if (isMissing("message-id")) PutField("Message-ID", intake::HeaderText(letter.messageId));
    if (isMissing("in-reply-to")) PutField("In-Reply-To", intake::HeaderText(letter.inReplyTo));
    if (isMissing("references")) PutField("References", intake::HeaderText(letter.references));
    if (isMissing("importance")) PutField("Importance", letter.importance);
    if (letter.isDraft) PutField("X-Unsent", "1");
  }

  static std::vector<intake::AddressPair> Recipients(const Letter& letter, int64_t type) {
    std::vector<intake::AddressPair> pairs;
    for (const LetterRecipient& recipient : letter.recipients) {
      if (recipient.type == type) pairs.push_back(recipient.pair);
    }
    return pairs;
  }

  void PutPeople(std::string_view name, const std::vector<intake::AddressPair>& pairs) {
    std::string list;
    for (const intake::AddressPair& pair : pairs) {
      bool isNobody = pair.Name == intake::kNoName && pair.Address == intake::kNoAddress;
      if (isNobody) continue;
      if (!list.empty()) list += ",\r\n\t";
      list += HeaderAddress(pair.Name, pair.Address);
    }
    PutField(name, list);
  }

  // Everything behind the headers: mixed(related(alternative(plain, html), images), attachments),
  // each level only where it is needed.
  void Content(PropertyItem& item, const Letter& letter) {
    std::vector<size_t> shown;
    std::vector<size_t> attached;
    for (size_t i = 0; i < item.Attachments().size(); ++i) {
      (IsShownInHtml(item.Attachments()[i], letter) ? shown : attached).push_back(i);
    }
    if (attached.empty()) return Related(item, letter, shown);
    Multipart mixed(*this, "mixed");
    mixed.Next();
    Related(item, letter, shown);
    for (size_t index : attached) {
      mixed.Next();
      Attachment(item, index, letter, false);
    }
    mixed.End();
  }

  static bool IsShownInHtml(const PropertySet& attachment, const Letter& letter) {
    const std::string& id = attachment.Text(Prop::kAttachContentId);
    bool isMessage = attachment.Number(Prop::kAttachMethod) == AttachMethod::kEmbeddedMessage;
    return !id.empty() && !isMessage && letter.htmlBody.find("cid:" + id) != std::string::npos;
  }

  void Related(PropertyItem& item, const Letter& letter, const std::vector<size_t>& shown) {
    if (shown.empty()) return Bodies(letter);
    Multipart related(*this, "related");
    related.Next();
    Bodies(letter);
    for (size_t index : shown) {
      related.Next();
      Attachment(item, index, letter, true);
    }
    related.End();
  }

  void Bodies(const Letter& letter) {
    if (letter.htmlBody.empty()) return Text("plain", letter.plainBody);
    if (letter.plainBody.empty()) return Text("html", letter.htmlBody);
    Multipart alternative(*this, "alternative");
    alternative.Next();
    Text("plain", letter.plainBody);
    alternative.Next();
    Text("html", letter.htmlBody);
    alternative.End();
  }

  void Text(std::string_view kind, std::string_view text) {
    EncodedBody body = EncodeBody(text);
    Put("Content-Type: text/" + std::string(kind) +
        "; charset=\"utf-8\"\r\nContent-Transfer-Encoding: " + body.encoding + "\r\n\r\n");
    Put(body.text);
  }

  void Attachment(PropertyItem& item, size_t index, const Letter& letter, bool inlined) {
    const PropertySet& attachment = item.Attachments()[index];
    std::string name = AttachmentName(attachment);
    bool headersOut = false;
    try {
      if (attachment.Number(Prop::kAttachMethod) == AttachMethod::kEmbeddedMessage) {
        Embedded(item, index, name);
      } else {
        Data(item, index, name, inlined, headersOut);
      }
    } catch (const Error& error) {
      if (failed_) throw;
      core::WriteLog("Attachment lost: " + core::LoggedMailText(name) + " of \"" +
                     core::LoggedMailText(letter.subject) +
                     "\": " + core::OneLogLine(error.Description()));
      ++result.attachmentsLost;
      if (!headersOut) Text("plain", "The attachment \"" + name + "\" could not be read.");
    }
  }

  void Embedded(PropertyItem& item, size_t index, const std::string& name) {
    if (++embedded_ > kMaxEmbeddedMessages) {
      throw Error(ErrorNumber::kSubscript, "Too many messages are embedded");
    }
    // Read before anything is written of it, so that a note can still take its place.
    std::unique_ptr<PropertyItem> inner = item.EmbeddedItem(index);
    Letter letter = ReadLetter(*inner);
    // Its name is a subject; what is saved of it is Internet text.
    std::string file = name + ".eml";
    Put("Content-Type: message/rfc822" + intake::HeaderParameter("name", file) +
        "\r\nContent-Disposition: attachment" + intake::HeaderParameter("filename", file) +
        "\r\n\r\n");
    Message(*inner, letter);
  }

  void Data(PropertyItem& item, size_t index, const std::string& name, bool inlined,
            bool& headersOut) {
    const PropertySet& attachment = item.Attachments()[index];
    std::string type = attachment.Text(Prop::kAttachMimeType);
    if (!HasType(type) || core::BeginsWith(platform::AsciiLower(type), "multipart/")) {
      type = kDefaultType;
    }
    std::string headers = "Content-Type: " + type + intake::HeaderParameter("name", name) +
                          "\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: " +
                          (inlined ? "inline" : "attachment") +
                          intake::HeaderParameter("filename", name) + "\r\n";
    const std::string& id = attachment.Text(Prop::kAttachContentId);
    if (!id.empty()) headers += "Content-ID: <" + intake::HeaderText(id) + ">\r\n";
    headers += "\r\n";
    Base64Lines lines;
    item.ReadAttachment(index, [&](std::string_view piece) {
      if (!headersOut) Put(headers);
      headersOut = true;
      Put(lines.Add(piece));
    });
    if (!headersOut) Put(headers);
    headersOut = true;
    Put(lines.End());
  }

  // The one attachment is the letter's whole content.
  void Secured(PropertyItem& item, const Letter& letter) {
    if (IsSignedClass(letter)) {
      Put("MIME-Version: 1.0\r\n");
      bool begun = false;
      item.ReadAttachment(0, [&](std::string_view piece) {
        // It begins with headers of its own, or else the letter's still tell its type.
        if (!begun && !core::ContainsIgnoringCase(piece.substr(0, kHeaderReach), "content-type:")) {
          for (const HeaderField& field : ReadTransportHeaders(letter.transportHeaders)) {
            if (field.lowerName == "content-type") Put(field.text);
          }
          Put("\r\n");
        }
        begun = true;
        Put(piece);
      });
      return;
    }
    std::string type = "application/pkcs7-mime" + intake::HeaderParameter("name", "smime.p7m");
    for (const HeaderField& field : ReadTransportHeaders(letter.transportHeaders)) {
      if (field.lowerName == "content-type" &&
          core::ContainsIgnoringCase(field.text, "pkcs7-mime")) {
        type = field.Value();
      }
    }
    Put("MIME-Version: 1.0\r\nContent-Type: " + type +
        "\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment" +
        intake::HeaderParameter("filename", "smime.p7m") + "\r\n\r\n");
    Base64Lines lines;
    item.ReadAttachment(0, [&](std::string_view piece) { Put(lines.Add(piece)); });
    Put(lines.End());
  }

  uint64_t& budget_;
  const std::function<void(std::string_view)>& sink_;
  bool failed_ = false;  // what was thrown is no matter of one attachment
  int parts_ = 0;
  int embedded_ = 0;
};

}  // namespace

bool IsSecured(const Letter& letter, PropertyItem& item) {
  if (!core::ContainsIgnoringCase(letter.messageClass, "IPM.Note.SMIME")) return false;
  if (item.Attachments().size() != 1) return false;
  const PropertySet& attachment = item.Attachments()[0];
  if (attachment.Number(Prop::kAttachMethod) != AttachMethod::kByValue) return false;
  std::string type = platform::AsciiLower(attachment.Text(Prop::kAttachMimeType));
  std::string name = platform::AsciiLower(AttachmentName(attachment));
  if (IsSignedClass(letter)) return type.empty() || type == "multipart/signed";
  return type.find("pkcs7") != std::string::npos || core::ContainsIgnoringCase(name, ".p7m");
}

MimeResult WriteMime(PropertyItem& item, const Letter& letter, uint64_t& budget,
                     const std::function<void(std::string_view)>& sink) {
  Writer writer(budget, sink);
  writer.Message(item, letter);
  return writer.result;
}

}  // namespace tarnwick::outlook
