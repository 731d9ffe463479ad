#include "host/QelAssert/HandlerOfThread.h"

#include <utility>

namespace qel::assert {
namespace {

/// Trivially destroyed, so it can be read until the thread ends.
constinit thread_local const AssertHandler* current = nullptr;

struct RegisteredHandler {
  RegisteredHandler() = default;
  RegisteredHandler(const RegisteredHandler&) = delete;
  RegisteredHandler& operator=(const RegisteredHandler&) = delete;
  ~RegisteredHandler() { current = nullptr; }

  AssertHandler handler;
};

}  // namespace

const AssertHandler* handlerOfThread() { return current; }

void setHandlerOfThread(AssertHandler handler) {
  thread_local RegisteredHandler registered;
  registered.handler = std::move(handler);
  current = &registered.handler;
}

}  // namespace qel::assert
