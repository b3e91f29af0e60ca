// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "cli/command_line.h"

#include <algorithm>
#include <charconv>

namespace tarnwick::app {

Arguments::Arguments(const std::vector<std::string>& words, const std::set<std::string>& withValue,
                     const std::set<std::string>& flags) {
  bool onlyOperands = false;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (onlyOperands || word.size() < 2 || word[0] != '-') {
      operands_.push_back(word);
      continue;
    }
    if (word == "--") {
      onlyOperands = true;
      continue;
    }
    size_t equals = word.find('=');
    std::string name = word.substr(0, equals);
    if (flags.count(word) != 0) {
      flags_.insert(word);
    } else if (withValue.count(name) == 0) {
      throw UsageError("unknown option " + word);
    } else if (equals != std::string::npos) {
      values_[name] = word.substr(equals + 1);
    } else if (i + 1 < words.size()) {
      values_[name] = words[++i];
    } else {
      throw UsageError("option " + name + " wants a value");
    }
  }
}

std::optional<std::string> Arguments::Value(const std::string& option) const {
  auto found = values_.find(option);
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

std::string Arguments::OneOf(const std::string& option,
                             const std::vector<std::string>& words) const {
  auto value = Value(option);
  if (!value) return words.front();
  if (std::find(words.begin(), words.end(), *value) != words.end()) return *value;
  std::string message = "option " + option + " is one of";
  for (const std::string& word : words) message += " " + word;
  throw UsageError(message);
}

std::optional<int64_t> Arguments::Number(const std::string& option) const {
  auto value = Value(option);
  if (!value) return std::nullopt;
  return ParseNumber(*value, option);
}

const std::string& Arguments::OnlyOperand(const std::string& what) const {
  if (operands_.size() != 1) throw UsageError("exactly one " + what + " is wanted");
  return operands_.front();
}

int64_t ParseNumber(const std::string& text, const std::string& what) {
  int64_t number = 0;
  auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (code != std::errc() || end != text.data() + text.size() || number < 0) {
    throw UsageError(what + " is no number: " + text);
  }
  return number;
}

}  // namespace tarnwick::app
