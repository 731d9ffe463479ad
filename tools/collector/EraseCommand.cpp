#include "tools/collector/EraseCommand.h"

#include <array>
#include <iostream>
#include <vector>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "host/QelUtilities/PathText.h"
#include "tools/collector/ClickHouseErasure.h"
#include "tools/collector/SqliteExecution.h"
#include "tools/collector/SqliteRemoval.h"
#include "tools/collector/SqliteSchema.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

constexpr const char* rowsOfTransaction = "500";

/// Deletes the rows of one table that meet a condition with one parameter.
class Erasure {
 public:
  Erasure(SqliteConnection& connection, SqliteSummaries& summaries, const std::string& table,
          const std::string& condition, std::string value)
      : connection_(connection),
        summaries_(summaries),
        count_(connection.prepare("SELECT count(*) FROM " + table + " WHERE " + condition)),
        next_(connection.prepare("SELECT id FROM " + table + " WHERE " + condition +
                                 " AND id > ? ORDER BY id LIMIT " + rowsOfTransaction)),
        removal_(connection, summaries, table),
        value_(std::move(value)) {}

  std::int64_t count() {
    connection_.setDeadline(std::chrono::steady_clock::time_point::max());
    SqliteExecution execution(connection_, count_);
    execution.bindText(value_).step();
    return execution.number(0);
  }

  std::int64_t run() {
    std::int64_t removed = 0;
    std::vector<std::int64_t> ids{0};
    while (!ids.empty()) {
      summaries_.change([&] {
        ids = idsAfter(ids.back());
        removal_.remove(ids);
      });
      removed += static_cast<std::int64_t>(ids.size());
    }
    return removed;
  }

 private:
  std::vector<std::int64_t> idsAfter(std::int64_t id) {
    SqliteExecution execution(connection_, next_);
    return execution.bindText(value_).bindNumber(id).numbers();
  }

  SqliteConnection& connection_;
  SqliteSummaries& summaries_;
  const SqliteStatement count_;
  const SqliteStatement next_;
  SqliteRemoval removal_;
  const std::string value_;
};

/// Prints what is to be erased, and asks.
bool isAgreed(const EraseOptions& options, const std::array<std::int64_t, 3>& counts) {
  std::cout << "events " << counts[0] << ", environments " << counts[1] << ", refused texts "
            << counts[2] << '\n';
  if (options.isConfirmed) {
    return true;
  }
  if (::isatty(STDIN_FILENO) == 0) {
    throw tools::InputError("nobody can be asked without a terminal; --yes erases without asking");
  }
  std::cout << "Erase them? [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer == "y" || answer == "yes") {
    return true;
  }
  std::cout << "nothing is erased\n";
  return false;
}

void report(std::int64_t erased) {
  std::cout << "erased " << erased << (erased == 1 ? " row\n" : " rows\n");
}

int eraseFrom(const ClickHouseAccess& access, const EraseOptions& options) {
  ClickHouseErasure erasure(access, options.installation, options.user);
  const auto counts = erasure.count();
  if (!isAgreed(options, counts)) {
    return 1;
  }
  erasure.run();
  report(counts[0] + counts[1] + counts[2]);
  return 0;
}

}  // namespace

void addEraseCommand(CLI::App& program, EraseOptions& options) {
  CLI::App* const command =
      program.add_subcommand("erase", "Erases what an installation or a user has sent.");
  addStoreOptions(*command, options.store, true);
  command->add_option("--installation", options.installation, "the InstallationId of the rows")
      ->type_name("ID");
  command->add_option("--user", options.user, "the user who sent the rows first")
      ->type_name("NAME");
  command->add_flag("--yes", options.isConfirmed, "do not ask");
}

int erase(const EraseOptions& options) {
  const bool isUser = options.installation.empty();
  if (isUser == options.user.empty()) {
    throw tools::InputError("either --installation or --user is required");
  }
  if (const auto access = clickHouseAccess(options.store)) {
    return eraseFrom(*access, options);
  }
  SqliteConnection connection(utilities::pathFromUtf8(options.store.store),
                              SqliteConnection::Missing::Fail);
  prepareSchema(connection);
  const std::string value = isUser ? options.user : options.installation;
  const std::string condition = isUser ? "user = ?" : "installation = ?";
  SqliteSummaries summaries(connection);
  Erasure events(connection, summaries, "events", condition, value);
  Erasure environments(connection, summaries, "environments", condition, value);
  Erasure refused(connection, summaries, "refused",
                  isUser ? condition : "instr(text, CAST('\"' || ? || '\"' AS BLOB)) > 0", value);
  if (!isAgreed(options, {events.count(), environments.count(), refused.count()})) {
    return 1;
  }
  const auto erased = events.run() + environments.run() + refused.run();
  connection.setDeadline(std::chrono::steady_clock::now() + SqliteConnection::patience);
  if (!connection.truncateLog()) {
    connection.fail("the rows are deleted, but a reader keeps them in the log; repeat this later");
  }
  report(erased);
  return 0;
}

}  // namespace qel::collector
