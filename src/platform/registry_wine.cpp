// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// HKEY_CURRENT_USER from a Wine prefix. user.reg is a text:
//
//   file   = *( key | value | comment )           one a line; a line may end with "\" and go on
//   key    = "[" path "]" [ blank time ]          "\\" between names
//   value  = ( "@" | string ) "=" data
//   data   = string                               text
//          | "str(" type ")" ":" string           text of another type, 2 is the expandable one
//          | "dword" ":" 8 hexadecimal digits
//          | "hex" [ "(" type ")" ] ":" bytes     two digits each, commas between
//   string = quotation marks around characters; \\ \" \n \r \t \0, \x and up to four hexadecimal
//            digits (one UTF-16 unit), or a backslash and up to three octal digits
//
// Lines that are none of these (";", "#", damage) are passed over.
#include <charconv>

#include "platform/charset.h"
#include "platform/environment.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/registry_tree.h"

namespace tarnwick::platform {

namespace {

constexpr uint64_t kMaxRegistryText = 256ULL << 20;

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Adds a character as two UTF-16 units' worth of bytes where it needs them.
void AppendUnit(std::string& utf16, uint32_t unit) {
  utf16 += static_cast<char>(unit & 0xFF);
  utf16 += static_cast<char>((unit >> 8) & 0xFF);
}

// Undoes the escapes of text up to terminator and leaves text behind it; nullopt when the
// terminator is missing. Escaped units may be halves of a pair, so runs of them are joined first.
std::optional<std::string> TakeEscaped(std::string_view& text, char terminator) {
  std::string result;
  std::string units;
  auto flush = [&] {
    if (!units.empty()) result += Utf16ToUtf8(units);
    units.clear();
  };
  auto append = [&](uint32_t unit) {
    AppendUnit(units, unit);
    if (unit != 0) return;
    flush();  // which ends at a zero; whether the text does is for its type to say
    result += '\0';
  };
  for (size_t i = 0; i < text.size();) {
    char c = text[i];
    if (c == terminator) {
      flush();
      text.remove_prefix(i + 1);
      return result;
    }
    ++i;
    if (c != '\\' || i == text.size()) {
      flush();
      result += c;
      continue;
    }
    char escape = text[i++];
    if (escape == 'x') {
      uint32_t unit = 0;
      for (int digits = 0; digits < 4 && i < text.size() && HexDigit(text[i]) >= 0; ++digits) {
        unit = unit * 16 + static_cast<uint32_t>(HexDigit(text[i++]));
      }
      append(unit);
      continue;
    }
    if (escape >= '0' && escape <= '7') {
      auto unit = static_cast<uint32_t>(escape - '0');
      for (int digits = 1; digits < 3 && i < text.size() && text[i] >= '0' && text[i] <= '7';
           ++digits) {
        unit = unit * 8 + static_cast<uint32_t>(text[i++] - '0');
      }
      append(unit);
      continue;
    }
    flush();
    constexpr std::string_view kLetters = "nrtabfve";
    constexpr std::string_view kMeanings = "\n\r\t\a\b\f\v\x1B";
    size_t letter = kLetters.find(escape);
    result += letter == std::string_view::npos ? escape : kMeanings[letter];
  }
  return std::nullopt;
}

std::string TakeBytes(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i + 1 < text.size(); ++i) {
    int high = HexDigit(text[i]);
    int low = HexDigit(text[i + 1]);
    if (high < 0 || low < 0) continue;
    bytes += static_cast<char>(high * 16 + low);
    ++i;
  }
  return bytes;
}

// A text up to its terminating zero.
std::string UpToZero(std::string text) {
  size_t zero = text.find('\0');
  if (zero != std::string::npos) text.resize(zero);
  return text;
}

RegistryValue TextOfType(uint32_t type, std::string text) {
  RegistryValue value;
  value.type = type == 1   ? RegistryValue::Type::kText
               : type == 2 ? RegistryValue::Type::kExpandableText
                           : RegistryValue::Type::kOther;
  value.text = value.type == RegistryValue::Type::kOther ? std::move(text) : UpToZero(text);
  return value;
}

// "(2)" in front of a colon; without it the type that the word stands for.
uint32_t TakeType(std::string_view& text, uint32_t type) {
  if (text.starts_with('(')) {
    size_t end = text.find(')');
    if (end == std::string_view::npos) return type;
    std::from_chars(text.data() + 1, text.data() + end, type, 16);
    text.remove_prefix(end + 1);
  }
  if (text.starts_with(':')) text.remove_prefix(1);
  return type;
}

std::optional<RegistryValue> ParseData(std::string_view text) {
  RegistryValue value;
  if (text.starts_with('"')) {
    text.remove_prefix(1);
    auto string = TakeEscaped(text, '"');
    if (!string) return std::nullopt;
    return TextOfType(1, *string);
  }
  if (text.starts_with("str")) {
    text.remove_prefix(3);
    uint32_t type = TakeType(text, 1);
    if (!text.starts_with('"')) return std::nullopt;
    text.remove_prefix(1);
    auto string = TakeEscaped(text, '"');
    if (!string) return std::nullopt;
    return TextOfType(type, *string);
  }
  if (text.starts_with("dword:")) {
    text.remove_prefix(6);
    value.type = RegistryValue::Type::kNumber;
    std::from_chars(text.data(), text.data() + text.size(), value.number, 16);
    return value;
  }
  if (text.starts_with("hex")) {
    text.remove_prefix(3);
    uint32_t type = TakeType(text, 3);
    std::string bytes = TakeBytes(text);
    if (type == 1 || type == 2) return TextOfType(type, Utf16ToUtf8(bytes));
    value.type = type == 3 ? RegistryValue::Type::kBinary : RegistryValue::Type::kOther;
    value.text = std::move(bytes);
    return value;
  }
  return std::nullopt;
}

class WineKeys : public RegistryTree {
 public:
  explicit WineKeys(const std::string& registryFile) {
    if (InputFile(registryFile).Size() > kMaxRegistryText) {
      throw Error(ErrorNumber::kPathAccess, "The registry file is damaged: " + registryFile);
    }
    AddKey("");
    LineReader lines(registryFile);
    std::string line;
    std::string key;
    while (lines.Next(line)) {
      if (line.starts_with('[')) {
        std::string_view rest = std::string_view(line).substr(1);
        key = TakeEscaped(rest, ']').value_or("");
        if (!key.empty()) AddKey(key);
      } else if (!key.empty() && (line.starts_with('"') || line.starts_with('@'))) {
        std::string more;
        while (line.ends_with('\\') && lines.Next(more)) {
          line.pop_back();
          line += more;
        }
        TakeValue(key, line);
      }
    }
  }

