#include "StopSignal.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "ExitStatus.h"

namespace talonvireo {
namespace cli {

StopSignal::StopSignal() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, &previous_);
    watcher_ = std::thread([this] { watch(); });
}

StopSignal::~StopSignal() {
    done_ = true;
    watcher_.join();
    // Drop what arrived after the watcher's last look, so unblocking does not kill us.
    const timespec none{0, 0};
    while (sigtimedwait(&signals_, nullptr, &none) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

void StopSignal::watch() {
    const timespec tick{0, 100 * 1000 * 1000};  // how often `done_` is looked at
    while (!done_) {
        if (sigtimedwait(&signals_, nullptr, &tick) <= 0) {
            continue;
        }
        if (requested_) {
            std::fputs("\nstopped at once\n", stderr);
            std::_Exit(kExitInterrupted);
        }
        requested_ = true;
        std::fputs(
            "\nstopping: the frames in flight finish and are recorded "
            "(again to stop at once)\n",
            stderr);
    }
}

}  // namespace cli
}  // namespace talonvireo
