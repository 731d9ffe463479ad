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

/// How often memory is looked at and reported, and where the figures come from.
struct MemoryUsageOptions {
  /// From the end of one run to the start of the next.
  /// @{
  std::chrono::duration<double> samplingInterval = std::chrono::seconds(10);
  std::chrono::duration<double> reportingInterval = std::chrono::minutes(5);
  /// @}
  /// Used physical memory, asked on the sampling worker. Sampling ends when one of them throws in
  /// the first run, or in a later run and again when that is repeated at once.
  /// @{
  std::function<std::uint64_t()> usedBySystemInKB =
      &platform::windows::SystemInformation::getUsedPhysicalMemoryOfSystemInKB;
  std::function<std::uint64_t()> usedByProcessInKB =
      &platform::windows::SystemInformation::getUsedPhysicalMemoryOfCurrentProcessInKB;
  /// @}
};

/// Samples the physical memory used by the process and by the whole system, and reports the
/// smallest and the largest sample of each every reporting interval, and once more at destruction.
/// Ends by itself once the databases have failed.
///
/// Two workers, one for each interval; `start` and destruction belong to the host's thread, crash
/// reports come from any.
class QEL_ANALYTICS_EXPORT MemoryUsageObserver : public MemoryUsageReporterInterface {
 public:
  /// The databases outlive the observer. Starts nothing.
  explicit MemoryUsageObserver(CipDatabases& databases, MemoryUsageOptions options = {});

  /// Forgets earlier samples, takes the first one at once (on the worker), and goes on from there.
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
  qel::util::ThreadedLoop reportingLoop_;  ///< goes first: its last report wants the samples
};

}  // namespace qel::log::analytics::reports
