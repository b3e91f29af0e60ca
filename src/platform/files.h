// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Files and folders. Paths are UTF-8, whatever the system keeps them in; a folder text ends with
// the separator, so that folder + name is a path. On Windows "/" separates names, too, and a path
// may have any length. Everything created here is for its owner only (files 0600, folders 0700;
// there an access list of the owner and the system itself). Unless said otherwise a failure throws
// Error with a number of its kind (53 not found, 61 disk full, 70 permission denied, 75 anything
// else) and the path in the description.
//
// Every operation passes a seam (SetFileFault) where tests let it fail.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/date_time.h"

namespace tarnwick::platform {

// What the system writes between the names of a path, and at the end of a program's name.
extern const char kSeparator;
extern const std::string_view kProgramEnding;

// The folder text with exactly one separator at its end; "" stays "".
std::string WithSeparator(std::string folder);
// The last component of a path.
std::string FileNameOf(const std::string& path);
// The folder text of a path, with its separator; "" when the path has none.
std::string FolderOf(const std::string& path);
// The file of the running program.
std::string ProgramPath();
// An absolute form of the path, with "." and ".." resolved as text.
std::string AbsolutePath(const std::string& path);
// The path for code that is not ours and takes UTF-8: in the form in which the system takes it
// whatever its length and names.
std::string SystemPath(const std::string& path);

bool FileExists(const std::string& path);    // a regular file (links followed); never throws
bool FolderExists(const std::string& path);  // never throws
// Whether the system lets this user read the file or folder; true for one that is missing. Never
// throws.
bool MayRead(const std::string& path);
bool IsFolderWritable(const std::string& folder);  // tried by making a file; never throws
uint64_t FileSize(const std::string& path);
DateTime FileModified(const std::string& path);  // local civil time
// The bytes available to this user in the folder, or where it would be made if it is missing.
uint64_t FreeSpace(const std::string& folder);
// Whether the system's own number for a failure says that a disk, a person's share of it or a file
// can grow no more.
bool IsOutOfRoom(int systemError);
// Throws Error 61 when the folder has less room than that.
void RequireSpace(const std::string& folder, uint64_t bytes);

void MakeFolder(const std::string& folder);  // with its parents; an existing one is left as it is
void RemoveFile(const std::string& path);    // a missing file is no error
bool TryToRemove(const std::string& path);   // false when that fails; passes no seam
// Replaces; flushed to disk. Made by the file system's cheapest means: blocks are shared where it
// can, else copied within the kernel, else read and written. goOn is asked between pieces; its
// false ends the copy with what is there, and the result is false.
bool CopyFile(const std::string& from, const std::string& to,
              const std::function<bool()>& goOn = {});
void RenameFile(const std::string& from, const std::string& to);  // replaces
// Gives a file a name that nothing has yet; false, and the file as it was, when something has it.
bool RenameNew(const std::string& from, const std::string& to);
// Cuts a file to its first bytes.
void CutFile(const std::string& path, uint64_t size);
// Sets the time that FileModified gives; false where the file system can't hold it.
bool SetFileModified(const std::string& path, DateTime local);

// A second name for a file, made at no cost; false where that is not possible.
bool LinkFile(const std::string& from, const std::string& to);

// Has the system begin to write a file to disk, so that a later FlushToDisk finds less to do. Of
// gigabytes that takes its time, too: look is called between pieces.
void BeginFlush(const std::string& path, const std::function<void()>& look = {});
// Makes durable what was written to a file, or the names in a folder.
void FlushToDisk(const std::string& path);
// True when both names lead to one file or folder, by whatever way; never throws.
bool IsSameFile(const std::string& a, const std::string& b);

// Names (not paths) of the plain files in a folder, sorted by name without regard to ASCII case; a
// folder that is missing or can't be read gives none. With an extension such as ".dbx" only the
// files that end with it, without regard to case.
std::vector<std::string> ListFiles(const std::string& folder, std::string_view extension = {});
// Names of the folders in a folder, sorted likewise; links are not followed.
std::vector<std::string> ListFolders(const std::string& folder);

// Finds folder + relative ("a/b/c.dbx"), each component compared exactly first and then without
// regard to case, as a Windows file system would. A ".." component finds nothing.
std::optional<std::string> FindIgnoringCase(const std::string& folder, std::string_view relative);

// A name from a message or a person made fit to be a file's name anywhere: no separators, control
// or reserved characters, no leading dot, no trailing dot or blank, at most maxChars characters
// (the extension is kept), "_" for each character that is replaced. A device name, and a name that
// begins with "-" as an option does, get a "_" in front. May be empty when nothing is left. The
// text need not be valid UTF-8.
std::string SafeFileName(std::string_view name, size_t maxChars = 100);
// folder + name, or folder + "name (2).ext" and so on: a path that nothing has yet. The number is
// searched by halves, so that the ten thousandth file of a name costs a dozen looks; where some
// were removed it need not be the lowest free one.
std::string UniquePath(const std::string& folder, const std::string& name);

// The whole file; throws Error 75 when it is larger than limit.
std::string ReadFile(const std::string& path, uint64_t limit = UINT64_MAX);
// Replaces the file.
void WriteFile(const std::string& path, std::string_view bytes);

// In a helper program, but on Windows, the number of the open file that it was handed.
inline constexpr int kHandedFile = 3;
// There, the name by which that file is opened, as often as one likes; no path is called so.
inline const std::string kHandedName("\0handed", 7);

// A file opened for reading at places.
class InputFile {
 public:
  explicit InputFile(const std::string& path);
  // The file that this helper program was handed (child_process.h); it stays open.
  static InputFile Handed();
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  uint64_t Size() const { return size_; }  // when it was opened
  // Reads up to count bytes at offset; fewer only at the end of the file. Returns the number read.
  size_t ReadAt(uint64_t offset, void* buffer, size_t count);
  int Descriptor() const { return handle_; }

