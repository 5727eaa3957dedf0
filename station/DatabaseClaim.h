// One writer at a time for a batch's database: two batches writing the same record would
// measure the same frames twice and interleave their runs, so the second one is refused.
#pragma once

#include <string>

namespace talonvireo {
namespace station {

// An exclusive lock on "<database>-writer.lock" beside the database, held from construction
// to destruction. The operating system drops it with the process however that ends (a kill,
// a crash), so a dead batch never blocks the next one. The lock file stays behind, naming
// the last writer's process and start time; it is not the lock, only where it is held.
class DatabaseClaim {
public:
    // Throws Failure (Cause::Failed): "another batch is writing <database> (pid P since T):
    // one writer at a time" when another process, or another claim in this one, holds it;
    // or that the lock file cannot be opened.
    explicit DatabaseClaim(const std::string& databasePath);
    ~DatabaseClaim();
    DatabaseClaim(const DatabaseClaim&) = delete;
    DatabaseClaim& operator=(const DatabaseClaim&) = delete;
    DatabaseClaim(DatabaseClaim&& other) noexcept;
    DatabaseClaim& operator=(DatabaseClaim&& other) noexcept;

    // Where the lock is held for `databasePath`.
    static std::string lockPath(const std::string& databasePath);

private:
    int fd_ = -1;
};

}  // namespace station
}  // namespace talonvireo