 private:
  void TakeValue(const std::string& key, std::string_view line) {
    std::optional<std::string> name = std::string();
    bool isDefault = line.front() == '@';
    line.remove_prefix(1);
    if (!isDefault) name = TakeEscaped(line, '"');
    if (!name || !line.starts_with('=')) return;
    line.remove_prefix(1);
    if (auto value = ParseData(line)) AddValue(key, *name, std::move(*value));
  }
};

class WineRegistry : public FileRegistry {
 public:
  using FileRegistry::FileRegistry;

  std::string Expand(std::string_view text) override {
    std::string known =
        ExpandNames(text, [this](const std::string& name) { return StoredVariable(name); });
    return ExpandNames(known, [this](const std::string& name) { return Variable(name); });
  }

  std::string MapPath(std::string_view windowsPath) override {
    std::string expanded = Expand(windowsPath);
    char drive = DriveLetterOf(expanded);
    std::string rest = TurnSeparators(drive == '\0' ? expanded : expanded.substr(2));
    bool isFolder = rest.ends_with(kSeparator);
    std::optional<std::string> found;
    if (drive == 'C' || drive == '\0') found = FindIgnoringCase(Folder() + "drive_c/", rest);
    if (!found && drive != '\0') {
      std::string device = AsciiLower(std::string(1, drive)) + ":";
      found = FindIgnoringCase(Folder() + "dosdevices/" + device, rest);
    }
    if (found) return isFolder ? WithSeparator(*found) : *found;
    // A user.reg that was copied without its drives: from the owner's folder on.
    return FindTail(Folder(), expanded).value_or(TurnSeparators(expanded));
  }

 private:
  std::optional<std::string> Variable(const std::string& name) {
    std::string owner = Owner();
    if (owner.empty()) return std::nullopt;
    return OwnerVariable(name, owner, "\\users\\" + owner);
  }

  // The one user of the prefix; of several the one that is logged on here.
  std::string Owner() {
    std::vector<std::string> owners = ListFolders(Folder() + "drive_c/users/");
    std::erase_if(owners, [](const std::string& name) { return AsciiLower(name) == "public"; });
    for (const std::string& name : owners) {
      if (AsciiLower(name) == AsciiLower(LogonName())) return name;
    }
    return owners.empty() ? std::string() : owners.front();
  }
};

}  // namespace

std::unique_ptr<RegistryKeys> ReadWineRegistry(const std::string& file) {
  return std::make_unique<WineKeys>(file);
}

std::unique_ptr<Registry> OpenWinePrefix(const std::string& folder,
                                         std::unique_ptr<RegistryKeys> keys) {
  return std::make_unique<WineRegistry>(folder, std::move(keys));
}

}  // namespace tarnwick::platform
