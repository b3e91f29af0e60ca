// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-worn-outlook make KIND unicode|ansi|large MESSAGES FILE writes a worn Outlook store of a
// kind. tarnwick-worn-outlook judge DIR tells of the *.eml files below DIR, which were recovered
// from such a store, how many are whole messages, parts of one, and mixed of several.
#include <charconv>
#include <filesystem>
#include <iostream>
#include <map>

#include "platform/files.h"
#include "samples/worn_outlook.h"

namespace {

namespace fs = std::filesystem;
using tarnwick::outlook::reader::Variant;
using tarnwick::samples::WornOutlook;
using tarnwick::samples::WornPart;

// "index-50", "cut-20", "headless", "deleted", "deleted-half", "sound"
void Wear(WornOutlook& store, const std::string& kind) {
  int percent = 0;
  size_t digits = kind.find_first_of("0123456789");
  if (digits != std::string::npos) {
    std::from_chars(kind.data() + digits, kind.data() + kind.size(), percent);
  }
  if (kind.starts_with("deleted")) store.DeleteEvery(kind == "deleted-half" ? 2 : 1);
  store.Finish();
  if (kind.starts_with("index")) store.OverwriteIndex(percent);
  if (kind.starts_with("cut")) store.Cut(percent);
  if (kind == "headless") store.ZeroHead();
}

int Judge(const std::string& folder) {
  std::map<WornPart, int> verdict;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".eml") continue;
    ++verdict[tarnwick::samples::JudgeWorn(tarnwick::platform::ReadFile(entry.path().string()))];
  }
  std::cout << verdict[WornPart::kWhole] << " " << verdict[WornPart::kPart] << " "
            << verdict[WornPart::kMixed] << std::endl;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && argv[1] == std::string("judge")) return Judge(argv[2]);
  if (argc != 6) {
    std::cerr << "usage: tarnwick-worn-outlook make KIND unicode|ansi|large MESSAGES FILE\n"
                 "       tarnwick-worn-outlook judge DIR\n";
    return 2;
  }
  const std::map<std::string, Variant> kVariants = {
      {"unicode", Variant::kUnicode}, {"ansi", Variant::kAnsi}, {"large", Variant::kLargePages}};
  WornOutlook store(kVariants.at(argv[3]), std::stoi(argv[4]));
  Wear(store, argv[2]);
  tarnwick::platform::WriteFile(argv[5], store.Bytes());
  return 0;
}
