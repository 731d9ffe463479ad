#include "host/QelAssert/HandlerOfThread.h"

#include <memory>
#include <new>
#include <utility>

#include <windows.h>

#include "host/QelUtilities/ProcessEnd.h"

namespace qel::assert {
namespace {

// No `thread_local` object: MinGW frees the memory of these objects before it calls their
// destructors (https://gcc.gnu.org/bugzilla/show_bug.cgi?id=80816).

DWORD slot();

/// The system calls this when a thread or a fiber ends.
void NTAPI destroy(void* handler) {
  FlsSetValue(slot(), nullptr);
  delete static_cast<AssertHandler*>(handler);
}

DWORD slot() {
  static const DWORD allocated = [] {
    utilities::keepLoaded([] {});  // until the last thread has called `destroy`
    return FlsAlloc(destroy);
  }();
  return allocated;
}

}  // namespace

const AssertHandler* handlerOfThread() {
  return static_cast<const AssertHandler*>(FlsGetValue(slot()));
}

void setHandlerOfThread(AssertHandler handler) {
  if (auto* const current = static_cast<AssertHandler*>(FlsGetValue(slot()))) {
    *current = std::move(handler);
    return;
  }
  auto first = std::make_unique<AssertHandler>(std::move(handler));
  if (FlsSetValue(slot(), first.get()) == 0) {
    throw std::bad_alloc();
  }
  static_cast<void>(first.release());
}

}  // namespace qel::assert
