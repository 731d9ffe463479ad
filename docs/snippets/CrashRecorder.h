#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include <windows.h>

#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelUtilities/ExitDeadline.h"

using namespace std::chrono_literals;

/// Records an exception that nobody handles, before Windows ends the process. Another thread does
/// the work, because the crashed thread may hold locks or have no stack left.
class CrashRecorder {
 public:
  explicit CrashRecorder(qel::log::analytics::CipDatabases& databases)
      : worker_([this, &databases] { waitForCrash(databases); }) {
    active = this;
    previous = SetUnhandledExceptionFilter(onCrash);
  }

  /// Must be destroyed before the client.
  ~CrashRecorder() {
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
  static LONG WINAPI onCrash(EXCEPTION_POINTERS* exception) {
    if (CrashRecorder* const recorder = active) {
      std::int32_t none = 0;
      recorder->code_.compare_exchange_strong(
          none, static_cast<std::int32_t>(exception->ExceptionRecord->ExceptionCode));
      SetEvent(recorder->wake_);
      WaitForSingleObject(recorder->stored_, 3000);
    }
    return previous == nullptr ? EXCEPTION_CONTINUE_SEARCH : previous(exception);
  }

  void waitForCrash(qel::log::analytics::CipDatabases& databases) {
    WaitForSingleObject(wake_, INFINITE);
    if (code_ != 0) {
      qel::utilities::setExitDeadline(2s);
      qel::broadcaster::ApplicationBroadcaster::getInstance().notify(
          &qel::broadcaster::ApplicationListenerInterface::onApplicationCrashed,
          qel::broadcaster::event::ApplicationCrashEvent{{"unhandled exception"}, code_});
      databases.join();
      SetEvent(stored_);
    }
  }

  static inline std::atomic<CrashRecorder*> active{nullptr};
  static inline LPTOP_LEVEL_EXCEPTION_FILTER previous = nullptr;

  const HANDLE wake_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const HANDLE stored_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::atomic<std::int32_t> code_{0};
  std::thread worker_;
};
