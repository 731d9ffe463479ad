#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Application/Log/Analytics/Listeners/IssueListStorageListener.h"
#include "tests/support/MemoryStorage.h"

namespace {

using namespace qel::log;
using qel::test::MemoryStorage;

using Issues = std::vector<std::shared_ptr<issue::IssueInstance>>;

class PlainInformation : public analytics::IssueListInformationInterface {
 public:
  std::string getMessageActionText(const std::string& action) const override { return action; }
  std::string getMessageSystemTypeText(const issue::IssueMessage& message) const override {
    return message.systemType;
  }
  std::string getMessageObjectDescriptionText(const issue::IssueMessage& message) const override {
    return message.objectDescription;
  }
  std::string getObjectAttributeText(std::uint32_t attribute,
                                     const issue::ObjectAttributes& record) const override {
    const auto found = record.find(attribute);
    return found == record.end() ? std::string() : found->second;
  }
};

using Messages = std::vector<std::shared_ptr<const issue::IssueMessage>>;

Messages makeMessages() {
  Messages messages;
  for (int kind = 0; kind < 40; ++kind) {
    messages.push_back(std::make_shared<issue::IssueMessage>(
        issue::IssueMessage{qel::Guid::create(),
                            "Check the connection of the part",
                            "Heating",
                            "Pipe of kind " + std::to_string(kind),
                            {}}));
  }
  return messages;
}

/// Issues like those of a large model: there are few kinds of messages, and each issue has two
/// objects. Many issues differ only in their IDs, which are compared last.
Issues makeIssues(std::size_t count, const Messages& messages) {
  Issues issues;
  for (std::size_t number = 0; number < count; ++number) {
    auto issue = std::make_shared<issue::IssueInstance>();
    issue->id = qel::Guid::create();
    issue->description = "The pipe is not connected to its neighbour";
    issue->message = messages[number % messages.size()];
    const issue::ObjectAttributes pipe{
        {0, "Error"}, {1, "Heating"}, {2, "Pipe DN " + std::to_string(number % 20)}, {4, "North"}};
    issue->objectAttributes = {pipe, pipe};
    issues.push_back(std::move(issue));
  }
  return issues;
}

/// Measures one call of `issueAdded` for a new issue. The argument is the number of issues that are
/// already recorded. Each iteration measures a batch of additions, then removes the batch and waits
/// until the queue is empty. So neither the cache nor the queue grows.
void issueAdded(benchmark::State& state) {
  constexpr std::size_t batchSize = 50;
  constexpr std::size_t emptiedEvery = 2'500;  // a quarter of the queue's capacity
  constexpr bool hidden = false;
  MemoryStorage storage;
  storage.parameter.isSendingAllowed = [] { return false; };
  storage.parameter.databaseCallback = [] { return false; };
  auto& databases = storage.initialized();
  analytics::listeners::IssueListStorageListener listener(databases,
                                                          std::make_unique<PlainInformation>());
  const auto messages = makeMessages();
  const auto before = makeIssues(static_cast<std::size_t>(state.range(0)), messages);
  for (std::size_t number = 0; number < before.size(); ++number) {
    listener.issueAdded(before[number], hidden);
    if (number % emptiedEvery == 0) {
      databases.join();
    }
  }
  for (auto _ : state) {
    const auto batch = makeIssues(batchSize, messages);
    databases.join();
    const auto begin = std::chrono::steady_clock::now();
    for (const auto& issue : batch) {
      listener.issueAdded(issue, hidden);
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    state.SetIterationTime(elapsed.count() / batchSize);
    listener.issuesRemoved(batch);
  }
  if (databases.errorOccurred()) {
    state.SkipWithError("the queue has overflowed");
  }
}

}  // namespace

// The number of iterations is fixed, because the library would choose it by the measured part
// alone.
BENCHMARK(issueAdded)->RangeMultiplier(10)->Range(100, 100'000)->Iterations(2'000)->UseManualTime();
