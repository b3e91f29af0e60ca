// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A letter's HTML made fit to be rendered: a new document of a few harmless elements, written from
// what the parser found. Nothing in it runs, asks for anything from anywhere, opens a file or takes
// input. What is left out: scripts, style sheets, frames, forms, objects, colours and sizes that
// could hide words, and every address but those of links and of the letter's own pictures.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnwick::reading {

struct CleanedHtml {
  std::string html;
  size_t remotePictures = 0;   // that were left out
  size_t misleadingLinks = 0;  // whose text names another place than they lead to; it is said there
  bool isCut = false;          // there was more than can be laid out in a moment
};

// Pictures of the letter itself stay as <img src="cid:...">. Size and nesting of the result are
// bounded, so that laying it out takes a moment whatever the letter holds.
//
// REQUIRES: html is valid UTF-8.
CleanedHtml CleanHtml(std::string_view html);

// Where a link leads, as a person is to read it before it is opened: the server for the web, the
// address for mail. "" for an address that is neither, which no link keeps.
std::string PlaceOf(std::string_view target);

}  // namespace tarnwick::reading
