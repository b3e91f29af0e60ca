// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the sources behind files.h ask of the system; each system has a file of its own
// (system_files_posix.cpp, system_files_windows.cpp), which also holds those routines of files.h
// that differ as a whole. Nothing here passes the seam of the tests. Unless said otherwise a
// failure is -1 or false, with the reason in errno. Private to the platform room.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tarnwick::platform::system {

// All that may stand between the names of a path.
extern const std::string_view kSeparators;

// Whether a value of errno tells that a disk, or a person's share of it, is full.
bool MeansFull(int code);

// An open file. kWriteInPlace keeps what the file holds, kWriteAnew cuts it to nothing; both, and
// kAppend, make a missing one. Others may read, rename and remove it meanwhile.
enum class Use { kRead, kWriteInPlace, kWriteAnew, kAppend };
int Open(const std::string& path, Use use);
int Close(int handle);
std::FILE* OpenStream(const std::string& path);  // to be read; nullptr where that fails
int HandedFile();                                // what InputFile::Handed() gives
int64_t SizeOf(int handle);                      // -1 also for whatever is no plain file
int64_t ReadAt(int handle, uint64_t offset, void* buffer, size_t count);  // 0 at the end
int64_t Write(int handle, const void* bytes, size_t count);
bool Rewind(int handle);  // the next Write is at its beginning
bool Cut(int handle, uint64_t size);

// Ways of copying without reading, from where both files stand. False and nullopt where the file
// system has no such way; CopyPiece gives -1 where it failed.
bool ShareBlocks(int from, int to);
std::optional<int64_t> CopyPiece(int from, int to, size_t count);

enum class Kind { kNone, kFile, kFolder, kLink, kOther };
Kind KindOf(const std::string& path);        // links not followed; kNone where nothing can be found
Kind KindOfTarget(const std::string& path);  // links followed
// The same for both names of one file or folder and different from every other's.
std::optional<std::pair<uint64_t, uint64_t>> IdentityOf(const std::string& path);

// The names in a folder with their kinds, links not followed; false where it can't be listed.
bool ListEntries(const std::string& folder,
                 const std::function<void(const std::string& name, Kind kind)>& take);

// How a folder lists what is there by that name: another spelling where the system takes letters of
// either case for the same. nullopt where nothing is. Links are followed.
std::optional<std::string> ListedName(const std::string& folder, const std::string& name);

bool MayRead(const std::string& path);
std::optional<uint64_t> FreeSpaceIn(const std::string& folder);  // one that is there

bool MakeFolder(const std::string& folder);                      // one level; for its owner only
bool Remove(const std::string& path);                            // a file or an empty folder
bool Rename(const std::string& from, const std::string& to);     // replaces
bool RenameNew(const std::string& from, const std::string& to);  // EEXIST where there is one
bool CutFile(const std::string& path, uint64_t size);            // one that is there
bool Link(const std::string& from, const std::string& to);

}  // namespace tarnwick::platform::system
