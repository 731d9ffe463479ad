#pragma once

#include "host/QelAssert/Assert.h"

namespace qel::assert {

/// The handler that the calling thread has registered; null if there is none. Null again after the
/// end of the thread has destroyed the handler, because later code, such as a static object's
/// destructor, may still report assertions.
const AssertHandler* handlerOfThread();

/// Replaces the calling thread's handler. The end of the thread destroys it.
void setHandlerOfThread(AssertHandler handler);

}  // namespace qel::assert
