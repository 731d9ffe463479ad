#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <thread>

#include <windows.h>

#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelUtilities/ExitDeadline.h"

using namespace std::chrono_literals;

/// Records an exception that nobody handles, and `abort`, before Windows ends the process. Another
/// thread does the work, because the crashed thread may hold locks or have no stack left.
class CrashRecorder {
 public:
  explicit CrashRecorder(qel::log::analytics::CipDatabases& databases)
      : worker_([this, &databases] { waitForCrash(databases); }) {
    active = this;
    previous = SetUnhandledExceptionFilter(onException);
    previousOfAbort = std::signal(SIGABRT, onAbort);
  }

  /// Must be destroyed before the last `join`.
  ~CrashRecorder() {
    std::signal(SIGABRT, previousOfAbort);
    SetUnhandledExceptionFilter(previous);
    active = nullptr;
    SetEvent(wake_);
    worker_.join();
    CloseHandle(wake_);
    CloseHandle(stored_);
  }
  CrashRecorder(const CrashRecorder&) = delete;
  CrashRecorder& operator=(const CrashRecorder&) = delete;

 private:
  static void record(DWORD code) {
    if (CrashRecorder* const recorder = active) {
      std::int32_t none = 0;
      recorder->code_.compare_exchange_strong(none, static_cast<std::int32_t>(code));
      SetEvent(recorder->wake_);
      WaitForSingleObject(recorder->stored_, 3000);
    }
  }

  static void onAbort(int) { record(codeOfAbort); }

  static LONG WINAPI onException(EXCEPTION_POINTERS* exception) {
    record(exception->ExceptionRecord->ExceptionCode);
    return previous == nullptr ? EXCEPTION_CONTINUE_SEARCH : previous(exception);
  }

  void waitForCrash(qel::log::analytics::CipDatabases& databases) {
    WaitForSingleObject(wake_, INFINITE);
    if (code_ != 0) {
      qel::utilities::setExitDeadline(2s);
      qel::broadcaster::ApplicationBroadcaster::getInstance().notify(
          &qel::broadcaster::ApplicationListenerInterface::onApplicationCrashed,
          qel::broadcaster::event::ApplicationCrashEvent{
              {code_ == codeOfAbort ? "abort" : "unhandled exception"}, code_});
      databases.join();
      SetEvent(stored_);
    }
  }

  static constexpr std::int32_t codeOfAbort = 0x40000015;  // STATUS_FATAL_APP_EXIT
  static inline std::atomic<CrashRecorder*> active{nullptr};
  static inline LPTOP_LEVEL_EXCEPTION_FILTER previous = nullptr;
  static inline void (*previousOfAbort)(int) = SIG_DFL;

  const HANDLE wake_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const HANDLE stored_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::atomic<std::int32_t> code_{0};
  std::thread worker_;
};
