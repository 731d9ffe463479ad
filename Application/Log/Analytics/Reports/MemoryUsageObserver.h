#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "Application/Log/Analytics/Items/MemoryUsageItem.h"
#include "Application/Log/Analytics/Reports/CrashReadableSamples.h"
#include "Application/Log/Analytics/Reports/MemoryUsageReporterInterface.h"
#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "host/QelPlatformWindows/SystemInformation.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::reports {

/// The intervals and the sources of memory readings.
struct MemoryUsageOptions {
  /// From the end of one run to the start of the next.
  /// @{
  std::chrono::duration<double> samplingInterval = std::chrono::seconds(10);
  std::chrono::duration<double> reportingInterval = std::chrono::minutes(5);
  /// @}
  /// Used physical memory. Called on the sampling worker. Sampling ends when a function throws in
  /// the first run, or in a later run and in its immediate retry.
  /// @{
  std::function<std::uint64_t()> usedBySystemInKB =
      &platform::windows::SystemInformation::getUsedPhysicalMemoryOfSystemInKB;
  std::function<std::uint64_t()> usedByProcessInKB =
      &platform::windows::SystemInformation::getUsedPhysicalMemoryOfCurrentProcessInKB;
  /// @}
};

/// Samples the physical memory that the process and the whole system use. Every reporting interval,
/// and once more at destruction, it reports the smallest and the largest sample of each. Ends by
/// itself once the databases have failed.
///
/// Each interval has its own worker. `start` and destruction belong to the host's thread. Any
/// thread may report a crash.
class QEL_ANALYTICS_EXPORT MemoryUsageObserver : public MemoryUsageReporterInterface {
 public:
  /// The databases must outlive the observer. Does not start the workers.
  explicit MemoryUsageObserver(CipDatabases& databases, MemoryUsageOptions options = {});

  /// Discards earlier samples and starts the workers. The first sample is taken at once, on the
  /// worker.
  void start();

  void reportDetailedMemoryUsageOfCurrentProcessForCrash() const override;
  void reportDetailedMemoryUsageOfSystemForCrash() const override;

 private:
  void observeMemoryUsage() QEL_REQUIRES(mutex_);
  void reportMinMaxMemoryUsageOfCurrentProcess() const QEL_REQUIRES(mutex_);
  void reportMinMaxMemoryUsageOfSystem() const QEL_REQUIRES(mutex_);
  void clearStoredMemoryValues() QEL_REQUIRES(mutex_);
  void reportMinMax(items::MemoryUsageItem::Scope scope,
                    const details::MemorySamples& samples) const;
  void reportForCrash(items::MemoryUsageItem::Scope scope,
                      const details::MemorySamples& samples) const;

  CipDatabases& databases_;
  const MemoryUsageOptions options_;
  utilities::Mutex mutex_;
  details::MemorySamples systemSamples_ QEL_GUARDED_BY(mutex_);
  details::MemorySamples processSamples_ QEL_GUARDED_BY(mutex_);
  /// The same samples, written with the mutex held and read without it.
  /// @{
  details::CrashReadableSamples systemForCrash_;
  details::CrashReadableSamples processForCrash_;
  /// @}
  qel::util::ThreadedLoop samplingLoop_;
  qel::util::ThreadedLoop reportingLoop_;  ///< destroyed first: its last report reads the samples
};

}  // namespace qel::log::analytics::reports
