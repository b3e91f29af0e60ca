// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Arguments of one tarnwick-cli command: options with and without a value, and the rest. What a
// command does not know, or a value that is missing, throws UsageError.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarnwick::app {

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Arguments {
 public:
  // withValue and flags are the option names that the command knows, "--limit" and the like; an
  // option's value may also be joined to it ("--limit=5"). After "--" everything is an operand.
  Arguments(const std::vector<std::string>& words, const std::set<std::string>& withValue,
            const std::set<std::string>& flags);

  bool Has(const std::string& flag) const { return flags_.count(flag) != 0; }
  std::optional<std::string> Value(const std::string& option) const;
  // The value when it is one of these words; the first word when the option is missing.
  std::string OneOf(const std::string& option, const std::vector<std::string>& words) const;
  // A whole number of at least 0.
  std::optional<int64_t> Number(const std::string& option) const;

  const std::vector<std::string>& Operands() const { return operands_; }
  // The one operand that the command wants, called so in the message.
  const std::string& OnlyOperand(const std::string& what) const;

 private:
  std::map<std::string, std::string> values_;
  std::set<std::string> flags_;
  std::vector<std::string> operands_;
};

// A whole number of at least 0; throws UsageError.
int64_t ParseNumber(const std::string& text, const std::string& what);

}  // namespace tarnwick::app
