// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/faulty_disk.h"

#include <sqlite3.h>

#include <cstddef>
#include <stdexcept>

#include "platform/clock.h"
#include "repository/repository.h"
#include "support/machine.h"

namespace tarnwick::testing {

namespace {

constexpr char kName[] = "tarnwick-faulty";

struct Plan {
  bool isOn = false;
  DiskFault fault = DiskFault::kFull;
  int64_t at = 0;
  bool forever = false;
  int64_t calls = 0;
  bool happened = false;
};

Plan& CurrentPlan() {
  static Plan plan;
  return plan;
}

sqlite3_vfs* system_ = nullptr;

// Ours in front, the system's file behind it.
struct File {
  sqlite3_file base;
  sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* Real(sqlite3_file* file) {
  return reinterpret_cast<File*>(file)->Real();
}

// Counts a call of this kind and tells whether it fails.
bool Fails(DiskFault kind) {
  Plan& plan = CurrentPlan();
  if (!plan.isOn || plan.fault != kind) return false;
  int64_t call = plan.calls++;
  if (call != plan.at && !(plan.forever && call > plan.at)) return false;
  plan.happened = true;
  return true;
}

int Read(sqlite3_file* file, void* buffer, int count, sqlite3_int64 offset) {
  if (Fails(DiskFault::kRead)) return SQLITE_IOERR_READ;
  return Real(file)->pMethods->xRead(Real(file), buffer, count, offset);
}

bool MakesLonger(sqlite3_file* file, sqlite3_int64 end) {
  sqlite3_int64 size = 0;
  return Real(file)->pMethods->xFileSize(Real(file), &size) == SQLITE_OK && end > size;
}

int Write(sqlite3_file* file, const void* buffer, int count, sqlite3_int64 offset) {
  auto half = [&] { return Real(file)->pMethods->xWrite(Real(file), buffer, count / 2, offset); };
  if (Fails(DiskFault::kFull)) return SQLITE_FULL;
  if (MakesLonger(file, offset + count) && Fails(DiskFault::kNoRoom)) return SQLITE_FULL;
  if (Fails(DiskFault::kShortWrite)) {
    half();
    return SQLITE_IOERR_WRITE;
  }
  if (Fails(DiskFault::kKill)) {
    half();
    KillThisProcess();
  }
  return Real(file)->pMethods->xWrite(Real(file), buffer, count, offset);
}

// What the process wrote is with the system and outlives it; waiting for the metal shows nothing.
int Sync(sqlite3_file*, int) {
  if (Fails(DiskFault::kSync)) return SQLITE_IOERR_FSYNC;
  return SQLITE_OK;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  if (Fails(DiskFault::kShortWrite)) return SQLITE_IOERR_TRUNCATE;
  return Real(file)->pMethods->xTruncate(Real(file), size);
}
// What is passed on as it comes.
template <auto kMethod, typename Result, typename... Arguments>
Result Pass(sqlite3_file* file, Arguments... arguments) {
  return (Real(file)->pMethods->*kMethod)(Real(file), arguments...);
}

using Io = sqlite3_io_methods;
constexpr sqlite3_io_methods kMethods = {2,
                                         Pass<&Io::xClose>,
                                         Read,
                                         Write,
                                         Truncate,
                                         Sync,
                                         Pass<&Io::xFileSize>,
                                         Pass<&Io::xLock>,
                                         Pass<&Io::xUnlock>,
                                         Pass<&Io::xCheckReservedLock>,
                                         Pass<&Io::xFileControl>,
                                         Pass<&Io::xSectorSize>,
                                         Pass<&Io::xDeviceCharacteristics>,
                                         Pass<&Io::xShmMap>,
                                         Pass<&Io::xShmLock>,
                                         Pass<&Io::xShmBarrier>,
                                         Pass<&Io::xShmUnmap>,
                                         nullptr,
                                         nullptr};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  file->pMethods = nullptr;
  sqlite3_file* real = Real(file);
  int code = system_->xOpen(system_, name, real, flags, outFlags);
  if (real->pMethods != nullptr) file->pMethods = &kMethods;
  return code;
}

}  // namespace

void FaultyDisk::Install() {
  if (system_ != nullptr) return;
  sqlite3_initialize();
  sqlite3_vfs* system = sqlite3_vfs_find("unix");
  if (system == nullptr) system = sqlite3_vfs_find("win32");
  if (system == nullptr) throw std::runtime_error("no file system of the engine");
  static sqlite3_vfs faulty = *system;
  faulty.pNext = nullptr;
  faulty.zName = kName;
  faulty.szOsFile = static_cast<int>(sizeof(File)) + system->szOsFile;
  faulty.xOpen = Open;
  // Everything but files is the system's own, which looks for itself in what it is called with.
  system_ = system;
  if (sqlite3_vfs_register(&faulty, 0) != SQLITE_OK ||
      sqlite3mc_vfs_create(kName, 1) != SQLITE_OK) {
    throw std::runtime_error("the engine refused the faulty disk");
  }
}

FaultyDisk::FaultyDisk(DiskFault fault, int64_t at, bool forever) {
  CurrentPlan() = {true, fault, at, forever, 0, false};
}

FaultyDisk::~FaultyDisk() {
  CurrentPlan() = {};
}

bool FaultyDisk::Happened() const {
  return CurrentPlan().happened;
}

int64_t FaultyDisk::Calls() const {
  return CurrentPlan().calls;
}

void StartOnFaultyDisk() {
  repository::DisconnectRepository();  // opened before the disk was there
  FaultyDisk::Install();
  platform::ClockOverride clock;
  clock.now = DateTime::FromDate(2020, 6, 15).WithTime(12, 0, 0);
  clock.zoneBiasMinutes = -180;
  clock.logonName = "ann";
  clock.tickStep = 40;
  platform::SetClockOverride(clock);
  if (!repository::OpenRepository(false)) throw std::runtime_error("no repository");
}

}  // namespace tarnwick::testing
