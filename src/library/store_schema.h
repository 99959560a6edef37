#pragma once

#include <span>

#include "platform/sqlite.h"

namespace tidewrack {

/// One step of the store's layout. Steps are only ever added, never changed once released.
struct StoreMigration {
  int version;          ///< The version that the store has after the step; 1, 2, 3 and so on.
  const char* purpose;  ///< Why the step exists.
  const char* sql;      ///< The statements, run in one exclusive transaction.
};

/// All steps, oldest first.
std::span<const StoreMigration> storeMigrations();

/// The version of a store that this program writes.
int currentStoreVersion();

/// Brings the store up to the current version, each step in an exclusive transaction of its own. Throws
/// StoreFailure for a file that is a database of something else, and for a store of a newer version; both
/// are left as they are.
void migrateStore(SQLiteConnection& connection);

}  // namespace tidewrack
