#include "station/DatabaseClaim.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

namespace {
// What the holder wrote into the lock file: " (pid P since T)", or "" when it cannot be read.
std::string holderOf(int fd) {
    char text[128] = {};
    const ssize_t n = pread(fd, text, sizeof text - 1, 0);
    if (n <= 0) {
        return "";
    }
    std::string holder(text, static_cast<std::size_t>(n));
    while (!holder.empty() && (holder.back() == '\n' || holder.back() == '\0')) {
        holder.pop_back();
    }
    return holder.empty() ? "" : " (" + holder + ")";
}

// "pid P since 2024-05-01T12:00:00Z": who holds the claim, for the one refused.
void signClaim(int fd) {
    char stamp[32] = "an unknown time";
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    if (gmtime_r(&now, &utc) != nullptr) {
        std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%SZ", &utc);
    }
    const std::string line =
        "pid " + std::to_string(static_cast<long>(getpid())) + " since " + stamp + "\n";
    // Only a courtesy to the next writer: the lock holds whether or not this is written.
    if (ftruncate(fd, 0) == 0) {
        [[maybe_unused]] const ssize_t written = pwrite(fd, line.data(), line.size(), 0);
    }
}
}  // namespace

std::string DatabaseClaim::lockPath(const std::string& databasePath) {
    return databasePath + "-writer.lock";
}

DatabaseClaim::DatabaseClaim(const std::string& databasePath) {
    const std::string path = lockPath(databasePath);
    fd_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd_ < 0) {
        throw Failure(Cause::Failed, "cannot claim " + databasePath + " for writing: " + path +
                                         ": " + std::strerror(errno));
    }
    // flock, not fcntl: its lock belongs to this open file, so a second claim in the same
    // process is refused as well, and no other descriptor's close drops it.
    int status = 0;
    do {
        status = flock(fd_, LOCK_EX | LOCK_NB);
    } while (status != 0 && errno == EINTR);
    if (status != 0) {
        const int error = errno;
        const std::string holder = error == EWOULDBLOCK ? holderOf(fd_) : "";
        close(fd_);
        fd_ = -1;
        if (error == EWOULDBLOCK) {
            throw Failure(Cause::Failed, "another batch is writing " + databasePath + holder +
                                             ": one writer at a time");
        }
        throw Failure(Cause::Failed, "cannot claim " + databasePath + " for writing: " + path +
                                         ": " + std::strerror(error));
    }
    signClaim(fd_);
}

DatabaseClaim::~DatabaseClaim() {
    if (fd_ >= 0) {
        close(fd_);  // drops the lock
    }
}

DatabaseClaim::DatabaseClaim(DatabaseClaim&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

DatabaseClaim& DatabaseClaim::operator=(DatabaseClaim&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0) {
            close(fd_);
        }
        fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
}

}  // namespace station
}  // namespace talonvireo
