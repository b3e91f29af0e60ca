// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The child's standard input is its end of a pipe, its standard output the file that it is handed;
// both are handles, no names. A job ends it with us and lets it start nothing.
#include "platform/child_process.h"

#include <windows.h>

#include <io.h>

#include <algorithm>
#include <atomic>
#include <vector>

#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/owner_only_windows.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

namespace {

constexpr DWORD kPipeSize = 256 * 1024;
constexpr size_t kMostAtOnce = size_t{1} << 20;

struct CloseIt {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseIt>;

Handle Owned(HANDLE handle) {
  return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

struct Ends {
  Handle ours;
  Handle childs;
};

// Nothing but the child's end, which is opened here, can ever be joined to the pipe.
Ends MakeChannel() {
  static std::atomic<unsigned> count = 0;
  std::wstring name = L"\\\\.\\pipe\\tarnwick-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                      std::to_wstring(++count) + L"-" + std::to_wstring(GetTickCount64());
  Ends ends;
  ends.ours = Owned(CreateNamedPipeW(
      name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
      PIPE_TYPE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeSize, kPipeSize, 0,
      OwnerOnly()));
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  if (ends.ours) {
    ends.childs = Owned(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, &inherited,
                                    OPEN_EXISTING, 0, nullptr));
  }
  return ends;
}

Handle MakeJob() {
  Handle job = Owned(CreateJobObjectW(nullptr, nullptr));
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE |
                                            JOB_OBJECT_LIMIT_ACTIVE_PROCESS |
                                            JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
  limits.BasicLimitInformation.ActiveProcessLimit = 1;
  SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
  JOBOBJECT_BASIC_UI_RESTRICTIONS ui{JOB_OBJECT_UILIMIT_ALL};
  SetInformationJobObject(job.get(), JobObjectBasicUIRestrictions, &ui, sizeof ui);
  return job;
}

// A list of the handles that a child inherits, and no others.
class Inherited {
 public:
  explicit Inherited(std::vector<HANDLE> handles) : handles_(std::move(handles)) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    memory_.resize(size);
    InitializeProcThreadAttributeList(List(), 1, 0, &size);
    UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                              handles_.size() * sizeof(HANDLE), nullptr, nullptr);
  }
  ~Inherited() { DeleteProcThreadAttributeList(List()); }
  Inherited(const Inherited&) = delete;
  Inherited& operator=(const Inherited&) = delete;

  LPPROC_THREAD_ATTRIBUTE_LIST List() {
    return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
  }

 private:
  std::vector<HANDLE> handles_;
  std::vector<char> memory_;
};

// Started within the job; no information where that fails.
PROCESS_INFORMATION Start(const std::string& program, HANDLE channel, HANDLE file, HANDLE job) {
  Inherited inherited(file != nullptr ? std::vector<HANDLE>{channel, file}
                                      : std::vector<HANDLE>{channel});
  STARTUPINFOEXW startup{};
  startup.StartupInfo.cb = sizeof startup;
  startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  startup.StartupInfo.hStdInput = channel;
  startup.StartupInfo.hStdOutput = file;
  startup.lpAttributeList = inherited.List();
  std::wstring path = Wide(AbsolutePath(program));
  std::wstring command = L'"' + path + L'"';
  // Without a console, for which the system would start another process.
  constexpr DWORD kHow = DETACHED_PROCESS | CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT;
  PROCESS_INFORMATION process{};
  if (CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, kHow, nullptr, nullptr,
                     &startup.StartupInfo, &process) == 0) {
    return {};
  }
  if (AssignProcessToJobObject(job, process.hProcess) == 0) {
    TerminateProcess(process.hProcess, 1);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return {};
  }
  ResumeThread(process.hThread);
  CloseHandle(process.hThread);
  return process;
}

}  // namespace

struct ChildProcess::Machinery {
  Handle job;
  Handle process;
  Handle channel;
  Handle event;

  ~Machinery() {
    channel.reset();
    if (process) {
      TerminateProcess(process.get(), 1);
      WaitForSingleObject(process.get(), INFINITE);
    }
  }

