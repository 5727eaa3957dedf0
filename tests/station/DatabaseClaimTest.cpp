// One writer at a time for a batch's database: a second claim, in this process or another,
// is refused with a message naming the database; a writer that dies leaves it free.
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include "station/DatabaseClaim.h"
#include "station/Failure.h"
#include "station/ResultDatabase.h"

namespace {
using namespace talonvireo::station;

std::string scratchDatabase(const char* name) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("talonvireo-claim-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    const std::string db = (dir / name).string();
    std::filesystem::remove(DatabaseClaim::lockPath(db));
    return db;
}

std::string refusalOf(const std::string& db) {
    try {
        DatabaseClaim claim(db);
    } catch (const Failure& e) {
        EXPECT_EQ(e.cause(), Cause::Failed);
        return e.what();
    }
    return "claimed";
}

TEST(DatabaseClaim, ASecondHandleIsRefusedUntilTheFirstLetsGo) {
    const std::string db = scratchDatabase("two-handles.sqlite");
    std::optional<DatabaseClaim> first(std::in_place, db);
    const std::string refused = refusalOf(db);
    EXPECT_EQ(refused.find("another batch is writing " + db), 0u) << refused;
    EXPECT_NE(refused.find("(pid " + std::to_string(getpid()) + " since "), std::string::npos)
        << refused;
    EXPECT_NE(refused.find(": one writer at a time"), std::string::npos) << refused;
    first.reset();
    EXPECT_EQ(refusalOf(db), "claimed");
}

TEST(DatabaseClaim, AnotherProcessIsRefusedAndADeadWriterLeavesItFree) {
    const std::string db = scratchDatabase("two-processes.sqlite");
    const std::string lock = DatabaseClaim::lockPath(db);
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    {
        // While this process holds the claim, another cannot take the lock.
        const DatabaseClaim mine(db);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            // Only system calls after fork: 0 when the lock was refused.
            const int fd = open(lock.c_str(), O_RDWR);
            _exit(fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0) << "the other process took the lock";
    }
    // Another process holds it: this one is refused, until that process is killed.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const int fd = open(lock.c_str(), O_RDWR | O_CREAT, 0644);
        if (fd < 0 || flock(fd, LOCK_EX) != 0) {
            _exit(1);
        }
        const char held = 'h';
        [[maybe_unused]] const ssize_t n = write(ready[1], &held, 1);
        pause();
        _exit(0);
    }
    char held = 0;
    ASSERT_EQ(read(ready[0], &held, 1), 1);
    EXPECT_NE(refusalOf(db).find("another batch is writing " + db), std::string::npos);
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(refusalOf(db), "claimed");
    close(ready[0]);
    close(ready[1]);
    std::filesystem::remove_all(std::filesystem::path(db).parent_path());
}

}  // namespace

namespace {
// The batch's record itself holds the claim: a second database writer on the same file is
// refused while the first is open, and welcome once it has closed.
TEST(DatabaseClaim, TheBatchDatabaseHoldsItForAsLongAsItIsOpen) {
    const std::string db = scratchDatabase("record.sqlite");
    {
        ResultDatabase first(db);
        try {
            ResultDatabase second(db);
            ADD_FAILURE() << "two writers opened " << db;
        } catch (const Failure& e) {
            EXPECT_NE(std::string(e.what()).find("one writer at a time"), std::string::npos)
                << e.what();
        }
    }
    EXPECT_NO_THROW(ResultDatabase again(db));
}
}  // namespace
