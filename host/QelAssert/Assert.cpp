#include "host/QelAssert/Assert.h"

#include <array>
#include <atomic>
#include <string_view>
#include <utility>

#include "host/QelLog/LogManager.h"

namespace qel::assert {
namespace {

std::atomic<bool> assertionsEnabled{true};

/// The handler that the calling thread has registered; null if there is none. Null again after the
/// thread's `thread_local` objects are destroyed, because later code, such as a static object's
/// destructor, may still report assertions. Trivially destroyed, so it can be read until the thread
/// ends.
constinit thread_local const AssertHandler* handlerOfThread = nullptr;

struct RegisteredHandler {
  RegisteredHandler() = default;
  RegisteredHandler(const RegisteredHandler&) = delete;
  RegisteredHandler& operator=(const RegisteredHandler&) = delete;
  ~RegisteredHandler() { handlerOfThread = nullptr; }

  AssertHandler handler;
};

constexpr std::array<std::string_view, 4> typeTexts{"Assertion", "Precondition", "Postcondition",
                                                    "Invariant"};

void logAssertion(const AssertInfo& info) {
  qel::log::LogManager::instance()
      .getLogger("qel.assert")
      ->log(qel::log::Error, Assert::typeToString(info.type) + " failed in " + info.function +
                                 " (" + info.file + ":" + std::to_string(info.line) +
                                 "): " + info.message);
}

}  // namespace

bool Assert::isEnabled() { return assertionsEnabled; }

void Assert::setEnabled(bool enabled) { assertionsEnabled = enabled; }

void Assert::addAssert(const AssertInfo& info) { getRegisteredForCurrentThread()(info); }

AssertHandler Assert::getRegisteredForCurrentThread() {
  const bool registered = handlerOfThread != nullptr && *handlerOfThread;
  return registered ? *handlerOfThread : AssertHandler(&logAssertion);
}

std::string Assert::typeToString(AssertType type) {
  const auto index = static_cast<std::size_t>(type);
  return std::string(index < typeTexts.size() ? typeTexts[index] : "Unknown");
}

void AssertFunctionOne::registerHandler(AssertHandler handler) {
  thread_local RegisteredHandler registered;
  registered.handler = std::move(handler);
  handlerOfThread = &registered.handler;
}

}  // namespace qel::assert