  // Bytes that an operation on the channel moved within the time; 0 when none, and isGone set when
  // there will be none.
  size_t Finish(BOOL began, OVERLAPPED& operation, int64_t timeout, bool& isGone) const {
    if (began == 0 && GetLastError() != ERROR_IO_PENDING) {
      isGone = true;
      return 0;
    }
    auto wait = static_cast<DWORD>(std::clamp<int64_t>(timeout, 0, 1'000'000));
    if (WaitForSingleObject(event.get(), wait) != WAIT_OBJECT_0)
      CancelIoEx(channel.get(), &operation);
    DWORD moved = 0;
    bool isDone = GetOverlappedResult(channel.get(), &operation, &moved, TRUE) != 0;
    isGone = !isDone && GetLastError() != ERROR_OPERATION_ABORTED;
    return isDone ? moved : 0;
  }
};

ChildProcess::ChildProcess(const std::string& program, const InputFile* file) {
  if (!FileExists(program)) {
    throw Error(ErrorNumber::kFileNotFound, "File not found: " + program);
  }
  auto machinery = std::make_unique<Machinery>();
  Ends ends = MakeChannel();
  machinery->channel = std::move(ends.ours);
  machinery->job = MakeJob();
  machinery->event = Owned(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  HANDLE handed = nullptr;
  HANDLE us = GetCurrentProcess();
  bool isHanded = true;
  if (file != nullptr) {
    auto own = reinterpret_cast<HANDLE>(_get_osfhandle(file->Descriptor()));
    isHanded = DuplicateHandle(us, own, us, &handed, GENERIC_READ, TRUE, 0) != 0;
  }
  if (!ends.childs || !machinery->event || !isHanded) {
    throw Error(ErrorNumber::kPathAccess, "No channel to a helper program");
  }
  Handle childsFile(handed);
  PROCESS_INFORMATION process = Start(program, ends.childs.get(), handed, machinery->job.get());
  if (process.hProcess == nullptr) {
    throw Error(ErrorNumber::kPathAccess, "Helper program can't be started: " + program);
  }
  machinery->process = Handle(process.hProcess);
  machinery_ = std::move(machinery);
  id_ = process.dwProcessId;
}

ChildProcess::~ChildProcess() = default;

void ChildProcess::Kill() {
  machinery_.reset();
  id_ = 0;
}

bool ChildProcess::Write(std::string_view bytes, int64_t timeoutMilliseconds) {
  int64_t deadline = TickMilliseconds() + timeoutMilliseconds;
  bool isGone = !machinery_;
  while (!bytes.empty() && !isGone) {
    int64_t left = deadline - TickMilliseconds();
    if (left < 0) return false;
    OVERLAPPED operation{};
    operation.hEvent = machinery_->event.get();
    auto count = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
    BOOL began = ::WriteFile(machinery_->channel.get(), bytes.data(), count, nullptr, &operation);
    bytes.remove_prefix(machinery_->Finish(began, operation, left, isGone));
  }
  return bytes.empty();
}

size_t ChildProcess::Read(void* buffer, size_t count, int64_t timeoutMilliseconds) {
  hasEnded_ = !machinery_;
  if (hasEnded_) return 0;
  OVERLAPPED operation{};
  operation.hEvent = machinery_->event.get();
  auto most = static_cast<DWORD>(std::min(count, kMostAtOnce));
  BOOL began = ::ReadFile(machinery_->channel.get(), buffer, most, nullptr, &operation);
  return machinery_->Finish(began, operation, timeoutMilliseconds, hasEnded_);
}

size_t ReadFromParent(void* buffer, size_t count) {
  DWORD got = 0;
  auto most = static_cast<DWORD>(std::min(count, kMostAtOnce));
  return ::ReadFile(GetStdHandle(STD_INPUT_HANDLE), buffer, most, &got, nullptr) != 0 ? got : 0;
}

bool WriteToParent(std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD done = 0;
    auto most = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
    HANDLE channel = GetStdHandle(STD_INPUT_HANDLE);
    if (::WriteFile(channel, bytes.data(), most, &done, nullptr) == 0) return false;
    bytes.remove_prefix(done);
  }
  return true;
}

bool IsParentFaster() {
  return false;
}

}  // namespace tarnwick::platform
