#pragma once

namespace parvela::service {

class Database;

int currentSchemaVersion();

/// Brings a database up to schema `version`, one version at a time, each in a transaction of its own. Throws
/// std::runtime_error for a file that a newer service has written.
void migrate(Database& database, int version);

}  // namespace parvela::service
