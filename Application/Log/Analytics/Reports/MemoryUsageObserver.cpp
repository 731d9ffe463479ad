#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "Application/Log/Analytics/Database/CipDatabases.h"

namespace qel::log::analytics::reports {
namespace {

using items::MemoryUsageItem;
using qel::util::RunPolicy;

std::unique_ptr<MemoryUsageItem> itemWithMinMax(MemoryUsageItem::Scope scope,
                                                MemoryUsageItem::Phase phase,
                                                const details::MemorySamples& samples) {
  const auto [smallest, largest] = std::minmax_element(
      samples.begin(), samples.end(),
      [](const auto& left, const auto& right) { return left.second < right.second; });
  auto item = std::make_unique<MemoryUsageItem>(scope, phase);
  item->addDetail("Min", std::to_string(smallest->second));
  item->addDetail("Max", std::to_string(largest->second));
  return item;
}

void addSample(std::uint64_t kilobytes, details::MemorySamples& samples,
               details::CrashReadableSamples& forCrash) {
  const auto now = datetime::DateTime::now();
  if (samples.emplace(now, kilobytes).second) {
    forCrash.add(now, kilobytes);
  }
}

}  // namespace

MemoryUsageObserver::MemoryUsageObserver(CipDatabases& databases, MemoryUsageOptions options)
    : databases_(databases), options_(std::move(options)) {}

void MemoryUsageObserver::start() {
  {
    const utilities::MutexLock lock(mutex_);
    clearStoredMemoryValues();
  }
  samplingLoop_.perform(
      {},
      [this] {
        const utilities::MutexLock lock(mutex_);
        observeMemoryUsage();
        return !databases_.errorOccurred();
      },
      options_.samplingInterval, RunPolicy{RunPolicy::AtStart, true});
  reportingLoop_.perform(
      {},
      [this] {
        const utilities::MutexLock lock(mutex_);
        reportMinMaxMemoryUsageOfCurrentProcess();
        reportMinMaxMemoryUsageOfSystem();
        clearStoredMemoryValues();
        return !databases_.errorOccurred();
      },
      options_.reportingInterval, RunPolicy{RunPolicy::AtStop, true});
}

void MemoryUsageObserver::stop() {
  samplingLoop_.stopAndJoin();
  reportingLoop_.stopAndJoin();
}

void MemoryUsageObserver::observeMemoryUsage() {
  addSample(options_.usedBySystemInKB(), systemSamples_, systemForCrash_);
  addSample(options_.usedByProcessInKB(), processSamples_, processForCrash_);
}

void MemoryUsageObserver::reportMinMaxMemoryUsageOfCurrentProcess() const {
  reportMinMax(MemoryUsageItem::Scope::Application, processSamples_);
}

void MemoryUsageObserver::reportMinMaxMemoryUsageOfSystem() const {
  reportMinMax(MemoryUsageItem::Scope::Total, systemSamples_);
}

void MemoryUsageObserver::clearStoredMemoryValues() {
  processSamples_.clear();
  processForCrash_.clear();
  systemSamples_.clear();
  systemForCrash_.clear();
}

void MemoryUsageObserver::reportDetailedMemoryUsageOfCurrentProcessForCrash() const {
  reportForCrash(MemoryUsageItem::Scope::Application, processForCrash_.read());
}

void MemoryUsageObserver::reportDetailedMemoryUsageOfSystemForCrash() const {
  reportForCrash(MemoryUsageItem::Scope::Total, systemForCrash_.read());
}

void MemoryUsageObserver::reportMinMax(MemoryUsageItem::Scope scope,
                                       const details::MemorySamples& samples) const {
  if (samples.empty()) {
    return;
  }
  databases_.insert(itemWithMinMax(scope, MemoryUsageItem::Phase::Runtime, samples),
                    CipDatabaseClientInterface::Items);
}

void MemoryUsageObserver::reportForCrash(MemoryUsageItem::Scope scope,
                                         const details::MemorySamples& samples) const {
  if (samples.empty()) {
    return;
  }
  auto item = itemWithMinMax(scope, MemoryUsageItem::Phase::Crashed, samples);
  item->addDetailedMemoryUsage(samples);
  databases_.insert(std::move(item), CipDatabaseClientInterface::Items);
}

}  // namespace qel::log::analytics::reports
