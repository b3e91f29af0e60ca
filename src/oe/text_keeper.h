// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Takes in the text of a message: held while it is short; a longer one goes to the sink, from its
// beginning on. Without a sink all of it is held.
#pragma once

#include <string_view>

#include "intake/raw_message.h"
#include "oe/store_walk.h"

namespace tarnwick::oe {

class TextKeeper {
 public:
  TextKeeper(TextReading& text, const StoreWalk::ByteSink& longText)
      : text_(text), longText_(longText) {
    text_.held.emplace();
  }

  void Add(std::string_view piece) {
    text_.size += piece.size();
    if (text_.held && text_.size > intake::kMostHeld && longText_) {
      longText_(*text_.held);
      text_.held.reset();
    }
    if (text_.held) {
      *text_.held += piece;
    } else {
      longText_(piece);
    }
  }

 private:
  TextReading& text_;
  const StoreWalk::ByteSink& longText_;
};

}  // namespace tarnwick::oe
