// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the conversion of HTML to text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/charset.h"
#include "platform/html.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tarnwick;
  std::string html = platform::EnsureUtf8({reinterpret_cast<const char*>(data), size});
  if (!platform::IsValidUtf8(platform::HtmlToPlainText(html))) std::abort();
  if (!platform::IsValidUtf8(platform::HtmlToPlainText("<body>" + html))) std::abort();
  return 0;
}
