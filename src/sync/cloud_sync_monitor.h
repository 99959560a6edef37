#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/date.h"
#include "platform/observable.h"
#include "platform/settings.h"

namespace tidewrack {

/// One step of the store's replication, as whatever replicates the store reports it.
struct StoreSyncEvent {
  static constexpr int setupType = 0;
  static constexpr int importType = 1;
  static constexpr int exportType = 2;

  int type = setupType;              ///< Unknown ones are ignored.
  std::optional<std::string> error;  ///< In words, when the step failed.
  std::optional<Date> endDate;       ///< Absent while the step is under way.
};

/// Where the events of the store's replication are told. Main thread only.
class StoreSyncEvents {
 public:
  void post(const StoreSyncEvent& event);
  /// Calls `observer` for each event until the subscription dies.
  [[nodiscard]] Subscription observe(std::function<void(const StoreSyncEvent&)> observer);

 private:
  const StoreSyncEvent* present_ = nullptr;
  Observable<int> signal_;
};

/// Boils the events of the replication down to one phase and the date of the last import. It steers nothing.
/// One for each process; main thread only.
class iCloudSyncMonitor {
 public:
  struct Phase {
    enum class Kind { failed, idle, setup, importing, exporting, completed };
    Kind kind = Kind::idle;
    std::string failure;  ///< Of `failed` only: what went wrong, in words.
    friend bool operator==(const Phase&, const Phase&) = default;
  };

  /// Reads the date of an earlier launch. `settings` outlives the monitor.
  explicit iCloudSyncMonitor(Settings& settings);

  /// Listens to the events from now on. Once it does, a further call changes nothing.
  void start(StoreSyncEvents& events);
  [[nodiscard]] bool isStarted() const { return isStarted_; }
  /// Takes one event. One with an error is a failure, whatever else it says.
  void handleEvent(const StoreSyncEvent& event);

  Observable<Phase> phase;
  /// End of the last import without an error; kept between launches.
  Observable<std::optional<Date>> lastSuccessfulImport;
  /// Calls `observer` each time an import has ended ("iCloudSyncMonitor.importDidComplete").
  [[nodiscard]] Subscription observeImportDidComplete(std::function<void()> observer) {
    return importDidComplete_.observe(std::move(observer));
  }

 private:
  void importEnded(Date date);

  Settings& settings_;
  Observable<int> importDidComplete_;
  Subscription events_;
  bool isStarted_ = false;
};

/// Platform symbol and localised title of a phase.
std::string_view symbol(const iCloudSyncMonitor::Phase& phase);
std::string title(const iCloudSyncMonitor::Phase& phase);

}  // namespace tidewrack
