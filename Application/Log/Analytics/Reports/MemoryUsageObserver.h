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
  /// The time from the end of one run to the start of the next.
  /// @{
  std::chrono::duration<double> samplingInterval = std::chrono::seconds(10);
  std::chrono::duration<double> reportingInterval = std::chrono::minutes(5);
  /// @}
  /// Return the used physical memory. Called on the sampling worker. Sampling ends if a function
  /// throws in the first run. It also ends if a function throws in a later run and again in the
  /// immediate retry.
  /// @{
  std::function<std::uint64_t()> usedBySystemInKB =
      &platform::windows::SystemInformation::getUsedPhysicalMemoryOfSystemInKB;
  std::function<std::uint64_t()> usedByProcessInKB =
      &platform::windows::SystemInformation::getUsedPhysicalMemoryOfCurrentProcessInKB;
  /// @}
};

/// Samples the physical memory that the process and the whole system use. Once per reporting
/// interval, and once more during destruction, the observer reports the smallest and the largest
/// sample of the process and of the system. It stops by itself once the databases have failed.
///
/// Each interval has its own worker. `start`, `stop` and the destructor must be called on the
/// host's thread. The operations that report a crash are thread-safe.
class QEL_ANALYTICS_EXPORT MemoryUsageObserver : public MemoryUsageReporterInterface {
 public:
  /// The databases must outlive the observer. Does not start the workers.
  explicit MemoryUsageObserver(CipDatabases& databases, MemoryUsageOptions options = {});

  /// Discards earlier samples and starts the workers. The first sample is taken at once, on the
  /// sampling worker.
  void start();
  /// Ends both workers, after a last report. `start` starts them again.
  void stop();

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
  /// Copies of the samples for a crash report, written with `mutex_` locked and read without it.
  /// @{
  details::CrashReadableSamples systemForCrash_;
  details::CrashReadableSamples processForCrash_;
  /// @}
  qel::util::ThreadedLoop samplingLoop_;
  /// Destroyed first, because its last report reads the samples.
  qel::util::ThreadedLoop reportingLoop_;
};

}  // namespace qel::log::analytics::reports
