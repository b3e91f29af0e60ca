// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-worn-store make KIND MESSAGES DIR writes a worn store of a kind as DIR/Inbox.dbx.
// tarnwick-worn-store judge KIND MESSAGES DIR tells of the *.eml files below DIR, which were
// recovered from that store: how many of its intact messages are among them, how many of the files
// are whole messages, beginnings of messages, and neither.
#include <charconv>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>

#include "platform/files.h"
#include "samples/worn_store.h"

namespace {

namespace fs = std::filesystem;
using tarnwick::samples::WornStore;
using Freeing = WornStore::Freeing;

void Wear(WornStore& store, const std::string& kind) {
  int number = 0;
  size_t digits = kind.find_first_of("0123456789");
  if (digits != std::string::npos) {
    std::from_chars(kind.data() + digits, kind.data() + kind.size(), number);
  }
  if (kind.starts_with("deleted")) {
    store.DeleteEvery(kind == "deleted-half" ? 2 : 1, Freeing::kFreed);
  }
  if (kind == "deleted-reused") store.Reuse(static_cast<int>(store.Texts().size() / 4), true, true);
  store.Finish();
  if (kind.starts_with("overwritten")) store.Overwrite(number);
  if (kind.starts_with("cut")) store.Cut(number);
  if (kind == "headless") store.ZeroHead();
  if (kind == "piece") store.TakePiece(30, 100);
}

int Judge(const WornStore& store, const std::string& folder) {
  std::set<std::string> recovered;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".eml") continue;
    recovered.insert(tarnwick::platform::ReadFile(entry.path().string()));
  }
  std::vector<std::string> intact = store.Intact();
  size_t found = 0;
  for (const std::string& text : intact) found += recovered.count(text);
  auto verdict =
      tarnwick::samples::Judge({recovered.begin(), recovered.end()}, store.Texts(), "????");
  std::cout << intact.size() << " " << found << " " << verdict.whole << " " << verdict.parts << " "
            << verdict.wrong << std::endl;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: tarnwick-worn-store make|judge KIND MESSAGES DIR\n";
    return 2;
  }
  WornStore store(std::stoi(argv[3]), 1);
  Wear(store, argv[2]);
  if (argv[1] == std::string("judge")) return Judge(store, argv[4]);
  tarnwick::platform::MakeFolder(argv[4]);
  tarnwick::platform::WriteFile(argv[4] + std::string("/Inbox.dbx"), store.Bytes());
  return 0;
}
