#include "host/QelAssert/Assert.h"

#include <array>
#include <atomic>
#include <string_view>
#include <utility>

#include "host/QelAssert/HandlerOfThread.h"
#include "host/QelLog/LogManager.h"

namespace qel::assert {
namespace {

std::atomic<bool> assertionsEnabled{true};

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
  const auto* const handler = handlerOfThread();
  return handler != nullptr && *handler ? *handler : AssertHandler(&logAssertion);
}

std::string Assert::typeToString(AssertType type) {
  const auto index = static_cast<std::size_t>(type);
  return std::string(index < typeTexts.size() ? typeTexts[index] : "Unknown");
}

void AssertFunctionOne::registerHandler(AssertHandler handler) {
  setHandlerOfThread(std::move(handler));
}

}  // namespace qel::assert