 private:
  InputFile(int handle, std::string path, bool isOurs);
  std::string path_;
  int handle_ = -1;
  bool isOurs_ = true;  // to close
  uint64_t size_ = 0;
};

// A file opened for writing from its beginning; an older file of the name is replaced.
class OutputFile {
 public:
  // kInPlace writes over an older file and cuts it to its new length at the end, which costs a file
  // that is written anew for every message far less than making it each time.
  enum class Replace { kAnew, kInPlace };
  explicit OutputFile(const std::string& path, Replace replace = Replace::kAnew);
  ~OutputFile();  // closes; a failure to write what was buffered is lost, so call Close
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(std::string_view bytes);
  // The file begins with what was written, and what comes next is written over it. Behind it the
  // end of something longer may stand until Close, which cuts it off. REQUIRES: kInPlace.
  void Complete();
  void Close();

 private:
  void Flush();
  bool CutToWritten();
  std::string path_;
  int handle_ = -1;
  bool inPlace_ = false;
  uint64_t written_ = 0;
  std::optional<uint64_t> length_;  // in place: of the file, once it is known
  std::string buffer_;
};

// Adds to the end of a file, which is made when it is missing; false when that fails. It passes no
// seam: what tests make fail must still be logged.
bool AppendToFile(const std::string& path, std::string_view bytes);
// The same over and over, the file open in between.
class AppendedFile {
 public:
  explicit AppendedFile(const std::string& path);
  ~AppendedFile();
  AppendedFile(const AppendedFile&) = delete;
  AppendedFile& operator=(const AppendedFile&) = delete;

  const std::string& Path() const { return path_; }
  bool Append(std::string_view bytes);

 private:
  std::string path_;
  int handle_ = -1;
};

// Reads a file, or bytes in memory, line by line, whether CR LF or LF ends the lines; the last line
// may lack its end. A CR alone is an ordinary character. Bytes are handed through untouched, NULs
// included; a line has no length limit but the file's.
class LineReader {
 public:
  explicit LineReader(const std::string& path);
  // The bytes outlive the reader.
  static LineReader OfBytes(std::string_view bytes) { return {bytes, Held()}; }
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  // Reads the next line without its end; false at the end of the file (line is then empty).
  bool Next(std::string& line);
  // True when no further line can be read.
  bool AtEnd();

 private:
  struct Held {};
  LineReader(std::string_view bytes, Held /*inMemory*/) : text_(bytes) {}
  bool Fill();
  std::unique_ptr<InputFile> file_;  // none: text_ is all there is
  uint64_t offset_ = 0;
  std::string buffer_;     // of the file; text_ is what is left of it
  std::string_view text_;  // not read yet
};

enum class FileOperation { kOpen, kRead, kWrite, kRemove, kRename, kCopy, kLink, kMakeFolder };
// Called before each operation; a test's hook throws to make it fail. nullptr takes it out.
using FileFault = std::function<void(FileOperation, const std::string& path)>;
void SetFileFault(FileFault fault);
// What FreeSpace answers, for tests; nullopt takes it out.
void SetFreeSpaceOverride(std::optional<uint64_t> bytes);

}  // namespace tarnwick::platform
